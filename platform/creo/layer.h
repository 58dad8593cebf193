// Layers: the items they hold and how they are shown.
#pragma once

#include "platform/creo/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef enum { PRO_LAYER_PART = PRO_PART, PRO_LAYER_FEAT = PRO_FEATURE, PRO_LAYER_QUILT = PRO_QUILT } ProLayerType;

typedef struct pro_layer_item {
  ProLayerType type;
  int id;
  ProMdl owner;
} ProLayerItem;

typedef enum { PRO_LAYERITEM_NONE = 0, PRO_LAYERITEM_NORMAL = 1 } ProLayerItemStatus;

typedef enum {
  PRO_LAYER_TYPE_NONE = -1,
  PRO_LAYER_TYPE_NORMAL = 1,
  PRO_LAYER_TYPE_DISPLAY = 2,
  PRO_LAYER_TYPE_BLANK = 3,
  PRO_LAYER_TYPE_HIDDEN = 4
} ProLayerDisplay;

ProError ProLayerItemInit(ProLayerType type, int id, ProMdl owner, ProLayerItem* p_layer_item);
// With a null layer: the item's status over all layers that hold it.
ProError ProLayeritemStatusGet(ProLayerItem* p_layer_item, ProLayer* p_layer, ProLayerItemStatus* p_status);
// The layers that hold the item, as an array that the caller frees.
ProError ProLayeritemLayersGet(ProLayerItem* p_layer_item, ProLayer** p_layers);
ProError ProLayerDisplaystatusGet(ProLayer* p_layer, ProLayerDisplay* p_display_status);

#ifdef __cplusplus
}
#endif

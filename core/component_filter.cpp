#include "core/component_filter.h"

#include <algorithm>

#include "platform/creo_handles.h"

namespace rendara {
namespace {

bool isShown(ProLayer& layer) {
  ProLayerDisplay display = PRO_LAYER_TYPE_NORMAL;
  ProLayerDisplaystatusGet(&layer, &display);
  return display == PRO_LAYER_TYPE_NORMAL || display == PRO_LAYER_TYPE_NONE;
}

bool layersShow(ProLayerItem& item) {
  CadArray<ProLayer> layers;
  ProLayeritemLayersGet(&item, layers.receive());
  const auto all = layers.view();
  return std::all_of(all.begin(), all.end(), isShown);
}

}  // namespace

ProError filterComponent(ProFeature& feature, ProMdl assembly) {
  ProFeattype type = 0;
  ProFeatureTypeGet(&feature, &type);
  if (type != PRO_FEAT_COMPONENT) {
    return PRO_TK_CONTINUE;
  }
  ProMdl component = nullptr;
  if (ProAsmcompMdlGet(&feature, &component) != PRO_TK_NO_ERROR || component == nullptr) {
    return PRO_TK_CONTINUE;
  }
  ProFeatStatus featureStatus = PRO_FEAT_ACTIVE;
  ProFeatureStatusGet(&feature, &featureStatus);
  ProLayerItem item{};
  ProLayerItemInit(PRO_LAYER_FEAT, feature.id, assembly, &item);
  ProLayerItemStatus itemStatus = PRO_LAYERITEM_NORMAL;
  ProLayeritemStatusGet(&item, nullptr, &itemStatus);
  const bool shown = layersShow(item);
  ProBoolean hidden = PRO_B_FALSE;
  ProModelitemIsHidden(&feature, &hidden);  // asked, and of no consequence: hidden components are exported
  const bool visit = featureStatus == PRO_FEAT_ACTIVE && itemStatus == PRO_LAYERITEM_NORMAL && shown;
  return visit ? PRO_TK_NO_ERROR : PRO_TK_CONTINUE;
}

}  // namespace rendara

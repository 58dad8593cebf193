// Layers: the items they hold and how they are shown.
#include <algorithm>

#include "standin/cad/operation.h"

using standin::Layer;
using standin::LayerIndex;
using standin::Model;
using standin::Operation;

namespace {

LayerIndex makeIndex(Model& model) {
  LayerIndex index;
  for (Layer& layer : model.layers) {
    for (const auto& [type, id] : layer.items) {
      std::vector<Layer*>& holders = index[{type, id}];
      if (holders.empty() || holders.back() != &layer) {
        holders.push_back(&layer);
      }
    }
  }
  return index;
}

// The layers of the item's owner that hold it, in their order.
std::vector<Layer*> layersOf(Operation& operation, Model& owner, const ProLayerItem& item) {
  if (owner.layers.empty()) {
    return {};
  }
  if (operation.impl().commandsRunning > 0) {
    const auto [entry, isNew] = operation.impl().layerIndexes.try_emplace(&owner);
    if (isNew) {
      entry->second = makeIndex(owner);
    }
    const auto found = entry->second.find({item.type, item.id});
    return found != entry->second.end() ? found->second : std::vector<Layer*>();
  }
  std::vector<Layer*> holders;
  for (Layer& layer : owner.layers) {
    if (std::find(layer.items.begin(), layer.items.end(), std::pair(item.type, item.id)) != layer.items.end()) {
      holders.push_back(&layer);
    }
  }
  return holders;
}

bool isShown(const Layer& layer) {
  return layer.display != PRO_LAYER_TYPE_BLANK && layer.display != PRO_LAYER_TYPE_HIDDEN;
}

Layer* findLayer(Operation& operation, const ProLayer& layer) {
  Model* owner = operation.model(layer.owner);
  return owner != nullptr ? owner->layer(layer.id) : nullptr;
}

}  // namespace

extern "C" {

ProError ProLayerItemInit(ProLayerType type, int id, ProMdl owner, ProLayerItem* p_layer_item) {
  Operation operation("ProLayerItemInit");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (operation.model(owner) == nullptr || p_layer_item == nullptr) return PRO_TK_BAD_INPUTS;
  *p_layer_item = {type, id, owner};
  return PRO_TK_NO_ERROR;
}

// Without a layer an item is shown unless some layer that holds it is blanked or hidden. With a layer it is shown
// when that layer holds it and is shown.
ProError ProLayeritemStatusGet(ProLayerItem* p_layer_item, ProLayer* p_layer, ProLayerItemStatus* p_status) {
  Operation operation("ProLayeritemStatusGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  Model* owner = p_layer_item != nullptr ? operation.model(p_layer_item->owner) : nullptr;
  if (owner == nullptr || p_status == nullptr) return PRO_TK_BAD_INPUTS;
  const std::vector<Layer*> holders = layersOf(operation, *owner, *p_layer_item);
  bool shown = std::all_of(holders.begin(), holders.end(), [](const Layer* layer) { return isShown(*layer); });
  if (p_layer != nullptr) {
    const Layer* layer = findLayer(operation, *p_layer);
    if (std::find(holders.begin(), holders.end(), layer) == holders.end()) return PRO_TK_E_NOT_FOUND;
    shown = isShown(*layer);
  }
  *p_status = shown ? PRO_LAYERITEM_NORMAL : PRO_LAYERITEM_NONE;
  return PRO_TK_NO_ERROR;
}

// No array when no layer holds the item.
ProError ProLayeritemLayersGet(ProLayerItem* p_layer_item, ProLayer** p_layers) {
  Operation operation("ProLayeritemLayersGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  Model* owner = p_layer_item != nullptr ? operation.model(p_layer_item->owner) : nullptr;
  if (owner == nullptr || p_layers == nullptr) return PRO_TK_BAD_INPUTS;
  const std::vector<Layer*> holders = layersOf(operation, *owner, *p_layer_item);
  if (holders.empty()) return PRO_TK_E_NOT_FOUND;
  *p_layers = operation.newArray<ProLayer>(holders.size());
  std::transform(holders.begin(), holders.end(), *p_layers,
                 [&](const Layer* layer) { return standin::itemOf(PRO_LAYER, layer->id, owner); });
  return PRO_TK_NO_ERROR;
}

ProError ProLayerDisplaystatusGet(ProLayer* p_layer, ProLayerDisplay* p_display_status) {
  Operation operation("ProLayerDisplaystatusGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_layer == nullptr || p_display_status == nullptr) return PRO_TK_BAD_INPUTS;
  const Layer* layer = findLayer(operation, *p_layer);
  if (layer == nullptr) return PRO_TK_BAD_INPUTS;
  *p_display_status = layer->display;
  return PRO_TK_NO_ERROR;
}
}

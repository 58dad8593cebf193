// Assemblies: component features, paths and placements.
#include "standin/cad/operation.h"

using standin::Feature;
using standin::Matrix;
using standin::Model;
using standin::Operation;

namespace {

std::vector<ProFeature> featureItems(const Model& model) {
  std::vector<ProFeature> items;
  items.reserve(model.features.size());
  for (const Feature& feature : model.features) {
    items.push_back(standin::itemOf(PRO_FEATURE, feature.id, &model));
  }
  return items;
}

}  // namespace

extern "C" {

ProError ProSolidFeatVisit(ProSolid solid, ProFeatureVisitAction visit_action, ProFeatureFilterAction filter_action,
                           ProAppData app_data) {
  Operation operation("ProSolidFeatVisit");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(solid);
  if (model == nullptr || visit_action == nullptr) return PRO_TK_BAD_INPUTS;
  std::vector<ProFeature> items = featureItems(*model);
  std::vector<ProFeature*> handles;
  handles.reserve(items.size());
  for (ProFeature& item : items) {
    handles.push_back(&item);
  }
  return standin::visit(operation, handles, filter_action, visit_action, app_data);
}

ProError ProSolidOutlineGet(ProSolid solid, Pro3dPnt r_outline_points[2]) {
  Operation operation("ProSolidOutlineGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(solid);
  if (model == nullptr || r_outline_points == nullptr) return PRO_TK_BAD_INPUTS;
  standin::BoxCache own;
  const auto box = standin::boundingBox(*model, operation.impl().commandsRunning > 0 ? operation.impl().boxes : own);
  if (!box) return PRO_TK_GENERAL_ERROR;
  for (std::size_t corner = 0; corner < 2; ++corner) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      r_outline_points[corner][axis] = (*box)[corner][axis];
    }
  }
  return PRO_TK_NO_ERROR;
}

ProError ProAsmcomppathInit(ProSolid p_solid_handle, ProIdTable memb_id_tab, int table_size, ProAsmcomppath* p_handle) {
  Operation operation("ProAsmcomppathInit");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (operation.model(p_solid_handle) == nullptr || p_handle == nullptr || table_size < 0 ||
      table_size > PRO_MAX_ASSEM_LEVEL || (memb_id_tab == nullptr && table_size > 0)) {
    return PRO_TK_BAD_INPUTS;
  }
  ProAsmcomppath path{};
  path.owner = p_solid_handle;
  path.table_num = table_size;
  for (int level = 0; level < PRO_MAX_ASSEM_LEVEL; ++level) {
    path.comp_id_tab[level] = level < table_size ? memb_id_tab[level] : PRO_VALUE_UNUSED;
  }
  *p_handle = path;
  return PRO_TK_NO_ERROR;
}

ProError ProAsmcomppathTrfGet(ProAsmcomppath* p_path, ProBoolean bottom_up, ProMatrix transformation) {
  Operation operation("ProAsmcomppathTrfGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  Model* model = p_path != nullptr ? operation.model(p_path->owner) : nullptr;
  if (model == nullptr || transformation == nullptr) return PRO_TK_BAD_INPUTS;
  if (p_path->table_num < 0 || p_path->table_num > PRO_MAX_ASSEM_LEVEL) {
    return operation.misuse("a path of " + std::to_string(p_path->table_num) + " levels");
  }
  Matrix placement = standin::kIdentity;
  for (int level = 0; level < p_path->table_num; ++level) {
    const Feature* component = model != nullptr ? model->feature(p_path->comp_id_tab[level]) : nullptr;
    if (component == nullptr || component->type != PRO_FEAT_COMPONENT) return PRO_TK_E_NOT_FOUND;
    placement = level == 0 ? component->placement : standin::multiply(component->placement, placement);
    model = component->component;
  }
  if (bottom_up == PRO_B_FALSE) {
    placement = standin::inverse(placement);
  }
  for (std::size_t at = 0; at < placement.size(); ++at) {
    transformation[at / 4][at % 4] = placement[at];
  }
  return PRO_TK_NO_ERROR;
}

ProError ProAsmcompMdlGet(ProAsmcomp* p_feat_handle, ProMdl* p_mdl_handle) {
  Operation operation("ProAsmcompMdlGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_feat_handle == nullptr || p_mdl_handle == nullptr) return PRO_TK_BAD_INPUTS;
  const Feature* feature = operation.feature(p_feat_handle);
  if (feature == nullptr || feature->type != PRO_FEAT_COMPONENT) return PRO_TK_BAD_INPUTS;
  if (feature->component == nullptr) return PRO_TK_E_NOT_FOUND;
  *p_mdl_handle = feature->component;
  return PRO_TK_NO_ERROR;
}
}

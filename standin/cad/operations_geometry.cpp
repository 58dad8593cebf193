// Surfaces, quilts and their tessellation.
#include <cmath>
#include <exception>

#include "standin/cad/operation.h"

using standin::AllocationKind;
using standin::Model;
using standin::Operation;
using standin::Quilt;
using standin::Surface;
using standin::SurfaceMesh;

struct pro_surf_tess_input {
  double chordHeight = 0.0;  // 0: by the size of the model
};

struct pro_tessellation {
  std::shared_ptr<const SurfaceMesh> mesh;
};

namespace {

ProSurface handleOf(const Surface& surface) { return reinterpret_cast<ProSurface>(const_cast<Surface*>(&surface)); }

// The handles of some of a model's surfaces, known from now on.
std::vector<ProSurface> surfaceHandles(Operation& operation, const Model& model,
                                       const std::vector<std::size_t>& indices) {
  std::vector<ProSurface> handles;
  handles.reserve(indices.size());
  for (const std::size_t index : indices) {
    operation.impl().knownSurfaces.insert(&model.surfaces[index]);
    handles.push_back(handleOf(model.surfaces[index]));
  }
  return handles;
}

// A surface or quilt as an item of its owner.
template <typename Record>
ProError toGeomitem(Operation& operation, const Record* record, ProSolid owner, ProType type, ProGeomitem* item) {
  if (record == nullptr || item == nullptr || operation.model(owner) == nullptr) return PRO_TK_BAD_INPUTS;
  if (static_cast<const void*>(record->owner) != owner) {
    return operation.misuse("the item belongs to another model");
  }
  *item = standin::itemOf(type, record->id, record->owner);
  return PRO_TK_NO_ERROR;
}

// Answers with what `use` makes of the surface or quilt that an item names.
template <typename Use>
ProError withGeometry(Operation& operation, const ProGeomitem* item, Use use) {
  Model* owner = item != nullptr ? operation.model(item->owner) : nullptr;
  if (owner == nullptr) return PRO_TK_BAD_INPUTS;
  if (item->type == PRO_SURFACE) {
    const Surface* surface = owner->surface(item->id);
    return surface != nullptr ? use(*owner, *surface) : PRO_TK_BAD_INPUTS;
  }
  if (item->type == PRO_QUILT) {
    const Quilt* quilt = owner->quilt(item->id);
    return quilt != nullptr ? use(*owner, *quilt) : PRO_TK_BAD_INPUTS;
  }
  return PRO_TK_BAD_INPUTS;
}

double defaultChordHeight(const Model& model) {
  if (!model.outline) {
    return 0.001;
  }
  const auto& [low, high] = *model.outline;
  return 0.001 * std::hypot(high[0] - low[0], high[1] - low[1], high[2] - low[2]);
}

std::shared_ptr<const SurfaceMesh> tessellate(const Surface& surface, double chordHeight, std::string& failure) {
  if (surface.owner->mesher == nullptr) {
    failure = "the model has no geometry for it";
    return nullptr;
  }
  try {
    return surface.owner->mesher->mesh(surface.index, chordHeight, failure);
  } catch (const std::exception& error) {
    failure = error.what();
    return nullptr;
  }
}

// A copy of one list of a tessellation; no array when the list is empty.
template <typename Element, typename Value, std::size_t width>
ProError copyList(Operation& operation, ProTessellation tessellation,
                  std::vector<std::array<Value, width>> SurfaceMesh::*list, Element** output) {
  const pro_tessellation* record = operation.object(tessellation, AllocationKind::tessellation);
  if (record == nullptr || output == nullptr) return PRO_TK_BAD_INPUTS;
  const auto& values = (*record->mesh).*list;
  *output = nullptr;
  if (values.empty()) return PRO_TK_E_NOT_FOUND;
  *output = operation.newArray<Element>(values.size());
  for (std::size_t at = 0; at < values.size(); ++at) {
    for (std::size_t component = 0; component < width; ++component) {
      (*output)[at][component] = values[at][component];
    }
  }
  return PRO_TK_NO_ERROR;
}

}  // namespace

extern "C" {

ProError ProSolidSurfaceVisit(ProSolid p_handle, ProSurfaceVisitAction visit_action,
                              ProSurfaceFilterAction filter_action, ProAppData app_data) {
  Operation operation("ProSolidSurfaceVisit");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(p_handle);
  if (model == nullptr || visit_action == nullptr) return PRO_TK_BAD_INPUTS;
  const std::vector<ProSurface> handles = surfaceHandles(operation, *model, model->solidSurfaces);
  return standin::visit(operation, handles, filter_action, visit_action, app_data);
}

ProError ProSolidQuiltVisit(ProSolid p_handle, ProQuiltVisitAction visit_action, ProQuiltFilterAction filter_action,
                            ProAppData app_data) {
  Operation operation("ProSolidQuiltVisit");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  Model* model = operation.model(p_handle);
  if (model == nullptr || visit_action == nullptr) return PRO_TK_BAD_INPUTS;
  std::vector<ProQuilt> handles;
  for (Quilt& quilt : model->quilts) {
    operation.impl().knownQuilts.insert(&quilt);
    handles.push_back(reinterpret_cast<ProQuilt>(&quilt));
  }
  return standin::visit(operation, handles, filter_action, visit_action, app_data);
}

ProError ProQuiltSurfaceVisit(ProQuilt p_handle, ProSurfaceVisitAction visit_action,
                              ProSurfaceFilterAction filter_action, ProAppData app_data) {
  Operation operation("ProQuiltSurfaceVisit");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Quilt* quilt = operation.quilt(p_handle);
  if (quilt == nullptr || visit_action == nullptr) return PRO_TK_BAD_INPUTS;
  const std::vector<ProSurface> handles = surfaceHandles(operation, *quilt->owner, quilt->surfaces);
  return standin::visit(operation, handles, filter_action, visit_action, app_data);
}

ProError ProSurfaceIdGet(ProSurface p_surface, int* p_id) {
  Operation operation("ProSurfaceIdGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Surface* surface = operation.surface(p_surface);
  if (surface == nullptr || p_id == nullptr) return PRO_TK_BAD_INPUTS;
  *p_id = surface->id;
  return PRO_TK_NO_ERROR;
}

ProError ProQuiltIdGet(ProQuilt p_quilt, int* p_id) {
  Operation operation("ProQuiltIdGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Quilt* quilt = operation.quilt(p_quilt);
  if (quilt == nullptr || p_id == nullptr) return PRO_TK_BAD_INPUTS;
  *p_id = quilt->id;
  return PRO_TK_NO_ERROR;
}

ProError ProSurfaceToGeomitem(ProSolid p_owner_handle, ProSurface p_surface, ProGeomitem* p_handle) {
  Operation operation("ProSurfaceToGeomitem");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return toGeomitem(operation, operation.surface(p_surface), p_owner_handle, PRO_SURFACE, p_handle);
}

ProError ProQuiltToGeomitem(ProSolid p_owner_handle, ProQuilt p_quilt, ProGeomitem* p_handle) {
  Operation operation("ProQuiltToGeomitem");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return toGeomitem(operation, operation.quilt(p_quilt), p_owner_handle, PRO_QUILT, p_handle);
}

ProError ProGeomitemFeatureGet(ProGeomitem* p_geom_item, ProFeature* p_feat_handle) {
  Operation operation("ProGeomitemFeatureGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_feat_handle == nullptr) return PRO_TK_BAD_INPUTS;
  return withGeometry(operation, p_geom_item, [&](Model& owner, const auto& record) {
    if (owner.feature(record.featureId) == nullptr) return PRO_TK_E_NOT_FOUND;
    *p_feat_handle = standin::itemOf(PRO_FEATURE, record.featureId, &owner);
    return PRO_TK_NO_ERROR;
  });
}

ProError ProGeomitemIsInactive(ProGeomitem* p_geom_item, ProBoolean* p_inactive) {
  Operation operation("ProGeomitemIsInactive");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_inactive == nullptr) return PRO_TK_BAD_INPUTS;
  return withGeometry(operation, p_geom_item, [&](Model& /*owner*/, const auto& record) {
    *p_inactive = record.inactive ? PRO_B_TRUE : PRO_B_FALSE;
    return PRO_TK_NO_ERROR;
  });
}

ProError ProQuiltIsBackupgeometry(ProSolid p_solid, ProQuilt p_quilt, ProBoolean* p_is_backup) {
  Operation operation("ProQuiltIsBackupgeometry");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Quilt* quilt = operation.quilt(p_quilt);
  if (quilt == nullptr || operation.model(p_solid) != quilt->owner || p_is_backup == nullptr) return PRO_TK_BAD_INPUTS;
  *p_is_backup = quilt->backup ? PRO_B_TRUE : PRO_B_FALSE;
  return PRO_TK_NO_ERROR;
}

ProError ProSurfacetessellationinputAlloc(ProSurfaceTessellationInput* p_input) {
  Operation operation("ProSurfacetessellationinputAlloc");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_input == nullptr) return PRO_TK_BAD_INPUTS;
  *p_input =
      operation.allocations().addObject(operation.name(), AllocationKind::tessellationInput, new pro_surf_tess_input);
  return PRO_TK_NO_ERROR;
}

ProError ProSurfacetessellationinputFree(ProSurfaceTessellationInput* p_input) {
  Operation operation("ProSurfacetessellationinputFree");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return operation.release(p_input, AllocationKind::tessellationInput);
}

ProError ProSurfacetessellationinputChordheightSet(ProSurfaceTessellationInput input, double chord_height) {
  Operation operation("ProSurfacetessellationinputChordheightSet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  pro_surf_tess_input* record = operation.object(input, AllocationKind::tessellationInput);
  if (record == nullptr) return PRO_TK_BAD_INPUTS;
  if (!(chord_height > 0.0) || !std::isfinite(chord_height)) {
    return operation.misuse("a chord height of " + std::to_string(chord_height));
  }
  record->chordHeight = chord_height;
  return PRO_TK_NO_ERROR;
}

// The parameters are always those of the surface itself: only the default projection is there, which takes no data.
ProError ProSurfacetessellationinputUvprojectionSet(ProSurfaceTessellationInput input,
                                                    ProSurfaceTessellationProjection projection,
                                                    void* /*projection_data*/) {
  Operation operation("ProSurfacetessellationinputUvprojectionSet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (operation.object(input, AllocationKind::tessellationInput) == nullptr) return PRO_TK_BAD_INPUTS;
  return projection == PRO_SRFTESS_DEFAULT_PROJECTION ? PRO_TK_NO_ERROR : PRO_TK_NOT_IMPLEMENTED;
}

ProError ProSurfaceTessellationGet(ProMdl owner, ProSurface p_surface, ProSurfaceTessellationInput input,
                                   ProTessellation* p_output) {
  Operation operation("ProSurfaceTessellationGet", true);
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(owner);
  const Surface* surface = operation.surface(p_surface);
  const pro_surf_tess_input* settings = operation.object(input, AllocationKind::tessellationInput);
  if (model == nullptr || surface == nullptr || p_output == nullptr || (input != nullptr && settings == nullptr)) {
    return PRO_TK_BAD_INPUTS;
  }
  if (surface->owner != model) {
    return operation.misuse("the surface belongs to another model");
  }
  *p_output = nullptr;
  const bool hasChord = settings != nullptr && settings->chordHeight > 0.0;
  std::string failure;
  const auto mesh = tessellate(*surface, hasChord ? settings->chordHeight : defaultChordHeight(*model), failure);
  standin::RunCounts& counts = operation.session().counts;
  if (mesh == nullptr) {
    counts.failedSurfaces[{model, surface->id}] = failure.empty() ? "no reason given" : failure;
    return PRO_TK_GENERAL_ERROR;
  }
  counts.failedSurfaces.erase({model, surface->id});
  ++counts.surfacesTessellated;
  *p_output =
      operation.allocations().addObject(operation.name(), AllocationKind::tessellation, new pro_tessellation{mesh});
  if (operation.session().onTessellated) {
    operation.session().onTessellated(counts.surfacesTessellated);
  }
  return PRO_TK_NO_ERROR;
}

ProError ProTessellationVerticesGet(ProTessellation tessellation, ProVector** p_vertices) {
  Operation operation("ProTessellationVerticesGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return copyList(operation, tessellation, &SurfaceMesh::vertices, p_vertices);
}

ProError ProTessellationNormalsGet(ProTessellation tessellation, ProVector** p_normals) {
  Operation operation("ProTessellationNormalsGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return copyList(operation, tessellation, &SurfaceMesh::normals, p_normals);
}

ProError ProTessellationParamsGet(ProTessellation tessellation, ProUvParam** p_params) {
  Operation operation("ProTessellationParamsGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return copyList(operation, tessellation, &SurfaceMesh::params, p_params);
}

ProError ProTessellationFacetsGet(ProTessellation tessellation, ProTriangle** p_facets) {
  Operation operation("ProTessellationFacetsGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const ProError status = copyList(operation, tessellation, &SurfaceMesh::facets, p_facets);
  if (status == PRO_TK_NO_ERROR) {
    operation.session().counts.trianglesHandedOut += tessellation->mesh->facets.size();
  }
  return status;
}

ProError ProTessellationFree(ProTessellation* p_tessellation) {
  Operation operation("ProTessellationFree");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return operation.release(p_tessellation, AllocationKind::tessellation);
}
}

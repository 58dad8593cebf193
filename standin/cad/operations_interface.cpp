// A part's exact geometry: interface data, contours and edges.
#include <algorithm>
#include <deque>
#include <exception>
#include <map>

#include "standin/cad/operation.h"

using standin::AllocationKind;
using standin::ExactContour;
using standin::ExactEdge;
using standin::ExactPart;
using standin::ExactSurface;
using standin::Model;
using standin::Operation;
using standin::PlaneCurve;
using standin::Surface;

// The records behind the toolkit's handles. Those that are read from interface data, or from a surface's data, live as
// long as what they were read from; the arrays among them are the toolkit's own, sized for ProArraySizeGet.

struct ptc_curve {
  const PlaneCurve* curve;
};
struct ptc_edge {
  const ExactEdge* edge;
  std::array<ptc_curve, 2> curves;
};
struct ptc_contour {
  int* edgeIds;
};
struct ptc_surf {
  const ExactSurface* surface;
  int id;
  ProContourdata** contours;
};
struct ptc_quilt {
  ProSurfacedata** surfaces;
};

// Handles of a visit.
struct contour {
  const ExactPart* part;
  const ExactContour* record;
};
struct curve_header {
  int id;
};

namespace {

// Records of some surfaces with the arrays that are read from them.
class SurfaceRecords {
 public:
  explicit SurfaceRecords(Operation& operation) : allocations_(operation.allocations()), name_(operation.name()) {}
  ~SurfaceRecords() {
    for (void* array : arrays_) {
      allocations_.release(array, AllocationKind::ownedArray);
    }
  }
  SurfaceRecords(const SurfaceRecords&) = delete;
  SurfaceRecords& operator=(const SurfaceRecords&) = delete;

  ProSurfacedata* add(const ExactSurface& surface, int id) {
    ptc_surf& record = surfaces_.emplace_back(ptc_surf{&surface, id, nullptr});
    std::vector<ProContourdata*> contours;
    contours.reserve(surface.contours.size());
    for (const ExactContour& contour : surface.contours) {
      contours.push_back(&contours_.emplace_back(ptc_contour{arrayOf(contour.edgeIds)}));
    }
    record.contours = arrayOf(contours);
    return &record;
  }
  // A copy as an array of the toolkit; no array for no elements.
  template <typename Element>
  Element* arrayOf(const std::vector<Element>& values) {
    if (values.empty()) return nullptr;
    constexpr std::size_t kSize = sizeof(Element);  // NOLINT(bugprone-sizeof-expression): it may be a handle
    auto* array =
        static_cast<Element*>(allocations_.addArray(name_, kSize, values.size(), false, AllocationKind::ownedArray));
    std::copy(values.begin(), values.end(), array);
    arrays_.push_back(array);
    return array;
  }

 private:
  standin::Allocations& allocations_;
  const char* name_;
  std::deque<ptc_surf> surfaces_;
  std::deque<ptc_contour> contours_;
  std::vector<void*> arrays_;
};

std::shared_ptr<const ExactPart> convert(const Model& model) {
  if (!model.converter) return nullptr;
  try {
    return model.converter->convert();
  } catch (const std::exception&) {
    return nullptr;
  }
}

// The exact surface at an index of the model's surfaces; null when there is none.
const ExactSurface* findSurface(const ExactPart& part, std::size_t index) {
  const auto in = [index](const std::vector<ExactSurface>& surfaces) {
    const auto found =
        std::lower_bound(surfaces.begin(), surfaces.end(), index,
                         [](const ExactSurface& surface, std::size_t wanted) { return surface.index < wanted; });
    return found != surfaces.end() && found->index == index ? &*found : nullptr;
  };
  if (const ExactSurface* found = in(part.solid)) return found;
  for (const std::vector<ExactSurface>& quilt : part.quilts) {
    if (const ExactSurface* found = in(quilt)) return found;
  }
  return nullptr;
}

}  // namespace

struct pro_intf_data {
  explicit pro_intf_data(Operation& operation) : records(operation) {}

  void fill(std::shared_ptr<const ExactPart> converted) {
    part = std::move(converted);
    for (const ExactSurface& surface : part->solid) {
      surfaces.push_back(records.add(surface, surface.recordId));
    }
    for (const std::vector<ExactSurface>& quilt : part->quilts) {
      std::vector<ProSurfacedata*> list;
      list.reserve(quilt.size());
      for (const ExactSurface& surface : quilt) {
        list.push_back(records.add(surface, surface.recordId));
      }
      quilts.push_back({records.arrayOf(list)});
    }
    for (const ExactEdge& edge : part->edges) {
      edges.push_back({&edge, {ptc_curve{&edge.sides[0].curve}, ptc_curve{&edge.sides[1].curve}}});
    }
  }

  std::shared_ptr<const ExactPart> part;
  SurfaceRecords records;
  std::vector<ProSurfacedata*> surfaces;
  std::deque<ptc_quilt> quilts;
  std::deque<ptc_edge> edges;
};

namespace {

// What ProSurfaceDataGet gives out: the toolkit's record first, so that its address is that of the whole.
struct SurfaceItemData : ProGeomitemdata {
  explicit SurfaceItemData(Operation& operation) : ProGeomitemdata{}, records(operation) {}
  std::shared_ptr<const ExactPart> part;
  SurfaceRecords records;
};

template <typename Records>
ProError countOf(const char* name, ProIntfData* data, int* count, Records pro_intf_data::*records) {
  Operation operation(name);
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (operation.object(data, AllocationKind::interfaceData) == nullptr || count == nullptr) return PRO_TK_BAD_INPUTS;
  *count = static_cast<int>((data->*records).size());
  return PRO_TK_NO_ERROR;
}

// Gives the record at a position of one of the lists to `use`.
template <typename Records, typename Use>
ProError recordAt(const char* name, ProIntfData* data, int index, Records pro_intf_data::*records, Use use) {
  Operation operation(name);
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (operation.object(data, AllocationKind::interfaceData) == nullptr) return PRO_TK_BAD_INPUTS;
  if (index < 0 || static_cast<std::size_t>(index) >= (data->*records).size()) return PRO_TK_E_NOT_FOUND;
  use((data->*records)[static_cast<std::size_t>(index)]);
  return PRO_TK_NO_ERROR;
}

double* changeable(const std::vector<double>& values) {
  return values.empty() ? nullptr : const_cast<double*>(values.data());
}
ProVector* changeable(const std::vector<standin::Point>& values) {
  return values.empty() ? nullptr : reinterpret_cast<ProVector*>(const_cast<standin::Point*>(values.data()));
}

}  // namespace

extern "C" {

ProError ProIntfDataAlloc(ProIntfData** p_intf_data) {
  Operation operation("ProIntfDataAlloc");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_intf_data == nullptr) return PRO_TK_BAD_INPUTS;
  *p_intf_data =
      operation.allocations().addObject(operation.name(), AllocationKind::interfaceData, new pro_intf_data(operation));
  return PRO_TK_NO_ERROR;
}

ProError ProIntfDataFree(ProIntfData** p_intf_data) {
  Operation operation("ProIntfDataFree");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return operation.release(p_intf_data, AllocationKind::interfaceData);
}

// Surfaces and curves always come as B-splines, which is what the options must ask for.
ProError ProPartToProIntfData(ProPart p_part, ProRepresentationOpts* p_rep_opts, ProIntfData* p_intf_data) {
  Operation operation("ProPartToProIntfData", true);
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(p_part);
  if (model == nullptr || p_rep_opts == nullptr ||
      operation.object(p_intf_data, AllocationKind::interfaceData) == nullptr) {
    return PRO_TK_BAD_INPUTS;
  }
  if (p_intf_data->part) return operation.misuse("the interface data were filled before");
  if ((p_rep_opts->options & 7U) != 3U || p_rep_opts->curve_rep != 2 || p_rep_opts->surface_rep != 2) {
    return PRO_TK_NOT_IMPLEMENTED;
  }
  std::shared_ptr<const ExactPart> part = convert(*model);
  if (!part) return PRO_TK_E_NOT_FOUND;
  p_intf_data->fill(std::move(part));
  return PRO_TK_NO_ERROR;
}

ProError ProIntfDataSurfaceCount(ProIntfData* p_intf_data, int* p_count) {
  return countOf("ProIntfDataSurfaceCount", p_intf_data, p_count, &pro_intf_data::surfaces);
}

ProError ProIntfDataSurfaceGet(ProIntfData* p_intf_data, int index, ProSurfacedata** p_surface) {
  if (p_surface == nullptr) return PRO_TK_BAD_INPUTS;
  return recordAt("ProIntfDataSurfaceGet", p_intf_data, index, &pro_intf_data::surfaces,
                  [&](ProSurfacedata* surface) { *p_surface = surface; });
}

ProError ProIntfDataEdgeCount(ProIntfData* p_intf_data, int* p_count) {
  return countOf("ProIntfDataEdgeCount", p_intf_data, p_count, &pro_intf_data::edges);
}

ProError ProIntfDataEdgeGet(ProIntfData* p_intf_data, int index, ProEdgedata** p_edge) {
  if (p_edge == nullptr) return PRO_TK_BAD_INPUTS;
  return recordAt("ProIntfDataEdgeGet", p_intf_data, index, &pro_intf_data::edges,
                  [&](ptc_edge& edge) { *p_edge = &edge; });
}

ProError ProIntfDataQuiltCount(ProIntfData* p_intf_data, int* p_count) {
  return countOf("ProIntfDataQuiltCount", p_intf_data, p_count, &pro_intf_data::quilts);
}

ProError ProIntfDataQuiltGet(ProIntfData* p_intf_data, int index, ProQuiltdata** p_quilt) {
  if (p_quilt == nullptr) return PRO_TK_BAD_INPUTS;
  return recordAt("ProIntfDataQuiltGet", p_intf_data, index, &pro_intf_data::quilts,
                  [&](ptc_quilt& quilt) { *p_quilt = &quilt; });
}

ProError ProIntfDataDatumCount(ProIntfData* p_intf_data, int* p_count) {
  Operation operation("ProIntfDataDatumCount");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (operation.object(p_intf_data, AllocationKind::interfaceData) == nullptr || p_count == nullptr) {
    return PRO_TK_BAD_INPUTS;
  }
  *p_count = 0;
  return PRO_TK_NO_ERROR;
}

ProError ProQuiltdataSurfaceArrayGet(ProQuiltdata* p_quilt, ProSurfacedata*** p_surfaces) {
  Operation operation("ProQuiltdataSurfaceArrayGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_quilt == nullptr || p_surfaces == nullptr) return PRO_TK_BAD_INPUTS;
  *p_surfaces = p_quilt->surfaces;
  return p_quilt->surfaces != nullptr ? PRO_TK_NO_ERROR : PRO_TK_E_NOT_FOUND;
}

ProError ProSurfacedataContourArrayGet(ProSurfacedata* p_surface, ProContourdata*** p_contours) {
  Operation operation("ProSurfacedataContourArrayGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_surface == nullptr || p_contours == nullptr) return PRO_TK_BAD_INPUTS;
  *p_contours = p_surface->contours;
  return p_surface->contours != nullptr ? PRO_TK_NO_ERROR : PRO_TK_E_NOT_FOUND;
}

ProError ProContourdataEdgeIdArrayGet(ProContourdata* p_contour, int** p_edge_ids) {
  Operation operation("ProContourdataEdgeIdArrayGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_contour == nullptr || p_edge_ids == nullptr) return PRO_TK_BAD_INPUTS;
  *p_edge_ids = p_contour->edgeIds;
  return p_contour->edgeIds != nullptr ? PRO_TK_NO_ERROR : PRO_TK_E_NOT_FOUND;
}

ProError ProSurfacedataGet(ProSurfacedata* p_surface, ProSrftype* p_type, ProUvParam uv_min, ProUvParam uv_max,
                           ProSurfaceOrient* p_orient, ProSurfaceshapedata* p_shape, int* p_id) {
  Operation operation("ProSurfacedataGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_surface == nullptr || p_type == nullptr || uv_min == nullptr || uv_max == nullptr || p_orient == nullptr ||
      p_shape == nullptr || p_id == nullptr) {
    return PRO_TK_BAD_INPUTS;
  }
  const ExactSurface& surface = *p_surface->surface;
  *p_type = PRO_SRF_B_SPL;
  *p_orient = PRO_SURF_ORIENT_OUT;
  *p_id = p_surface->id;
  uv_min[0] = surface.uKnots.empty() ? 0.0 : surface.uKnots.front();
  uv_max[0] = surface.uKnots.empty() ? 0.0 : surface.uKnots.back();
  uv_min[1] = surface.vKnots.empty() ? 0.0 : surface.vKnots.front();
  uv_max[1] = surface.vKnots.empty() ? 0.0 : surface.vKnots.back();
  *p_shape = {};
  p_shape->b_spline_srf = {{surface.uDegree, surface.vDegree},
                           changeable(surface.uKnots),
                           changeable(surface.vKnots),
                           changeable(surface.weights),
                           changeable(surface.poles),
                           static_cast<int>(surface.uKnots.size()),
                           static_cast<int>(surface.vKnots.size()),
                           static_cast<int>(surface.poles.size())};
  return PRO_TK_NO_ERROR;
}

ProError ProBsplinesrfdataGet(ProSurfaceshapedata* p_shape, int degree[2], double** p_u_knots, double** p_v_knots,
                              double** p_weights, ProVector** p_c_points, int* p_num_u_knots, int* p_num_v_knots,
                              int* p_num_c_points) {
  Operation operation("ProBsplinesrfdataGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_shape == nullptr || degree == nullptr || p_u_knots == nullptr || p_v_knots == nullptr || p_weights == nullptr ||
      p_c_points == nullptr || p_num_u_knots == nullptr || p_num_v_knots == nullptr || p_num_c_points == nullptr) {
    return PRO_TK_BAD_INPUTS;
  }
  const ProBsplinesrfdata& data = p_shape->b_spline_srf;
  if (data.cpnt_arr == nullptr) return PRO_TK_E_NOT_FOUND;
  degree[0] = data.deg[0];
  degree[1] = data.deg[1];
  *p_u_knots = data.u_par_arr;
  *p_v_knots = data.v_par_arr;
  *p_weights = data.wghts;
  *p_c_points = data.cpnt_arr;
  *p_num_u_knots = data.num_par_u;
  *p_num_v_knots = data.num_par_v;
  *p_num_c_points = data.num_cpnts;
  return PRO_TK_NO_ERROR;
}

ProError ProEdgedataGet(ProEdgedata* p_edge, int* p_id, int surf_ids[2], int directions[2], ProUvParam* uv_points[2],
                        ProCurvedata* uv_curves[2], ProCurvedata** p_xyz_curve) {
  Operation operation("ProEdgedataGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_edge == nullptr || p_id == nullptr || surf_ids == nullptr || directions == nullptr || uv_points == nullptr ||
      uv_curves == nullptr || p_xyz_curve == nullptr) {
    return PRO_TK_BAD_INPUTS;
  }
  *p_id = p_edge->edge->id;
  *p_xyz_curve = nullptr;
  for (std::size_t side = 0; side < 2; ++side) {
    const ExactEdge::Side& data = p_edge->edge->sides[side];
    surf_ids[side] = data.surfaceId;
    directions[side] = data.direction;
    uv_points[side] = nullptr;
    uv_curves[side] = data.surfaceId != PRO_VALUE_UNUSED ? &p_edge->curves[side] : nullptr;
  }
  return PRO_TK_NO_ERROR;
}

ProError ProCurvedataTypeGet(ProCurvedata* p_curve, ProEnttype* p_type) {
  Operation operation("ProCurvedataTypeGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_curve == nullptr || p_type == nullptr) return PRO_TK_BAD_INPUTS;
  *p_type = p_curve->curve->type;
  return PRO_TK_NO_ERROR;
}

ProError ProBsplinedataGet(ProCurvedata* p_curve, int* p_degree, double** p_knots, double** p_weights,
                           ProVector** p_c_points, int* p_num_knots, int* p_num_c_points) {
  Operation operation("ProBsplinedataGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_curve == nullptr || p_degree == nullptr || p_knots == nullptr || p_weights == nullptr ||
      p_c_points == nullptr || p_num_knots == nullptr || p_num_c_points == nullptr) {
    return PRO_TK_BAD_INPUTS;
  }
  const PlaneCurve& curve = *p_curve->curve;
  if (curve.type != PRO_ENT_B_SPLINE || curve.poles.empty()) return PRO_TK_BAD_INPUTS;
  *p_degree = curve.degree;
  *p_knots = changeable(curve.knots);
  *p_weights = changeable(curve.weights);
  *p_c_points = changeable(curve.poles);
  *p_num_knots = static_cast<int>(curve.knots.size());
  *p_num_c_points = static_cast<int>(curve.poles.size());
  return PRO_TK_NO_ERROR;
}

ProError ProSurfaceDataGet(ProSurface p_surface, ProGeomitemdata** p_data) {
  Operation operation("ProSurfaceDataGet", true);
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Surface* surface = operation.surface(p_surface);
  if (surface == nullptr || p_data == nullptr) return PRO_TK_BAD_INPUTS;
  std::shared_ptr<const ExactPart> part = convert(*surface->owner);
  const ExactSurface* exact = part ? findSurface(*part, surface->index) : nullptr;
  if (exact == nullptr) return PRO_TK_E_NOT_FOUND;
  auto* data = new SurfaceItemData(operation);
  data->part = std::move(part);
  data->obj_type = PRO_SURFACE;
  data->data.p_surface_data = data->records.add(*exact, surface->id);
  operation.allocations().addObject(operation.name(), AllocationKind::surfaceData, data);
  *p_data = data;
  return PRO_TK_NO_ERROR;
}

ProError ProGeomitemdataFree(ProGeomitemdata** p_data) {
  Operation operation("ProGeomitemdataFree");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return operation.release(p_data, AllocationKind::surfaceData);
}

ProError ProSurfaceContourVisit(ProSurface p_surface, ProContourVisitAction visit_action,
                                ProContourFilterAction filter_action, ProAppData app_data) {
  Operation operation("ProSurfaceContourVisit", true);
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Surface* surface = operation.surface(p_surface);
  if (surface == nullptr || visit_action == nullptr) return PRO_TK_BAD_INPUTS;
  const std::shared_ptr<const ExactPart> part = convert(*surface->owner);
  const ExactSurface* exact = part ? findSurface(*part, surface->index) : nullptr;
  if (exact == nullptr) return PRO_TK_E_NOT_FOUND;
  std::deque<contour> handles;
  std::vector<ProContour> list;
  for (const ExactContour& record : exact->contours) {
    list.push_back(&handles.emplace_back(contour{part.get(), &record}));
    operation.impl().liveContours.insert(list.back());
  }
  const ProError result = standin::visit(operation, list, filter_action, visit_action, app_data);
  for (const ProContour handle : list) operation.impl().liveContours.erase(handle);
  return result;
}

ProError ProContourTraversalGet(ProContour p_contour, ProContourTraversal* p_traversal) {
  Operation operation("ProContourTraversalGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_contour == nullptr || p_traversal == nullptr) return PRO_TK_BAD_INPUTS;
  if (operation.impl().liveContours.count(p_contour) == 0) return operation.misuse("the contour's visit is over");
  *p_traversal = p_contour->record->traversal;
  return PRO_TK_NO_ERROR;
}

ProError ProContourEdgeVisit(ProSurface p_surface, ProContour p_contour, ProEdgeVisitAction visit_action,
                             ProEdgeFilterAction filter_action, ProAppData app_data) {
  Operation operation("ProContourEdgeVisit");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (operation.surface(p_surface) == nullptr || p_contour == nullptr || visit_action == nullptr) {
    return PRO_TK_BAD_INPUTS;
  }
  if (operation.impl().liveContours.count(p_contour) == 0) return operation.misuse("the contour's visit is over");
  std::deque<curve_header> handles;
  std::vector<ProEdge> list;
  for (const int id : p_contour->record->edgeIds) {
    list.push_back(&handles.emplace_back(curve_header{id}));
    operation.impl().liveEdges.insert(list.back());
  }
  const ProError result = standin::visit(operation, list, filter_action, visit_action, app_data);
  for (const ProEdge handle : list) operation.impl().liveEdges.erase(handle);
  return result;
}

ProError ProEdgeIdGet(ProEdge p_edge, int* p_id) {
  Operation operation("ProEdgeIdGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_edge == nullptr || p_id == nullptr) return PRO_TK_BAD_INPUTS;
  if (operation.impl().liveEdges.count(p_edge) == 0) return operation.misuse("the edge's visit is over");
  *p_id = p_edge->id;
  return PRO_TK_NO_ERROR;
}
}

#include "geometry/exact_records.h"

#include <algorithm>
#include <set>

#include "geometry/exact_buffers.h"
#include "geometry/exact_surface.h"

namespace rendara {
namespace {

// What the records hold: curves and surfaces as B-splines.
constexpr unsigned kRepresentationSet = 0x3;
constexpr int kBSplineRepresentation = 2;

using EdgeIds = std::vector<int>;

template <typename Element>
std::span<Element> arrayView(Element* array) {
  int size = 0;
  if (array == nullptr || ProArraySizeGet(array, &size) != PRO_TK_NO_ERROR || size < 0) {
    size = 0;
  }
  return {array, static_cast<std::size_t>(size)};
}

// The edges of each contour of a record.
std::vector<EdgeIds> contoursOf(ProSurfacedata* record) {
  ProContourdata** contours = nullptr;
  if (record == nullptr || ProSurfacedataContourArrayGet(record, &contours) != PRO_TK_NO_ERROR) {
    return {};
  }
  std::vector<EdgeIds> edges;
  for (ProContourdata* contour : arrayView(contours)) {
    int* ids = nullptr;
    EdgeIds& list = edges.emplace_back();
    if (ProContourdataEdgeIdArrayGet(contour, &ids) == PRO_TK_NO_ERROR) {
      const auto view = arrayView(ids);
      list.assign(view.begin(), view.end());
    }
  }
  return edges;
}

// The contours of a collected surface, each ordered for a search.
std::vector<std::set<int>> contoursOf(ProSurface surface) {
  GeomitemData data;
  if (ProSurfaceDataGet(surface, data.receive()) != PRO_TK_NO_ERROR || !data || data.get()->obj_type != PRO_SURFACE) {
    return {};
  }
  std::vector<std::set<int>> sets;
  for (const EdgeIds& ids : contoursOf(data.get()->data.p_surface_data)) {
    sets.emplace_back(ids.begin(), ids.end());
  }
  return sets;
}

bool matches(const std::vector<EdgeIds>& record, const std::vector<std::set<int>>& surface) {
  return std::any_of(record.begin(), record.end(), [&](const EdgeIds& ids) {
    return std::any_of(surface.begin(), surface.end(), [&](const std::set<int>& own) {
      return std::all_of(ids.begin(), ids.end(), [&](int id) { return own.count(id) != 0; });
    });
  });
}

// Files the records that no surface has the identifier of. A surface's contours are read when they are first needed.
class ContourMatcher {
 public:
  explicit ContourMatcher(const SurfaceCollection& collection) : collection_(collection) {}

  // The identifier of the first surface that a record matches; null when it matches none.
  const int* find(ProSurfacedata* record) {
    const std::vector<EdgeIds> contours = contoursOf(record);
    for (std::size_t index = 0; index < collection_.surfaces.size(); ++index) {
      if (index == surfaces_.size()) {
        Entry& entry = surfaces_.emplace_back();
        ProSurfaceIdGet(collection_.surfaces[index], &entry.id);
        entry.contours = contoursOf(collection_.surfaces[index]);
      }
      if (matches(contours, surfaces_[index].contours)) {
        return &surfaces_[index].id;
      }
    }
    return nullptr;
  }

 private:
  struct Entry {
    int id = 0;
    std::vector<std::set<int>> contours;
  };

  const SurfaceCollection& collection_;
  std::vector<Entry> surfaces_;
};

// What an edge's data say; -1 stands for no surface.
struct EdgeSides {
  int id = PRO_VALUE_UNUSED;
  int surfaces[2] = {PRO_VALUE_UNUSED, PRO_VALUE_UNUSED};
  int directions[2] = {};
  ProCurvedata* curves[2] = {};
};

bool readEdge(ProEdgedata* edge, EdgeSides& sides) {
  ProUvParam* points[2] = {};
  ProCurvedata* inSpace = nullptr;
  return ProEdgedataGet(edge, &sides.id, sides.surfaces, sides.directions, points, sides.curves, &inSpace) ==
         PRO_TK_NO_ERROR;
}

bool isBSpline(ProCurvedata* curve) {
  ProEnttype type = PRO_ENT_LINE;
  return curve != nullptr && ProCurvedataTypeGet(curve, &type) == PRO_TK_NO_ERROR && type == PRO_ENT_B_SPLINE;
}

TrimCurve readCurve(ProCurvedata* curve) {
  double* knots = nullptr;
  double* weights = nullptr;
  ProVector* points = nullptr;
  int knotCount = 0;
  int pointCount = 0;
  TrimCurve result;
  const bool read =
      ProBsplinedataGet(curve, &result.degree, &knots, &weights, &points, &knotCount, &pointCount) == PRO_TK_NO_ERROR;
  result.readable = read && result.degree > 0 && pointCount > 0 && knotCount - pointCount == result.degree + 1 &&
                    knots != nullptr && points != nullptr;
  if (!result.readable) {
    return result;
  }
  result.knots.assign(knots, knots + knotCount);
  result.points.reserve(static_cast<std::size_t>(pointCount));
  for (int i = 0; i < pointCount; ++i) {
    result.points.push_back({points[i][0], points[i][1], weights != nullptr ? weights[i] : 1.0});
  }
  return result;
}

// Visits the contours of one surface.
class TrimCollector {
 public:
  TrimCollector(const ExactRecords& records, ProSurface surface, ExactSurfaceBuffers& buffers)
      : records_(records), surface_(surface), buffers_(buffers) {
    ProSurfaceIdGet(surface, &surfaceId_);
  }

  void collect() {
    ProSurfaceContourVisit(surface_, addContour, nullptr, this);
    guard_.rethrow();
  }

 private:
  static ProError addContour(ProContour contour, ProError, ProAppData data) {
    auto& collector = *static_cast<TrimCollector*>(data);
    return collector.guard_.run([&] {
      collector.readContour(contour);
      return PRO_TK_NO_ERROR;
    });
  }
  static ProError addEdge(ProEdge edge, ProError, ProAppData data) {
    auto& collector = *static_cast<TrimCollector*>(data);
    return collector.edgeGuard_.run([&] {
      collector.readEdgeCurve(edge);
      return PRO_TK_NO_ERROR;
    });
  }

  void readContour(ProContour contour) {
    ProContourTraversal traversal = PRO_CONTOUR_TRAV_NONE;
    ProContourTraversalGet(contour, &traversal);
    curves_.clear();
    ProContourEdgeVisit(surface_, contour, addEdge, nullptr, this);
    edgeGuard_.rethrow();
    if (mustReverse(traversal, orientationCount(curves_))) {
      reverseContour(curves_);
    }
    buffers_.appendTrim(curves_, traversal);
  }

  void readEdgeCurve(ProEdge edge) {
    int id = PRO_VALUE_UNUSED;
    ProEdgeIdGet(edge, &id);
    ProEdgedata* record = records_.edge(id);
    EdgeSides sides;
    if (record == nullptr || !readEdge(record, sides)) {
      return;
    }
    const int side = sideOf(sides, id);
    if (side < 0 || !isBSpline(sides.curves[side])) {
      return;
    }
    TrimCurve curve = readCurve(sides.curves[side]);
    curves_.push_back(sides.directions[side] == 1 ? reversed(curve) : std::move(curve));
  }

  // The side of an edge that lies on this surface; -1 when none does. An edge that the surface meets on both sides, a
  // seam, gives its first side at the first meeting and its second at the second.
  int sideOf(const EdgeSides& sides, int id) {
    const bool first = sides.surfaces[0] == surfaceId_;
    const bool second = sides.surfaces[1] == surfaceId_;
    if (first && second) {
      return seamsMet_.insert(id).second ? 0 : 1;
    }
    return first ? 0 : (second ? 1 : -1);
  }

  const ExactRecords& records_;
  ProSurface surface_;
  int surfaceId_ = PRO_VALUE_UNUSED;
  ExactSurfaceBuffers& buffers_;
  std::vector<TrimCurve> curves_;
  std::set<int> seamsMet_;
  VisitGuard guard_;
  VisitGuard edgeGuard_;
};

}  // namespace

ExactRecords::ExactRecords(const SurfaceCollection& collection) {
  ProRepresentationOpts options{};
  options.options = kRepresentationSet;
  options.curve_rep = kBSplineRepresentation;
  options.surface_rep = kBSplineRepresentation;
  if (ProIntfDataAlloc(data_.receive()) != PRO_TK_NO_ERROR || !data_ ||
      ProPartToProIntfData(collection.part, &options, data_.get()) != PRO_TK_NO_ERROR) {
    data_.reset();
    return;
  }
  readEdges();
  readSurfaces(collection);
}

void ExactRecords::readEdges() {
  int count = 0;
  ProIntfDataEdgeCount(data_.get(), &count);
  for (int position = 0; position < count; ++position) {
    ProEdgedata* record = nullptr;
    EdgeSides sides;
    if (ProIntfDataEdgeGet(data_.get(), position, &record) == PRO_TK_NO_ERROR && record != nullptr &&
        readEdge(record, sides)) {
      edgePositions_[sides.id] = position;
    }
  }
}

void ExactRecords::readSurfaces(const SurfaceCollection& collection) {
  std::vector<ProSurfacedata*> unmatched;
  int count = 0;
  ProIntfDataSurfaceCount(data_.get(), &count);
  for (int position = 0; position < count; ++position) {
    ProSurfacedata* record = nullptr;
    if (ProIntfDataSurfaceGet(data_.get(), position, &record) == PRO_TK_NO_ERROR) {
      file(record, collection, unmatched);
    }
  }
  count = 0;
  ProIntfDataQuiltCount(data_.get(), &count);
  for (int position = 0; position < count; ++position) {
    ProQuiltdata* quilt = nullptr;
    ProSurfacedata** surfaces = nullptr;
    if (ProIntfDataQuiltGet(data_.get(), position, &quilt) != PRO_TK_NO_ERROR || quilt == nullptr ||
        ProQuiltdataSurfaceArrayGet(quilt, &surfaces) != PRO_TK_NO_ERROR) {
      continue;
    }
    for (ProSurfacedata* record : arrayView(surfaces)) {
      file(record, collection, unmatched);
    }
  }
  // Asked for as the host expects it; datums have no surfaces.
  ProIntfDataDatumCount(data_.get(), &count);

  ContourMatcher matcher(collection);
  for (ProSurfacedata* record : unmatched) {
    if (const int* id = matcher.find(record)) {
      records_[*id].push_back(record);
    }
  }
}

void ExactRecords::file(ProSurfacedata* record, const SurfaceCollection& collection,
                        std::vector<ProSurfacedata*>& unmatched) {
  if (record == nullptr) {
    return;
  }
  SurfaceRecord read;
  readRecord(record, read);
  if (collection.ids.count(read.id) != 0) {
    records_[read.id].push_back(record);
  } else {
    unmatched.push_back(record);
  }
}

std::span<ProSurfacedata* const> ExactRecords::recordsOf(int surfaceId) const {
  const auto found = records_.find(surfaceId);
  return found != records_.end() ? std::span<ProSurfacedata* const>(found->second) : std::span<ProSurfacedata* const>();
}

ProEdgedata* ExactRecords::edge(int edgeId) const {
  const auto found = edgePositions_.find(edgeId);
  ProEdgedata* record = nullptr;
  if (found == edgePositions_.end() || ProIntfDataEdgeGet(data_.get(), found->second, &record) != PRO_TK_NO_ERROR) {
    return nullptr;
  }
  return record;
}

void ExactRecords::collectTrims(ProSurface surface, ExactSurfaceBuffers& buffers) const {
  TrimCollector(*this, surface, buffers).collect();
}

}  // namespace rendara

#include "tests/step/exact_checks.h"

#include <BRep_Tool.hxx>
#include <Geom_Surface.hxx>
#include <TopLoc_Location.hxx>
#include <algorithm>
#include <cmath>
#include <set>
#include <sstream>

#include "standin/step/exact_measure.h"
#include "standin/step/step_mesher.h"
#include "tests/step/mesh_checks.h"
#include "tools/rpk/vector_math.h"

namespace standin::test {

namespace {

constexpr double kGap = 1e-6;
constexpr double kArea = 0.005;

Point startOf(const TrimPiece& piece) { return piece.against ? piece.curve->poles.back() : piece.curve->poles.front(); }
Point endOf(const TrimPiece& piece) { return piece.against ? piece.curve->poles.front() : piece.curve->poles.back(); }

using rpk::distance;

bool isClamped(int degree, const std::vector<double>& knots, std::size_t poles) {
  const auto order = static_cast<std::size_t>(degree) + 1;
  if (degree < 1 || poles < order || knots.size() != poles + order) return false;
  return std::is_sorted(knots.begin(), knots.end()) && knots.front() == knots[order - 1] &&
         knots.back() == knots[poles] && knots.front() < knots.back();
}

bool isSound(const PlaneCurve& curve) {
  return isClamped(curve.degree, curve.knots, curve.poles.size()) &&
         (curve.weights.empty() || curve.weights.size() == curve.poles.size());
}

bool isSound(const ExactSurface& surface) {
  const std::size_t rows = surface.uKnots.size() - static_cast<std::size_t>(surface.uDegree) - 1;
  const std::size_t columns = surface.vKnots.size() - static_cast<std::size_t>(surface.vDegree) - 1;
  return isClamped(surface.uDegree, surface.uKnots, rows) && isClamped(surface.vDegree, surface.vKnots, columns) &&
         surface.poles.size() == rows * columns &&
         (surface.weights.empty() || surface.weights.size() == surface.poles.size());
}

// The sum of the signs of the control polygon's turns.
long turnsOf(const std::vector<TrimPiece>& contour) {
  std::vector<Point> points;
  for (const TrimPiece& piece : contour) {
    std::vector<Point> poles = piece.curve->poles;
    if (piece.against) std::reverse(poles.begin(), poles.end());
    points.insert(points.end(), poles.begin(), poles.end());
  }
  long count = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const Point& a = points[i];
    const Point& b = points[(i + 1) % points.size()];
    const Point& c = points[(i + 2) % points.size()];
    const double turn = (a[0] - b[0]) * (c[1] - b[1]) - (a[1] - b[1]) * (c[0] - b[0]);
    count += turn > 0.0 ? 1 : turn < 0.0 ? -1 : 0;
  }
  return count;
}

std::string described(const ExactSurface& surface, const std::string& what, double value) {
  std::ostringstream text;
  text << "surface " << surface.index << ": " << what << ' ' << value;
  return text.str();
}

// How far the mesh is from the surface's points at the same parameters, or these from the face's own points there,
// whichever is less: files may have vertices beside their surfaces.
double widestMiss(const ExactSurface& surface, const SurfaceMesh& mesh, const TopoDS_Face& face, double unit) {
  TopLoc_Location location;
  const Handle(Geom_Surface) own = BRep_Tool::Surface(face, location);
  double widest = 0.0;
  for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
    const auto [u, v] = mesh.params[i];
    const Point point = pointAt(surface, u, v);
    const double miss = distance(point, mesh.vertices[i]);
    if (!(miss > widest)) continue;
    const gp_XYZ exact = own->Value(u, v).Transformed(location.Transformation()).XYZ() / unit;
    widest = std::max(widest, std::min(miss, distance(point, {exact.X(), exact.Y(), exact.Z()})));
  }
  return widest;
}

}  // namespace

SurfaceTrims::SurfaceTrims(const ExactSurface& surface, int surfaceId, const std::map<int, const ExactEdge*>& edges,
                           std::vector<std::string>& faults)
    : surface_(surface) {
  std::map<int, std::size_t> met;
  for (const ExactContour& contour : surface.contours) {
    std::vector<TrimPiece>& pieces = contours_.emplace_back();
    for (const int id : contour.edgeIds) {
      const auto found = edges.find(id);
      if (found == edges.end()) {
        faults.push_back(described(surface, "unknown edge", id));
        continue;
      }
      const auto& sides = found->second->sides;
      // A seam's sides in the order in which they are met.
      std::size_t side = sides[0].surfaceId == surfaceId ? 0 : 1;
      if (sides[0].surfaceId == surfaceId && sides[1].surfaceId == surfaceId) side = met[id]++;
      if (side > 1 || sides[side].surfaceId != surfaceId || !isSound(sides[side].curve)) {
        faults.push_back(described(surface, "no sound side of edge", id));
        continue;
      }
      pieces.push_back({&sides[side].curve, sides[side].direction == 1});
    }
  }
}

double SurfaceTrims::widestGap() const {
  const ParameterRange u = domainOf(surface_.uDegree, surface_.uKnots);
  const ParameterRange v = domainOf(surface_.vDegree, surface_.vKnots);
  double widest = 0.0;
  for (const auto& pieces : contours_) {
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      widest = std::max(widest, distance(endOf(pieces[i]), startOf(pieces[(i + 1) % pieces.size()])));
    }
  }
  return widest / std::hypot(u.width(), v.width());
}

double SurfaceTrims::area() const {
  std::vector<TrimPiece> all;
  for (const auto& pieces : contours_) all.insert(all.end(), pieces.begin(), pieces.end());
  return trimmedArea(surface_, all);
}

std::size_t SurfaceTrims::wrongWay() const {
  std::size_t count = 0;
  for (std::size_t i = 0; i < contours_.size(); ++i) {
    const bool outer = surface_.contours[i].traversal == PRO_CONTOUR_TRAV_EXTERNAL;
    if ((parameterArea(contours_[i]) > 0.0) != outer) ++count;
  }
  return count;
}

std::size_t SurfaceTrims::misleadingTurns() const {
  std::size_t count = 0;
  for (std::size_t i = 0; i < contours_.size(); ++i) {
    // A counter-clockwise polygon turns negative by this rule.
    const long turns = turnsOf(contours_[i]);
    const bool outer = surface_.contours[i].traversal == PRO_CONTOUR_TRAV_EXTERNAL;
    if (outer ? turns >= 0 : turns < 0) ++count;
  }
  return count;
}

std::map<int, const ExactEdge*> edgesById(const ExactPart& part) {
  std::map<int, const ExactEdge*> edges;
  for (const ExactEdge& edge : part.edges) edges.emplace(edge.id, &edge);
  return edges;
}

std::vector<const ExactSurface*> surfacesOf(const ExactPart& part) {
  std::vector<const ExactSurface*> surfaces;
  for (const ExactSurface& surface : part.solid) surfaces.push_back(&surface);
  for (const auto& quilt : part.quilts) {
    for (const ExactSurface& surface : quilt) surfaces.push_back(&surface);
  }
  return surfaces;
}

ExactFacts exactFacts(Model& part, double chordHeight) {
  ExactFacts facts;
  const auto exact = part.converter->convert();
  if (!exact) return {0, 0, 0, {"nothing was converted"}};
  const PartShape& shape = dynamic_cast<const StepMesher&>(*part.mesher).shape();
  const PartMeasure measure = measurePart(part).value();
  const Point size = {(*part.outline)[1][0] - (*part.outline)[0][0], (*part.outline)[1][1] - (*part.outline)[0][1],
                      (*part.outline)[1][2] - (*part.outline)[0][2]};
  const double reach = 3.0 * chordHeight + 1e-6 * std::hypot(size[0], size[1], size[2]);
  const auto edges = edgesById(*exact);
  if (edges.size() != exact->edges.size()) facts.faults.emplace_back("edge ids are not unique");
  for (const auto& [index, reason] : exact->failures) {
    facts.faults.push_back("surface " + std::to_string(index) + ": " + reason);
  }
  facts.surfaces = part.surfaces.size();
  std::set<std::size_t> seen;
  for (const ExactSurface* surface : surfacesOf(*exact)) {
    const std::size_t before = facts.faults.size();
    const SurfaceTrims trims(*surface, part.surfaces[surface->index].id, edges, facts.faults);
    const auto require = [&](bool holds, const char* what, double value) {
      if (!holds) facts.faults.push_back(described(*surface, what, value));
    };
    require(seen.insert(surface->index).second, "stands twice:", 2);
    require(isSound(*surface), "knots and poles do not fit:", static_cast<double>(surface->poles.size()));
    require(trims.widestGap() < kGap, "gap", trims.widestGap());
    require(trims.wrongWay() == 0, "contours that run the wrong way:", static_cast<double>(trims.wrongWay()));
    const double area = std::abs(measure.surfaceAreas[surface->index]);
    require(std::abs(trims.area() - area) <= kArea * area, "relative error of area", trims.area() / area - 1.0);
    std::string failure;
    if (const auto mesh = part.mesher->mesh(surface->index, chordHeight, failure)) {
      const double miss = widestMiss(*surface, *mesh, shape.faces[surface->index], shape.unit);
      require(miss <= reach, "distance of mesh over what is allowed", miss / reach);
    }
    if (facts.faults.size() == before) ++facts.passed;
    if (trims.misleadingTurns() > 0) ++facts.misleading;
  }
  return facts;
}

}  // namespace standin::test

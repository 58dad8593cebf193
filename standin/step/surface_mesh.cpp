#include "standin/step/surface_mesh.h"

#include <BRep_Tool.hxx>
#include <GeomLib.hxx>
#include <Geom_Surface.hxx>
#include <Poly_Triangulation.hxx>
#include <Precision.hxx>
#include <TopLoc_Location.hxx>
#include <algorithm>
#include <gp_Trsf.hxx>
#include <gp_Vec.hxx>
#include <optional>

namespace standin {

namespace {

// Below this share of the square of the longer tangent, the product of the tangents has no direction to rely on.
constexpr double kParallelTangents = 1e-6;

// Su x Sv, of length 1; none at a pole or an apex where no direction can be had.
std::optional<gp_Vec> surfaceNormal(const Handle(Geom_Surface) & surface, const gp_Pnt2d& at) {
  gp_Pnt point;
  gp_Vec alongU;
  gp_Vec alongV;
  surface->D1(at.X(), at.Y(), point, alongU, alongV);
  const gp_Vec normal = alongU.Crossed(alongV);
  const double longest = std::max(alongU.SquareMagnitude(), alongV.SquareMagnitude());
  if (longest > 0.0 && normal.Magnitude() > kParallelTangents * longest) return normal.Normalized();
  gp_Dir estimate;
  if (GeomLib::NormEstim(surface, at, Precision::Confusion(), estimate) > 1) return std::nullopt;
  return gp_Vec(estimate);
}

Point pointFrom(const gp_XYZ& xyz, double unit) { return {xyz.X() / unit, xyz.Y() / unit, xyz.Z() / unit}; }

gp_Vec vectorFrom(const Point& from, const Point& to) { return {to[0] - from[0], to[1] - from[1], to[2] - from[2]}; }

// The sum of the facets' normals around each vertex, weighted by their areas; over all facets for a vertex whose own
// facets have no area.
class FacetNormals {
 public:
  FacetNormals(const SurfaceMesh& mesh, std::size_t firstVertex, std::size_t firstFacet)
      : first_(firstVertex), sums_(mesh.vertices.size() - firstVertex) {
    for (std::size_t i = firstFacet; i < mesh.facets.size(); ++i) {
      std::array<std::size_t, 3> corners{};
      for (std::size_t k = 0; k < 3; ++k) corners[k] = static_cast<std::size_t>(mesh.facets[i][k]);
      const gp_Vec normal = vectorFrom(mesh.vertices[corners[0]], mesh.vertices[corners[1]])
                                .Crossed(vectorFrom(mesh.vertices[corners[0]], mesh.vertices[corners[2]]));
      for (const std::size_t corner : corners) sums_[corner - first_] += normal;
      all_ += normal;
    }
  }

  gp_Vec at(std::size_t vertex) const {
    for (const gp_Vec& candidate : {sums_[vertex - first_], all_}) {
      if (candidate.Magnitude() > 0.0) return candidate.Normalized();
    }
    return {0.0, 0.0, 1.0};
  }

 private:
  std::size_t first_;
  std::vector<gp_Vec> sums_;
  gp_Vec all_;
};

void appendFacets(const Poly_Triangulation& triangulation, bool swapped, int firstVertex, SurfaceMesh& mesh) {
  for (int i = 1; i <= triangulation.NbTriangles(); ++i) {
    std::array<int, 3> corners{};
    triangulation.Triangle(i).Get(corners[0], corners[1], corners[2]);
    if (swapped) std::swap(corners[1], corners[2]);
    for (int& corner : corners) corner += firstVertex - 1;
    mesh.facets.push_back(corners);
  }
}

}  // namespace

bool appendTriangulation(const TopoDS_Face& face, double unit, SurfaceMesh& mesh) {
  TopLoc_Location location;
  const Handle(Poly_Triangulation) triangulation = BRep_Tool::Triangulation(face, location);
  if (triangulation.IsNull() || triangulation->NbTriangles() == 0 || !triangulation->HasUVNodes()) return false;
  const std::size_t firstVertex = mesh.vertices.size();
  const std::size_t firstFacet = mesh.facets.size();
  const gp_Trsf transform = location.Transformation();
  const bool reversed = face.Orientation() == TopAbs_REVERSED;
  const auto nodes = static_cast<std::size_t>(triangulation->NbNodes());
  for (std::vector<Point>* list : {&mesh.vertices, &mesh.normals}) list->reserve(firstVertex + nodes);
  mesh.params.reserve(firstVertex + nodes);
  for (int i = 1; i <= triangulation->NbNodes(); ++i) {
    const gp_Pnt2d at = triangulation->UVNode(i);
    mesh.vertices.push_back(pointFrom(triangulation->Node(i).Transformed(transform).XYZ(), unit));
    mesh.params.push_back({at.X(), at.Y()});
  }
  appendFacets(*triangulation, reversed != transform.IsNegative(), static_cast<int>(firstVertex), mesh);

  TopLoc_Location surfaceLocation;
  const Handle(Geom_Surface) surface = BRep_Tool::Surface(face, surfaceLocation);
  std::optional<FacetNormals> fallback;
  for (int i = 1; i <= triangulation->NbNodes(); ++i) {
    std::optional<gp_Vec> normal = surfaceNormal(surface, triangulation->UVNode(i));
    if (normal) {
      normal->Transform(transform);
      if (reversed) normal->Reverse();
      normal->Normalize();
    } else {
      if (!fallback) fallback.emplace(mesh, firstVertex, firstFacet);
      normal = fallback->at(firstVertex + static_cast<std::size_t>(i) - 1);
    }
    mesh.normals.push_back({normal->X(), normal->Y(), normal->Z()});
  }
  return true;
}

}  // namespace standin

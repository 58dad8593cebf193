#include "tests/step/mesh_checks.h"

#include <cmath>
#include <map>
#include <utility>

#include "tools/rpk/vector_math.h"

namespace standin::test {

namespace {

Point minus(const Point& left, const Point& right) {
  return {left[0] - right[0], left[1] - right[1], left[2] - right[2]};
}

using rpk::cross;
using rpk::dot;

// Sides by their end points: the directions of a shared side cancel.
using Sides = std::map<std::pair<Point, Point>, int>;

void addSide(const Point& from, const Point& to, Sides& sides) {
  if (from < to) ++sides[{from, to}];
  if (to < from) --sides[{to, from}];
}

struct Tiny {
  double area;
  bool against;
};

void addFacet(const SurfaceMesh& mesh, const std::array<int, 3>& facet, MeshFacts& facts, double& surfaceArea,
              std::vector<Tiny>& facets, Sides& sides) {
  std::array<Point, 3> corners{};
  double alongNormals = 0.0;
  for (std::size_t i = 0; i < 3; ++i) corners[i] = mesh.vertices.at(static_cast<std::size_t>(facet[i]));
  const Point normal = cross(minus(corners[1], corners[0]), minus(corners[2], corners[0]));
  for (std::size_t i = 0; i < 3; ++i) {
    alongNormals += dot(normal, mesh.normals.at(static_cast<std::size_t>(facet[i])));
    addSide(corners[i], corners[(i + 1) % 3], sides);
  }
  const double area = 0.5 * std::sqrt(dot(normal, normal));
  surfaceArea += area;
  facts.volume += dot(corners[0], normal) / 6.0;
  facets.push_back({area, alongNormals <= 0.0});
}

}  // namespace

MeshFacts meshFacts(Model& part, double chordHeight) {
  MeshFacts facts;
  std::vector<Tiny> facets;
  Sides sides;
  for (std::size_t i = 0; i < part.surfaces.size(); ++i) {
    facts.areas.push_back(0.0);
    std::string failure;
    const auto mesh = part.mesher->mesh(i, chordHeight, failure);
    if (!mesh) {
      facts.failures.push_back(std::to_string(i) + ": " + failure);
      continue;
    }
    for (const Point& normal : mesh->normals) facts.badNormals += std::abs(dot(normal, normal) - 1.0) > 1e-9 ? 1 : 0;
    for (const auto& facet : mesh->facets) addFacet(*mesh, facet, facts, facts.areas.back(), facets, sides);
    facts.area += facts.areas.back();
  }
  facts.facets = facets.size();
  for (const Tiny& facet : facets) {
    if (facet.against && facet.area > 1e-6 * facts.area) ++facts.facetsAgainstNormals;
  }
  for (const auto& side : sides) facts.openEdges += side.second != 0 ? 1 : 0;
  return facts;
}

double defaultChordHeight(const Model& part) {
  const Point size = minus((*part.outline)[1], (*part.outline)[0]);
  return 0.000161 * std::sqrt(dot(size, size));
}

}  // namespace standin::test

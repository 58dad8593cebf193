// What the tests ask of the meshes of a part.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "standin/cad/model.h"

namespace standin::test {

// Over all surfaces of a part.
struct MeshFacts {
  std::vector<double> areas;  // by surface; 0 for one without a mesh
  double area = 0.0;
  double volume = 0.0;  // signed: positive when the facets face outward
  std::size_t facets = 0;
  std::size_t facetsAgainstNormals = 0;  // but for those smaller than a millionth of the part's area
  std::size_t badNormals = 0;            // not of length 1
  std::size_t openEdges = 0;             // sides of facets that no other facet shares the other way round
  std::vector<std::string> failures;
};

MeshFacts meshFacts(Model& part, double chordHeight);

// The chord height that the plug-in asks for at its default quality.
double defaultChordHeight(const Model& part);

}  // namespace standin::test

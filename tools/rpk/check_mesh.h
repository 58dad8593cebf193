// The check of one triangle mesh.
#pragma once

#include <cstdint>

#include "tools/rpk/check_reporter.h"
#include "tools/rpk/package_reader.h"

namespace rpk {

// An array of a geometry block that can be used: of the type that its name asks for.
struct CheckedArray {
  ArrayView view;
  Place place;  // of its parameter
  std::size_t count = 0;
  bool given = false;
  bool usable = true;  // type and words are right
  bool finite = true;
};

struct CheckedMesh {
  CheckedArray vertices;
  CheckedArray normals;
  CheckedArray uvs;
  CheckedArray triangles;
  Place place;  // of the geometry block
};

// Share of the mesh's area up to which facets may look against their normals: slivers that rounding turns over.
inline constexpr double kSliverShare = 1e-6;

// Counts, index ranges, degenerate facets, and facets against their normals, once all arrays are known. Facets are
// looked at where vertices and triangles are packed: a text array has no access by index. Gives the number of
// triangles.
std::uint64_t checkMesh(const CheckedMesh& mesh, CheckReporter& reporter);

}  // namespace rpk

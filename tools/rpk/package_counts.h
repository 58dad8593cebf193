// What a package holds, counted in one pass without keeping any of it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/rpk/package_reader.h"

namespace rpk {

// Bytes of the file by what they stand for; together the size of the file.
struct ByteCounts {
  std::uint64_t mesh = 0;       // arrays of triangle meshes, packed or as text
  std::uint64_t nurbs = 0;      // arrays of exact surfaces
  std::uint64_t animation = 0;  // matrices and timestamps
  std::uint64_t text = 0;       // all the rest
};

struct PackageCounts {
  std::uint64_t groups = 0;
  // Groups below another group that stand for a placed part (or an assembly's own surfaces): those that are neither a
  // sub-assembly (flag 0x8000) nor the inner group of one material (flag 0x10000).
  std::uint64_t occurrences = 0;
  std::uint64_t references = 0;  // geometry of type "instance"
  std::uint64_t objects = 0;     // references and exact surfaces included
  std::uint64_t nurbsObjects = 0;
  std::uint64_t vertices = 0;         // written
  std::uint64_t triangles = 0;        // written
  std::uint64_t trianglesPlaced = 0;  // written, and once more at every reference
  std::uint64_t materials = 0;        // distinct names of material blocks
  std::uint64_t cameras = 0;
  std::uint64_t animations = 0;
  ByteCounts bytes;
  std::uint64_t faultCount = 0;
  std::vector<Fault> faults;  // the first ones
};

PackageCounts countPackage(std::string_view bytes, const ReadLimits& limits = {});

}  // namespace rpk

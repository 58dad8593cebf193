// The exact surfaces of a package, part by part: how many, which of them are sound, and their area beside the meshes'.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/rpk/exact/exact_check.h"

namespace rpk {

// Areas are in square model units, before any placement.
struct ExactSums {
  std::size_t surfaces = 0;
  std::size_t sound = 0;
  double area = 0;      // within the trims, of the surfaces that can be read
  double meshArea = 0;  // of the meshes beside them

  void add(const ExactSums& other);
  // By how many percent of the exact area the meshes' is larger; nothing where one of them is missing.
  std::optional<double> meshExcess() const;
};

struct UnsoundSurface {
  std::size_t number = 0;  // in its part, from 0
  std::string what;
};

struct ExactPart {
  const Group* group = nullptr;  // that holds the geometry, groups of one material included; null outside any group
  std::size_t places = 1;        // where it is drawn: its own, and those of the references to it
  ExactSums sums;
  std::vector<UnsoundSurface> unsound;
};

// Told after each surface how many of all are done.
using SurfacesDone = std::function<void(std::size_t done, std::size_t all)>;

// The parts with exact surfaces, in the order of the file, evaluated once each however often they are drawn.
std::vector<ExactPart> exactParts(const Scene& scene, const SurfacesDone& progress = {});

ExactSums sumOf(const std::vector<ExactPart>& parts);

}  // namespace rpk

// The box around all that a scene draws.
#pragma once

#include <array>
#include <cstdint>
#include <limits>

#include "tools/rpk/scene_summary.h"

namespace rpk {

// Along the axes, model units. Empty until something was included; what is not finite is left out.
struct Box {
  Vector low = {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(),
                std::numeric_limits<double>::infinity()};
  Vector high = {-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                 -std::numeric_limits<double>::infinity()};

  bool empty() const { return !(low[0] <= high[0]); }
  Vector size() const;  // zeros when empty
  void include(const Vector& point);
  bool contains(const Box& other) const;
};

struct SceneBox {
  Box box;
  // Otherwise the box may be too large, never too small: the boxes of turned meshes stand for their vertices.
  bool exact = true;
};

// All vertices of the meshes at every place they are drawn at, references followed, animations at rest. Meshes are read
// where they lie in the file. Once so many vertices have been looked at, the box is no longer exact.
SceneBox sceneBox(const Scene& scene, std::uint64_t mostVertices = 2'000'000'000);

}  // namespace rpk

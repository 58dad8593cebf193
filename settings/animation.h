// The mechanism animation of the components: the frames that belong to one command, and how they become a block of
// the scene.
#pragma once

#include <array>
#include <map>
#include <vector>

#include "platform/creo_toolkit.h"
#include "scene/matrix.h"

namespace rendara {

class vntScene_api;

// A placement in the numbers that a frame file has for it: the rows of the rotation, then the translation. They are of
// single precision and the matrix's fourth column is always the same, so this is the whole matrix in three eighths of
// its room.
struct FramePlacement {
  std::array<float, 12> numbers;

  Matrix matrix() const;  // in double precision, the fourth column 0, 0, 0, 1
  bool operator==(const FramePlacement&) const = default;
};

struct AnimationFrames {
  // By the identifiers of a component's full path: its placements in the top model, a matrix each frame.
  std::map<std::vector<int>, std::vector<FramePlacement>> animationFrames;
  int animationFrameCount = 0;  // as the file's header has it; a component can have more or fewer matrices
  int animationFrameRate = 25;  // frames per second

  void clear() {
    animationFrames.clear();
    animationFrameCount = 0;
  }
};

// Writes the animation block of the component with that full path, if it moves: its frames relative to where it
// stands now (frame times the inverse of its placement in the top model; the frame itself when there is no inverse),
// and the frames' times in milliseconds.
void writeComponentAnimation(vntScene_api& scene, const AnimationFrames& frames, const ProAsmcomppath& animationPath,
                             const Matrix& placement, const char* name);

}  // namespace rendara

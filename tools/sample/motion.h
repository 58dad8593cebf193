// One turn of the sample's crank as a mechanism frame file.
#pragma once

#include <filesystem>
#include <functional>
#include <gp_Trsf.hxx>
#include <vector>

#include "tools/sample/placements.h"

namespace sample {

struct Body {
  std::vector<int> path;  // the numbers of its components, from the assembly on
  std::function<gp_Trsf(const MechanismPose&)> placement;
};

// 50 frames, which are two seconds. They begin as the assembly is built; one more would be the first again. Throws when
// the file cannot be written.
void writeMotion(const std::filesystem::path& file, const std::vector<Body>& bodies);

}  // namespace sample

// A picture of a scene, computed by rays on the processor.
#pragma once

#include <cstdint>
#include <functional>

#include "tools/rpk/image_file.h"
#include "tools/rpk/picture/picture_camera.h"
#include "tools/rpk/picture/picture_scene.h"

namespace rpk {

inline constexpr std::uint32_t kMaxPictureSide = 16384;
inline constexpr std::uint64_t kMaxPicturePixels = std::uint64_t{1} << 26;

struct PictureOptions {
  std::uint32_t width = 1600;
  std::uint32_t height = 1000;
  // Thin dark lines where a part, a material or a surface ends, or turns sharply.
  bool edges = false;
  // 0: as many as the machine has. The picture is the same for every number.
  unsigned threads = 0;
};

// Told how much is done, 0 to 1, by the thread that called drawPicture(); answers whether to go on.
using PictureProgress = std::function<bool(double done)>;

// The scene from the camera on a light background, lit softly from above the viewer's left shoulder and darkened where
// it is hemmed in. A surface that faces the viewer shows about its own colour. What is seen from its inner side stands
// out: of a solid, which cannot be right, striped in a dull red; of a sheet duller and darker than its outside.
//
// Beside the image it takes memory for the threads only, some megabytes each. An empty image when the size is 0 or
// beyond the limits, or when `progress` stops it.
Image drawPicture(const PictureScene& scene, const PictureCamera& camera, const PictureOptions& options,
                  const PictureProgress& progress = {});

}  // namespace rpk

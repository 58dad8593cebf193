// From where a picture is taken, and how much it shows.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "tools/rpk/picture/picture_scene.h"
#include "tools/rpk/scene_summary.h"

namespace rpk {

// Which way the viewer looks, and what is up in the picture; any length above zero.
struct ViewDirection {
  Vector direction = {0, 0, -1};
  Vector up = {0, 1, 0};
};

inline constexpr std::array<std::string_view, 7> kStandardViews = {"iso",   "front", "back",  "left",
                                                                   "right", "top",   "bottom"};

// The package's up axis: 0 to 5 stand for x, y, z, -x, -y, -z; all other values, and a package without the option, for
// y.
int upAxis(const Scene& scene);

// A view of kStandardViews; nothing for any other name. With y up the front is seen from +z and x is to the right. Any
// other up axis is that turned the shortest way: about z for x and -x, about x for z, -z and -y. So with z up the front
// is seen from -y. "iso" sees the front, the top and the right side.
std::optional<ViewDirection> standardView(std::string_view name, int upAxis);

// What a camera of a package looks at; its place, its field of view and its projection do not count. Nothing when its
// numbers give no direction.
std::optional<ViewDirection> cameraView(const Camera& camera);

// Parallel projection of a rectangle.
struct PictureCamera {
  ViewDirection view;
  Vector centre = {0, 0, 0};  // what is in the middle of the picture, in model units
  double height = 1;          // of the rectangle, in model units; the picture's sides give its width
};

// Axes of the picture in the scene, of length 1.
struct PictureAxes {
  Vector right;
  Vector up;
  Vector back;  // towards the viewer
};

// A view whose numbers give no picture, with up along the direction for one, still gets some axes.
PictureAxes pictureAxes(const ViewDirection& view);

// Shows the whole scene as large as it fits, with a margin.
PictureCamera frameScene(const PictureScene& scene, const ViewDirection& view, std::uint32_t width,
                         std::uint32_t height);

}  // namespace rpk

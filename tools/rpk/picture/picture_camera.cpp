#include "tools/rpk/picture/picture_camera.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

#include "tools/rpk/vector_math.h"

namespace rpk {
namespace {

Vector combine(const PictureAxes& axes, const Vector& factors) {
  Vector result = {};
  for (std::size_t i = 0; i < 3; ++i) {
    result[i] = axes.right[i] * factors[0] + axes.up[i] * factors[1] + axes.back[i] * factors[2];
  }
  return result;
}

// The model's right side, top and front.
PictureAxes modelAxes(int upAxis) {
  switch (upAxis) {
    case 0:
      return {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}};
    case 2:
      return {{1, 0, 0}, {0, 0, 1}, {0, -1, 0}};
    case 3:
      return {{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}};
    case 4:
      return {{1, 0, 0}, {0, -1, 0}, {0, 0, -1}};
    case 5:
      return {{1, 0, 0}, {0, 0, -1}, {0, 1, 0}};
    default:
      return {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  }
}

// A value of three numbers, or what the camera has without one.
Vector vectorValue(const Camera& camera, const char* name, const Vector& otherwise) {
  const auto found = camera.values.find(name);
  if (found == camera.values.end()) return otherwise;
  Vector vector = {};
  const char* at = found->second.data();
  const char* const end = at + found->second.size();
  for (double& value : vector) {
    while (at != end && *at == ' ') ++at;
    const auto [next, error] = std::from_chars(at, end, value);
    if (error != std::errc()) return otherwise;
    at = next;
  }
  return vector;
}

Vector turned(const Vector& vector, const Matrix& matrix) {
  Vector result = {};
  for (std::size_t i = 0; i < 3; ++i) {
    result[i] = vector[0] * matrix[i] + vector[1] * matrix[4 + i] + vector[2] * matrix[8 + i];
  }
  return result;
}

}  // namespace

int upAxis(const Scene& scene) {
  constexpr int kY = 1;
  const std::string_view text = scene.option("import_up_vector");
  int axis = kY;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), axis);
  return error == std::errc() && end == text.data() + text.size() && axis >= 0 && axis <= 5 ? axis : kY;
}

std::optional<ViewDirection> standardView(std::string_view name, int upAxis) {
  const PictureAxes axes = modelAxes(upAxis);
  const auto from = [&](double right, double top, double front, const Vector& up) {
    return ViewDirection{combine(axes, {-right, -top, -front}), combine(axes, up)};
  };
  if (name == "iso") return from(1, 1, 1, {0, 1, 0});
  if (name == "front") return from(0, 0, 1, {0, 1, 0});
  if (name == "back") return from(0, 0, -1, {0, 1, 0});
  if (name == "left") return from(-1, 0, 0, {0, 1, 0});
  if (name == "right") return from(1, 0, 0, {0, 1, 0});
  if (name == "top") return from(0, 1, 0, {0, 0, -1});
  if (name == "bottom") return from(0, -1, 0, {0, 0, 1});
  return std::nullopt;
}

std::optional<ViewDirection> cameraView(const Camera& camera) {
  ViewDirection view{vectorValue(camera, "direction", {0, 0, -1}), vectorValue(camera, "up", {0, 1, 0})};
  if (camera.transform) view = {turned(view.direction, *camera.transform), turned(view.up, *camera.transform)};
  const auto direction = unit(view.direction);
  const auto up = unit(view.up);
  if (!direction || !up) return std::nullopt;
  return ViewDirection{*direction, *up};
}

PictureAxes pictureAxes(const ViewDirection& view) {
  const Vector back = unit({-view.direction[0], -view.direction[1], -view.direction[2]}).value_or(Vector{0, 0, 1});
  for (const Vector& up : {view.up, Vector{0, 1, 0}, Vector{0, 0, 1}}) {
    const auto upwards = unit(up);
    if (!upwards || std::abs(dot(*upwards, back)) > 0.9999999) continue;
    const Vector right = unit(cross(*upwards, back)).value_or(Vector{1, 0, 0});
    return {right, cross(back, right), back};
  }
  return {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
}

PictureCamera frameScene(const PictureScene& scene, const ViewDirection& view, std::uint32_t width,
                         std::uint32_t height) {
  constexpr double kMargin = 1.08;
  PictureCamera camera{view};
  if (scene.empty() || width == 0 || height == 0) return camera;
  const PictureAxes axes = pictureAxes(view);
  const Reach across = scene.reach(axes.right);
  const Reach upwards = scene.reach(axes.up);
  const Vector middle = {(across.low + across.high) / 2, (upwards.low + upwards.high) / 2,
                         dot(scene.centre(), axes.back)};
  camera.centre = combine(axes, middle);
  const double wide = (across.high - across.low) * height / width;
  camera.height = std::max({wide, upwards.high - upwards.low, scene.radius() * 1e-6}) * kMargin;
  return camera;
}

}  // namespace rpk

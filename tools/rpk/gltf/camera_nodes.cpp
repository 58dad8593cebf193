#include "tools/rpk/gltf/camera_nodes.h"

#include <tiny_gltf.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include "tools/rpk/gltf/pose_node.h"
#include "tools/rpk/gltf/rigid_matrix.h"
#include "tools/rpk/utf8_text.h"
#include "tools/rpk/vector_math.h"

namespace rpk {
namespace {

constexpr double kMargin = 1.05;  // around the model in the picture

Vector plus(const Vector& a, const Vector& b, double factor) {
  return {a[0] + b[0] * factor, a[1] + b[1] * factor, a[2] + b[2] * factor};
}

Vector direction(Matrix matrix, const Vector& vector) {
  matrix[12] = matrix[13] = matrix[14] = 0;
  return transformPoint(vector, matrix);
}

Vector vectorValue(const Camera& camera, const char* name, const Vector& without) {
  const auto found = camera.values.find(name);
  if (found == camera.values.end()) return without;
  const std::vector<double> numbers = ArrayView::textValues(found->second).doubles();
  if (numbers.size() != 3) return without;
  return {numbers[0], numbers[1], numbers[2]};
}

struct View {
  Vector eye;
  Vector right;
  Vector up;
  Vector forward;
};

View viewOf(const Camera& camera, const WorldFrame& frame) {
  const Matrix own = cleanPlacement(camera.transform.value_or(kIdentity)).value_or(kIdentity);
  const Matrix toWorld = multiply(own, frame.rotation);
  View view{};
  view.eye = transformPoint(vectorValue(camera, "position", {0, 0, 2000}), toWorld);
  for (double& value : view.eye) value *= frame.metresPerUnit;
  view.forward = unit(direction(toWorld, vectorValue(camera, "direction", {0, 0, -1}))).value_or(Vector{0, 0, -1});
  const Vector up = direction(toWorld, vectorValue(camera, "up", {0, 1, 0}));
  const Vector anyUp = std::abs(view.forward[1]) < 0.9 ? Vector{0, 1, 0} : Vector{0, 0, -1};
  const auto right = unit(cross(view.forward, up));
  view.right = right ? *right : *unit(cross(view.forward, anyUp));
  view.up = cross(view.right, view.forward);
  return view;
}

// The drawn box as the camera sees it: across, and from the nearest to the farthest.
struct Extent {
  double across = 0;
  double nearest = 1e300;
  double farthest = -1e300;
};

Extent extentOf(const Bounds& box, const View& view) {
  Extent extent;
  for (unsigned corner = 0; corner < 8; ++corner) {
    Vector point{};
    for (std::size_t axis = 0; axis < 3; ++axis)
      point[axis] = (corner >> axis & 1U) != 0 ? box.high[axis] : box.low[axis];
    const Vector seen = plus(point, view.eye, -1);
    extent.across = std::max({extent.across, std::abs(dot(seen, view.right)), std::abs(dot(seen, view.up))});
    extent.nearest = std::min(extent.nearest, dot(seen, view.forward));
    extent.farthest = std::max(extent.farthest, dot(seen, view.forward));
  }
  return extent;
}

Bounds worldBounds(const Bounds& drawn, const WorldFrame& frame) {
  Bounds box;
  if (drawn.empty()) {
    box.add(Vector{-0.5, -0.5, -0.5});
    box.add(Vector{0.5, 0.5, 0.5});
    return box;
  }
  box.add(drawn, frame.rotation);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    box.low[axis] *= frame.metresPerUnit;
    box.high[axis] *= frame.metresPerUnit;
  }
  return box;
}

double angleOf(const Camera& camera) {
  const auto found = camera.values.find("fov");
  const std::vector<double> numbers =
      found == camera.values.end() ? std::vector<double>{} : ArrayView::textValues(found->second).doubles();
  const double degrees = numbers.size() == 1 && numbers[0] >= 1 && numbers[0] <= 170 ? numbers[0] : 55;
  return degrees * std::numbers::pi / 180;
}

class CameraMaker {
 public:
  CameraMaker(const Bounds& drawn, const WorldFrame& frame, bool centred)
      : frame_(frame), box_(worldBounds(drawn, frame)), centred_(centred) {
    for (std::size_t axis = 0; axis < 3; ++axis) centre_[axis] = (box_.low[axis] + box_.high[axis]) / 2;
    const Vector half = plus(box_.high, centre_, -1);
    // Something to see even of a model without size, in numbers that still differ at its distance from the origin.
    const double coordinates = std::hypot(centre_[0], centre_[1], centre_[2]);
    radius_ = std::max({std::hypot(half[0], half[1], half[2]), 1e-6, 1e-6 * coordinates});
  }

  // Sets the camera; the view is the one that its node is to have.
  View make(const Camera& source, tinygltf::Camera& camera) const {
    View view = viewOf(source, frame_);
    const auto projection = source.values.find("projection");
    if (projection != source.values.end() && projection->second == "perspective") {
      makePerspective(angleOf(source), view, camera);
    } else {
      makeOrthographic(view, camera);
    }
    return view;
  }

 private:
  void makeOrthographic(View& view, tinygltf::Camera& camera) const {
    if (centred_) view.eye = plus(centre_, view.forward, -2 * radius_);
    Extent extent = extentOf(box_, view);
    const double gap = 0.1 * radius_;
    if (extent.nearest < gap) {
      const double back = gap - extent.nearest;
      view.eye = plus(view.eye, view.forward, -back);
      extent.nearest += back;
      extent.farthest += back;
    }
    camera.type = "orthographic";
    camera.orthographic.xmag = camera.orthographic.ymag = kMargin * std::max(extent.across, 0.01 * radius_);
    camera.orthographic.znear = 0.5 * extent.nearest;
    camera.orthographic.zfar = extent.farthest + gap;
  }

  void makePerspective(double angle, View& view, tinygltf::Camera& camera) const {
    if (centred_) view.eye = plus(centre_, view.forward, -kMargin * radius_ / std::sin(angle / 2));
    const Extent extent = extentOf(box_, view);
    camera.type = "perspective";
    camera.perspective.yfov = angle;
    camera.perspective.znear = std::max(0.5 * extent.nearest, 0.001 * radius_);
    camera.perspective.zfar = std::max(extent.farthest, camera.perspective.znear) + radius_;
  }

  WorldFrame frame_;
  Bounds box_;
  Vector centre_{};
  double radius_ = 0;
  bool centred_;
};

void setView(tinygltf::Node& node, const View& view) {
  Matrix matrix = kIdentity;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    matrix[axis] = view.right[axis];
    matrix[4 + axis] = view.up[axis];
    matrix[8 + axis] = -view.forward[axis];
    matrix[12 + axis] = view.eye[axis];
  }
  Pose pose = *toPose(matrix);
  pose.scale = {1, 1, 1};
  setPose(node, pose);
}

}  // namespace

std::vector<int> addCameras(tinygltf::Model& model, const Scene& scene, const Bounds& drawn, const WorldFrame& frame) {
  const CameraMaker maker(drawn, frame, scene.option("import_adjust_camera") == "on");
  std::vector<int> nodes;
  for (const Camera& source : scene.cameras) {
    tinygltf::Camera camera;
    camera.name = toUtf8(source.name);
    tinygltf::Node node;
    node.name = camera.name;
    node.camera = static_cast<int>(model.cameras.size());
    setView(node, maker.make(source, camera));
    model.cameras.push_back(std::move(camera));
    nodes.push_back(static_cast<int>(model.nodes.size()));
    model.nodes.push_back(std::move(node));
  }
  return nodes;
}

}  // namespace rpk

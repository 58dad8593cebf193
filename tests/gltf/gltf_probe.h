// Reading glTF files back, for tests: where their nodes stand and what their meshes measure.
#pragma once

#include <gtest/gtest.h>
#include <tiny_gltf.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/rpk/scene_summary.h"

namespace gltf_test {

using rpk::Matrix;
using rpk::Vector;

inline tinygltf::Model load(const std::string& bytes) {
  tinygltf::Model model;
  tinygltf::TinyGLTF loader;
  std::string error;
  std::string warning;
  const bool good =
      loader.LoadBinaryFromMemory(&model, &error, &warning, reinterpret_cast<const unsigned char*>(bytes.data()),
                                  static_cast<unsigned>(bytes.size()));
  EXPECT_TRUE(good && error.empty() && warning.empty()) << error << warning;
  return model;
}

// The values of a float accessor, or of one of indices, one after the other.
inline std::vector<double> values(const tinygltf::Model& model, int index) {
  const tinygltf::Accessor& accessor = model.accessors.at(static_cast<std::size_t>(index));
  const tinygltf::BufferView& view = model.bufferViews.at(static_cast<std::size_t>(accessor.bufferView));
  const int size = tinygltf::GetComponentSizeInBytes(static_cast<std::uint32_t>(accessor.componentType));
  const int components = tinygltf::GetNumComponentsInType(static_cast<std::uint32_t>(accessor.type));
  const auto stride = static_cast<std::size_t>(accessor.ByteStride(view));
  const unsigned char* start =
      model.buffers.at(static_cast<std::size_t>(view.buffer)).data.data() + view.byteOffset + accessor.byteOffset;
  std::vector<double> result;
  for (std::size_t element = 0; element < accessor.count; ++element) {
    for (int component = 0; component < components; ++component) {
      const unsigned char* at = start + element * stride + static_cast<std::size_t>(component * size);
      if (accessor.componentType == TINYGLTF_COMPONENT_TYPE_FLOAT) {
        float value = 0;
        std::memcpy(&value, at, sizeof value);
        result.push_back(value);
      } else {
        std::uint32_t value = 0;
        std::memcpy(&value, at, static_cast<std::size_t>(size));
        result.push_back(value);
      }
    }
  }
  return result;
}

// For row vectors, from a unit quaternion x y z w.
inline Matrix poseMatrix(const std::vector<double>& translation, const std::vector<double>& rotation,
                         const std::vector<double>& scale) {
  Matrix matrix = rpk::kIdentity;
  if (!rotation.empty()) {
    const double x = rotation[0];
    const double y = rotation[1];
    const double z = rotation[2];
    const double w = rotation[3];
    matrix = {1 - 2 * (y * y + z * z),
              2 * (x * y + z * w),
              2 * (x * z - y * w),
              0,
              2 * (x * y - z * w),
              1 - 2 * (x * x + z * z),
              2 * (y * z + x * w),
              0,
              2 * (x * z + y * w),
              2 * (y * z - x * w),
              1 - 2 * (x * x + y * y),
              0,
              0,
              0,
              0,
              1};
  }
  for (std::size_t axis = 0; axis < 3; ++axis) {
    for (std::size_t i = 0; i < 3 && !scale.empty(); ++i) matrix[axis * 4 + i] *= scale[axis];
    if (!translation.empty()) matrix[12 + axis] = translation[axis];
  }
  return matrix;
}

inline Matrix localMatrix(const tinygltf::Node& node) {
  if (node.matrix.empty()) return poseMatrix(node.translation, node.rotation, node.scale);
  Matrix matrix{};
  std::copy(node.matrix.begin(), node.matrix.end(), matrix.begin());
  return matrix;
}

struct PlacedNode {
  const tinygltf::Node* node = nullptr;
  int index = 0;
  Matrix world = rpk::kIdentity;
};

// All nodes of the scene, outer before inner.
inline std::vector<PlacedNode> placedNodes(const tinygltf::Model& model) {
  std::vector<PlacedNode> placed;
  const std::function<void(int, const Matrix&)> visit = [&](int index, const Matrix& around) {
    const tinygltf::Node& node = model.nodes.at(static_cast<std::size_t>(index));
    const Matrix world = rpk::multiply(localMatrix(node), around);
    placed.push_back({&node, index, world});
    for (const int child : node.children) visit(child, world);
  };
  for (const int root : model.scenes.at(0).nodes) visit(root, rpk::kIdentity);
  return placed;
}

// The node of that name, the n-th in that order; or one without a node.
inline PlacedNode placedNode(const tinygltf::Model& model, const std::string& name, std::size_t which = 0) {
  for (const PlacedNode& placed : placedNodes(model)) {
    if (placed.node->name == name && which-- == 0) return placed;
  }
  ADD_FAILURE() << "there is no node " << name;
  static const tinygltf::Node kNone;
  return {&kNone, -1, rpk::kIdentity};
}

struct Box {
  Vector low = {1e300, 1e300, 1e300};
  Vector high = {-1e300, -1e300, -1e300};
  void add(const Vector& point) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      low[axis] = std::min(low[axis], point[axis]);
      high[axis] = std::max(high[axis], point[axis]);
    }
  }
};

// What stands in the scene, in metres.
struct Measure {
  Box box;  // of the corners of triangles
  double area = 0;
  std::size_t placedMeshes = 0;  // nodes with at least one triangle
};

inline Measure measure(const tinygltf::Model& model) {
  Measure result;
  for (const PlacedNode& placed : placedNodes(model)) {
    if (placed.node->mesh < 0) continue;
    std::size_t triangles = 0;
    for (const tinygltf::Primitive& primitive :
         model.meshes.at(static_cast<std::size_t>(placed.node->mesh)).primitives) {
      const std::vector<double> positions = values(model, primitive.attributes.at("POSITION"));
      const std::vector<double> indices = values(model, primitive.indices);
      for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        std::array<Vector, 3> corners{};
        for (std::size_t corner = 0; corner < 3; ++corner) {
          const auto at = static_cast<std::size_t>(indices[i + corner]) * 3;
          corners[corner] =
              rpk::transformPoint({positions.at(at), positions.at(at + 1), positions.at(at + 2)}, placed.world);
          result.box.add(corners[corner]);
        }
        const auto& [a, b, c] = corners;
        const Vector u = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
        const Vector v = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
        result.area += std::hypot(u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]) / 2;
        ++triangles;
      }
    }
    result.placedMeshes += triangles > 0 ? 1 : 0;
  }
  return result;
}

// Leaves a file for the validator, which looks at all of them when the tests are through.
inline void keepForValidator(const std::string& name, const std::string& bytes) {
  std::filesystem::create_directories(RENDARA_GLTF_FILES);
  std::ofstream(std::string(RENDARA_GLTF_FILES) + "/" + name + ".glb", std::ios::binary) << bytes;
}

}  // namespace gltf_test

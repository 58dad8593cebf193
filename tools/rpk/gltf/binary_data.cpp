#include "tools/rpk/gltf/binary_data.h"

#include <tiny_gltf.h>

#include <algorithm>
#include <array>
#include <bit>
#include <ostream>
#include <vector>

#include "tools/rpk/gltf/gltf_error.h"

namespace rpk {
namespace {

static_assert(std::endian::native == std::endian::little, "glTF numbers are little-endian");

constexpr std::uint64_t kLargestFile = 0xffffffffU;

template <typename Value>
std::string_view bytesOf(std::span<const Value> values) {
  return {reinterpret_cast<const char*>(values.data()), values.size_bytes()};
}

constexpr std::array<int, 5> kTypes = {0, TINYGLTF_TYPE_SCALAR, TINYGLTF_TYPE_VEC2, TINYGLTF_TYPE_VEC3,
                                       TINYGLTF_TYPE_VEC4};

int addAccessor(tinygltf::Model& model, int view, int componentType, int type, std::size_t count) {
  tinygltf::Accessor accessor;
  accessor.bufferView = view;
  accessor.componentType = componentType;
  accessor.type = type;
  accessor.count = count;
  model.accessors.push_back(std::move(accessor));
  return static_cast<int>(model.accessors.size() - 1);
}

}  // namespace

int BinaryData::addView(std::string_view bytes, int target) {
  constexpr std::string_view kPadding("\0\0\0", 3);
  const std::uint64_t padding = (4 - size_ % 4) % 4;
  stream_.write(kPadding.data(), static_cast<std::streamsize>(padding));
  size_ += padding;
  if (bytes.size() > kLargestFile || size_ + bytes.size() > kLargestFile) {
    throw GltfError("the scene needs more than the 4 GB that a binary glTF file can hold");
  }
  tinygltf::BufferView view;
  view.buffer = 0;
  view.byteOffset = size_;
  view.byteLength = bytes.size();
  view.target = target;
  model_.bufferViews.push_back(std::move(view));
  stream_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!stream_) throw GltfError("its binary data cannot be written");
  size_ += bytes.size();
  return static_cast<int>(model_.bufferViews.size() - 1);
}

int BinaryData::addFloats(std::span<const float> values, std::size_t components, bool bounds, int target) {
  const int accessor = addAccessor(model_, addView(bytesOf(values), target), TINYGLTF_COMPONENT_TYPE_FLOAT,
                                   kTypes[components], values.size() / components);
  if (!bounds) return accessor;
  std::vector<double> least(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(components));
  std::vector<double> largest = least;
  for (std::size_t i = 0; i < values.size(); ++i) {
    least[i % components] = std::min<double>(least[i % components], values[i]);
    largest[i % components] = std::max<double>(largest[i % components], values[i]);
  }
  model_.accessors.back().minValues = std::move(least);
  model_.accessors.back().maxValues = std::move(largest);
  return accessor;
}

int BinaryData::addIndices(std::span<const std::uint32_t> indices, std::size_t vertexCount) {
  constexpr std::size_t kShortIndices = 0xffff;  // the last value of 16 bits is no index
  int view = 0;
  const bool narrow = vertexCount <= kShortIndices;
  if (narrow) {
    std::vector<std::uint16_t> shorts(indices.size());
    std::transform(indices.begin(), indices.end(), shorts.begin(),
                   [](std::uint32_t index) { return static_cast<std::uint16_t>(index); });
    view = addView(bytesOf(std::span<const std::uint16_t>(shorts)), TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER);
  } else {
    view = addView(bytesOf(indices), TINYGLTF_TARGET_ELEMENT_ARRAY_BUFFER);
  }
  const int type = narrow ? TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT : TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT;
  return addAccessor(model_, view, type, TINYGLTF_TYPE_SCALAR, indices.size());
}

}  // namespace rpk

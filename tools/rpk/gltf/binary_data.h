// The binary part of a glTF file: written to a stream as it grows, described by buffer views and accessors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <span>
#include <string_view>

namespace tinygltf {
class Model;
}

namespace rpk {

// Every function gives the index of what it added to the model. Throws GltfError when the stream fails or the data
// pass what a binary glTF file can hold.
class BinaryData {
 public:
  BinaryData(tinygltf::Model& model, std::ostream& stream) : model_(model), stream_(stream) {}

  // Starts at a multiple of four bytes. `target` is that of glTF, 0 for none.
  int addView(std::string_view bytes, int target);
  // An accessor of vectors with so many components each; not empty. With `bounds` it tells the least and the largest.
  int addFloats(std::span<const float> values, std::size_t components, bool bounds, int target);
  // An accessor of indices into so many vertices, of 16 bits where that is enough; not empty.
  int addIndices(std::span<const std::uint32_t> indices, std::size_t vertexCount);

  std::uint64_t size() const { return size_; }

 private:
  tinygltf::Model& model_;
  std::ostream& stream_;
  std::uint64_t size_ = 0;
};

}  // namespace rpk

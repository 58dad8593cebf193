// What groups draw, compared: each group's geometry is looked at once, however often it is referred to.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "tools/rpk/diff.h"
#include "tools/rpk/drawing.h"

namespace rpk {

// Objects that are drawn at one place, and what they are told apart by.
struct HeldContent {
  std::vector<DrawnObject> objects;
  std::vector<std::uint64_t> geometryKeys;  // of each object; equal for equal bytes
  bool singleMaterial = true;
  DrawnCounts counts;
  std::uint64_t key = 0;  // of all objects with their materials
};

HeldContent contentOf(std::vector<DrawnObject> objects);

class DrawnContent {
 public:
  // Of a group that holds geometry; without one for null.
  const HeldContent& held(const Group* holder);
  // Equal for groups that draw the same with all that is below them.
  std::uint64_t keyOf(const Group& group);
  // With all below.
  DrawnCounts countsBelow(const Group& group);

 private:
  std::unordered_map<const Group*, HeldContent> held_;
  std::unordered_map<const Group*, std::uint64_t> keys_;
  HeldContent nothing_;
};

DrawnCounts operator+(const DrawnCounts& first, const DrawnCounts& second);

// Equal for materials that look the same and have the same name.
std::uint64_t materialKey(const Material* material);
bool sameShader(const Shader& first, const Shader& second);
bool sameMaterial(const Material* first, const Material* second);

// By bytes when both are packed in the same type, else by values; those of text by six significant digits when the
// other is packed.
bool sameArray(const ArrayView& first, const ArrayView& second);

// The names of arrays and values in which the geometry differs, in the order of the alphabet; "type" when the types do.
std::vector<std::string> differingParts(const Object& first, const Object& second);

}  // namespace rpk

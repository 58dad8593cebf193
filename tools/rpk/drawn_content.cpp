#include "tools/rpk/drawn_content.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <set>
#include <string_view>

#include "tools/rpk/hash_mix.h"

namespace rpk {
namespace {

std::uint64_t geometryKey(const Object& object) {
  std::uint64_t key = hashMix(0, object.geometryType);
  for (const auto& [name, array] : object.arrays) key = hashMix(hashMix(key, name), array.bytes());
  for (const auto& [name, value] : object.values) key = hashMix(hashMix(key, name), value);
  return key;
}

std::uint64_t shaderKey(const Shader& shader) {
  std::uint64_t key = hashMix(hashMix(0, shader.type), shader.parameter);
  for (const auto& [name, value] : shader.values) key = hashMix(hashMix(key, name), value);
  for (const Shader& inner : shader.inner) key = hashMix(key, shaderKey(inner));
  return key;
}

std::string_view nameOf(const Material* material) {
  return material ? std::string_view(material->name) : std::string_view();
}

}  // namespace

HeldContent contentOf(std::vector<DrawnObject> objects) {
  HeldContent content;
  content.objects = std::move(objects);
  for (const DrawnObject& drawn : content.objects) {
    const std::uint64_t key = geometryKey(*drawn.object);
    content.geometryKeys.push_back(key);
    content.key = hashMix(hashMix(content.key, key), materialKey(drawn.material));
    content.singleMaterial =
        content.singleMaterial && nameOf(drawn.material) == nameOf(content.objects.front().material);
    content.counts.vertices += drawn.object->mesh.vertexCount();
    content.counts.triangles += drawn.object->mesh.triangleCount();
    content.counts.surfaces += drawn.object->geometryType == "nurbs" ? 1 : 0;
  }
  return content;
}

namespace {

bool sameNumber(double first, double second) { return first == second || (std::isnan(first) && std::isnan(second)); }

// Doubles have sixteen decimals in text, which is less than they hold when they are small.
bool sameInSixteenDecimals(double first, double second) {
  return sameNumber(first, second) || std::abs(first - second) <= 1e-16;
}

// Floats have six digits in text.
bool sameInSixDigits(double first, double second) {
  constexpr double kHalfOfTheSixthDigit = 5.1e-6;
  return sameNumber(first, second) ||
         std::abs(first - second) <= kHalfOfTheSixthDigit * std::max(std::abs(first), std::abs(second));
}

std::size_t bytesOfValue(const ArrayView& array) { return array.tag() == 'r' ? 8 : 4; }

bool floatTag(const ArrayView& array) { return array.tag() == 'c' || array.tag() == 'f'; }

template <typename Value, typename Equal>
void addDifferingNames(const std::map<std::string, Value>& first, const std::map<std::string, Value>& second,
                       const Equal& equal, std::set<std::string>& names) {
  for (const auto& [name, value] : first) {
    const auto other = second.find(name);
    if (other == second.end() || !equal(value, other->second)) names.insert(name);
  }
  for (const auto& [name, value] : second) {
    if (!first.contains(name)) names.insert(name);
  }
}

}  // namespace

DrawnCounts operator+(const DrawnCounts& first, const DrawnCounts& second) {
  return {first.vertices + second.vertices, first.triangles + second.triangles, first.surfaces + second.surfaces};
}

const HeldContent& DrawnContent::held(const Group* holder) {
  if (!holder) return nothing_;
  const auto known = held_.find(holder);
  return known != held_.end() ? known->second : held_.emplace(holder, contentOf(drawnObjects(*holder))).first->second;
}

std::uint64_t DrawnContent::keyOf(const Group& group) {
  const auto known = keys_.find(&group);
  if (known != keys_.end()) return known->second;
  std::uint64_t key = held(geometryHolder(group)).key;
  for (const auto& child : group.children) {
    if (child->materialGroup()) continue;
    key = hashMix(hashMix(key, child->name), keyOf(*child));
    for (const double value : child->placement.value_or(kIdentity))
      key = hashMix(key, std::bit_cast<std::uint64_t>(value));
  }
  keys_.emplace(&group, key);
  return key;
}

DrawnCounts DrawnContent::countsBelow(const Group& group) {
  DrawnCounts counts = held(geometryHolder(group)).counts;
  for (const auto& child : group.children) {
    if (!child->materialGroup()) counts = counts + countsBelow(*child);
  }
  return counts;
}

std::uint64_t materialKey(const Material* material) {
  return material ? hashMix(hashMix(1, material->name), shaderKey(material->surface)) : 0;
}

bool sameShader(const Shader& first, const Shader& second) {
  return first.type == second.type && first.parameter == second.parameter && first.values == second.values &&
         std::equal(first.inner.begin(), first.inner.end(), second.inner.begin(), second.inner.end(), sameShader);
}

bool sameMaterial(const Material* first, const Material* second) {
  if (!first || !second) return first == second;
  return first->name == second->name && sameShader(first->surface, second->surface);
}

bool sameArray(const ArrayView& first, const ArrayView& second) {
  if (first.packed() && second.packed()) {
    if (first.tag() == second.tag() || (floatTag(first) && floatTag(second))) return first.bytes() == second.bytes();
    const std::size_t count = first.bytes().size() / bytesOfValue(first);
    if (count != second.bytes().size() / bytesOfValue(second)) return false;
    for (std::size_t i = 0; i < count; ++i) {
      if (!sameNumber(first.number(i), second.number(i))) return false;
    }
    return true;
  }
  if (!first.packed() && !second.packed() && first.bytes() == second.bytes()) return true;
  const std::vector<double> before = first.doubles();
  const std::vector<double> after = second.doubles();
  const char tag = first.packed() ? first.tag() : second.tag();
  const auto same = tag == 'c' || tag == 'f' ? sameInSixDigits : tag == 'r' ? sameInSixteenDecimals : sameNumber;
  return std::equal(before.begin(), before.end(), after.begin(), after.end(), same);
}

std::vector<std::string> differingParts(const Object& first, const Object& second) {
  if (first.geometryType != second.geometryType) return {"type"};
  std::set<std::string> names;
  addDifferingNames(first.arrays, second.arrays, sameArray, names);
  addDifferingNames(first.values, second.values, std::equal_to<>(), names);
  return {names.begin(), names.end()};
}

}  // namespace rpk

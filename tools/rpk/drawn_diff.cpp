#include "tools/rpk/drawn_diff.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <set>
#include <unordered_map>
#include <utility>

#include "tools/rpk/hash_mix.h"
#include "tools/rpk/report/display_text.h"
#include "tools/rpk/report/placement_text.h"

namespace rpk {
namespace {

using Pairs = std::vector<std::pair<std::size_t, std::size_t>>;

const Material* materialAt(const DrawnSide& side, std::size_t index) {
  return side.replaced ? side.replaced : side.content.objects[index].material;
}

// Which object stands for which: those of the same content first, then those of the same material.
class ObjectMatcher {
 public:
  ObjectMatcher(const DrawnSide& before, const DrawnSide& after)
      : before_(before), after_(after), beforeLeft_(indices(before)), afterLeft_(indices(after)) {
    const auto geometry = [](const DrawnSide& side, std::size_t i) { return side.content.geometryKeys[i]; };
    const auto material = [](const DrawnSide& side, std::size_t i) { return materialKey(materialAt(side, i)); };
    const auto type = [](const DrawnSide& side, std::size_t i) {
      return hashMix(0, side.content.objects[i].object->geometryType);
    };
    match([&](const DrawnSide& side, std::size_t i) { return hashMix(geometry(side, i), material(side, i)); });
    match(geometry);
    match([&](const DrawnSide& side, std::size_t i) { return hashMix(type(side, i), material(side, i)); });
    match(type);
  }

  const Pairs& pairs() const { return pairs_; }
  const std::vector<std::size_t>& beforeOnly() const { return beforeLeft_; }
  const std::vector<std::size_t>& afterOnly() const { return afterLeft_; }

 private:
  static std::vector<std::size_t> indices(const DrawnSide& side) {
    std::vector<std::size_t> all(side.content.objects.size());
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
    return all;
  }

  template <typename KeyOf>
  void match(const KeyOf& keyOf) {
    if (beforeLeft_.empty() || afterLeft_.empty()) return;
    struct Waiting {
      std::vector<std::size_t> indices;
      std::size_t next = 0;
    };
    std::unordered_map<std::uint64_t, Waiting> waiting;
    for (const std::size_t j : afterLeft_) waiting[keyOf(after_, j)].indices.push_back(j);
    std::vector<bool> taken(after_.content.objects.size());
    std::vector<std::size_t> left;
    for (const std::size_t i : beforeLeft_) {
      const auto found = waiting.find(keyOf(before_, i));
      if (found == waiting.end() || found->second.next == found->second.indices.size()) {
        left.push_back(i);
        continue;
      }
      const std::size_t j = found->second.indices[found->second.next++];
      taken[j] = true;
      pairs_.emplace_back(i, j);
    }
    beforeLeft_ = std::move(left);
    std::erase_if(afterLeft_, [&](std::size_t j) { return taken[j]; });
  }

  const DrawnSide& before_;
  const DrawnSide& after_;
  std::vector<std::size_t> beforeLeft_;
  std::vector<std::size_t> afterLeft_;
  Pairs pairs_;
};

std::string materialText(const Material* material) {
  if (!material) return "no material";
  std::string text = material->name;
  if (material->colour) text += " " + colourText(*material->colour);
  if (!material->texture.empty()) text += " " + material->texture;
  return text;
}

std::string countChange(std::string_view what, std::uint64_t before, std::uint64_t after) {
  std::string text = fmt::format("{} {}", what, grouped(before));
  if (before != after) text += " -> " + grouped(after);
  return text;
}

// "triangles 2 -> 4, vertices 4 -> 8, exact surfaces 3", or "triangles 2, vertices 4; differs in normals, vertices":
// when the counts differ, the arrays do too.
std::string remeshText(const DrawnCounts& before, const DrawnCounts& after, const std::set<std::string>& parts) {
  std::string text = countChange("triangles", before.triangles, after.triangles) + ", " +
                     countChange("vertices", before.vertices, after.vertices);
  if (before.surfaces > 0 || after.surfaces > 0) {
    text += ", " + countChange("exact surfaces", before.surfaces, after.surfaces);
  }
  if (before == after && !parts.empty()) text += fmt::format("; differs in {}", fmt::join(parts, ", "));
  return text;
}

// Materials of objects that have no counterpart, as far as the other side does not draw them at all.
void addUnmatched(const DrawnSide& side, const std::vector<std::size_t>& only, const DrawnSide& other,
                  std::string_view what, std::set<std::string>& texts) {
  if (only.empty() || other.content.objects.empty()) return;
  std::set<std::uint64_t> there;
  for (std::size_t i = 0; i < other.content.objects.size(); ++i) there.insert(materialKey(materialAt(other, i)));
  for (const std::size_t i : only) {
    const Material* material = materialAt(side, i);
    if (!there.contains(materialKey(material))) texts.insert(fmt::format("{} {}", what, materialText(material)));
  }
}

std::string valueOf(const Shader& shader, const std::string& name) {
  const auto found = shader.values.find(name);
  return found == shader.values.end() ? "none" : found->second;
}

}  // namespace

std::string materialChange(const Material* before, const Material* after) {
  if (sameMaterial(before, after)) return {};
  if (!before || !after || before->name != after->name) return materialText(before) + " -> " + materialText(after);
  const Shader& from = before->surface;
  const Shader& to = after->surface;
  std::vector<std::string> changes;
  if (from.type != to.type) changes.push_back(fmt::format("shader {} -> {}", from.type, to.type));
  if (before->colour != after->colour) {
    changes.push_back(fmt::format("colour {} -> {}", valueOf(from, "diffuse"), valueOf(to, "diffuse")));
  }
  if (before->texture != after->texture) {
    const auto file = [](const Material& material) { return material.texture.empty() ? "none" : material.texture; };
    changes.push_back(fmt::format("texture {} -> {}", file(*before), file(*after)));
  }
  if (changes.empty()) changes.emplace_back("other values of the shader");
  return fmt::format("{}: {}", before->name, fmt::join(changes, ", "));
}

DrawnDifference compareDrawn(const DrawnSide& before, const DrawnSide& after) {
  const ObjectMatcher matched(before, after);
  std::set<std::string> parts;
  std::set<std::string> recoloured;
  for (const auto& [i, j] : matched.pairs()) {
    const auto differing = differingParts(*before.content.objects[i].object, *after.content.objects[j].object);
    parts.insert(differing.begin(), differing.end());
    const std::string change = materialChange(materialAt(before, i), materialAt(after, j));
    if (!change.empty()) recoloured.insert(change);
  }
  addUnmatched(before, matched.beforeOnly(), after, "no longer", recoloured);
  addUnmatched(after, matched.afterOnly(), before, "now also", recoloured);
  DrawnDifference difference;
  if (!parts.empty() || !matched.beforeOnly().empty() || !matched.afterOnly().empty()) {
    difference.remeshed = remeshText(before.content.counts, after.content.counts, parts);
  }
  difference.recoloured.assign(recoloured.begin(), recoloured.end());
  return difference;
}

}  // namespace rpk

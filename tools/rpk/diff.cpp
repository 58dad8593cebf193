#include "tools/rpk/diff.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "tools/rpk/drawn_content.h"
#include "tools/rpk/drawn_diff.h"
#include "tools/rpk/report/display_text.h"
#include "tools/rpk/report/placement_text.h"
#include "tools/rpk/sibling_match.h"

namespace rpk {
namespace {

constexpr std::array<std::string_view, kDifferenceKinds> kKindNames = {"header",   "module",     "option",   "camera",
                                                                       "added",    "removed",    "renamed",  "moved",
                                                                       "remeshed", "recoloured", "animated", "written"};

using Texts = std::vector<std::string>;

bool samePlacement(const Matrix& before, const Matrix& after, double tolerance) {
  return std::equal(before.begin(), before.end(), after.begin(), [&](double from, double to) {
    return from == to || (std::isnan(from) && std::isnan(to)) || std::abs(to - from) <= tolerance;
  });
}

double distanceBetween(const Matrix& before, const Matrix& after) {
  return std::hypot(after[12] - before[12], after[13] - before[13], after[14] - before[14]);
}

bool sameScale(const Matrix& before, const Matrix& after) {
  for (std::size_t row = 0; row < 12; row += 4) {
    const double from = std::hypot(before[row], before[row + 1], before[row + 2]);
    const double to = std::hypot(after[row], after[row + 1], after[row + 2]);
    if (std::abs(to - from) > 1e-5 * std::max(from, to)) return false;
  }
  return true;
}

// "by 5 (3, 4, 0), turned by 90 deg"
std::string moveText(const Matrix& before, const Matrix& after) {
  Texts parts;
  const double distance = distanceBetween(before, after);
  if (distance > 0) {
    const Vector by = {after[12] - before[12], after[13] - before[13], after[14] - before[14]};
    parts.push_back(fmt::format("by {:.6g} {}", distance, vectorText(by)));
  }
  const double degrees = degreesBetween(before, after);
  if (degrees > 0.005) parts.push_back(fmt::format("turned by {:.5g} deg", degrees));
  if (!sameScale(before, after)) parts.emplace_back("stretched");
  if (parts.empty()) parts.emplace_back("in the last digits");
  return fmt::format("{}", fmt::join(parts, ", "));
}

std::string orNone(const std::string& text) { return text.empty() ? "none" : text; }

// Names in the order of the first list, then those only in the second, each once.
template <typename Item, typename NameOf>
std::vector<std::string_view> namesOfBoth(const std::vector<Item>& first, const std::vector<Item>& second,
                                          const NameOf& nameOf) {
  std::vector<std::string_view> names;
  std::set<std::string_view> known;
  for (const auto* list : {&first, &second}) {
    for (const Item& item : *list) {
      if (known.insert(nameOf(item)).second) names.push_back(nameOf(item));
    }
  }
  return names;
}

template <typename Item, typename NameOf>
std::map<std::string_view, std::vector<const Item*>> byName(const std::vector<Item>& items, const NameOf& nameOf) {
  std::map<std::string_view, std::vector<const Item*>> lists;
  for (const Item& item : items) lists[nameOf(item)].push_back(&item);
  return lists;
}

// What changed in named values: "fov 55 -> 60".
void addValueChanges(const std::map<std::string, std::string>& before, const std::map<std::string, std::string>& after,
                     Texts& changes) {
  for (const auto& [name, value] : before) {
    const auto other = after.find(name);
    const std::string to = other == after.end() ? "none" : other->second;
    if (to != value) changes.push_back(fmt::format("{} {} -> {}", name, value, to));
  }
  for (const auto& [name, value] : after) {
    if (!before.contains(name)) changes.push_back(fmt::format("{} none -> {}", name, value));
  }
}

std::string flagsText(const Group& group) { return group.hasFlags ? std::to_string(group.flags) : "none"; }

std::string animationChange(const Animation& before, const Animation& after, double tolerance) {
  Texts changes;
  if (before.type != after.type) changes.push_back(fmt::format("type {} -> {}", before.type, after.type));
  if (before.name != after.name) changes.push_back(fmt::format("name {} -> {}", before.name, after.name));
  addValueChanges(before.values, after.values, changes);
  const std::size_t from = before.matrices.size();
  const std::size_t to = after.matrices.size();
  if (from != to) {
    changes.push_back(fmt::format("{} -> {} matrices", from, to));
  } else {
    std::size_t differing = 0;
    for (std::size_t i = 0; i < from; ++i) {
      differing += samePlacement(before.matrices[i], after.matrices[i], tolerance) ? 0 : 1;
    }
    if (differing > 0) changes.push_back(fmt::format("{} of {} matrices differ", differing, from));
  }
  if (before.timestamps.size() != after.timestamps.size()) {
    changes.push_back(fmt::format("{} -> {} timestamps", before.timestamps.size(), after.timestamps.size()));
  } else if (before.timestamps != after.timestamps) {
    changes.emplace_back("timestamps differ");
  }
  return fmt::format("{}", fmt::join(changes, ", "));
}

std::size_t countGroups(const Group& group) {
  std::size_t count = 1;
  for (const auto& child : group.children) {
    if (!child->materialGroup()) count += countGroups(*child);
  }
  return count;
}

std::string contentText(const Group& group, const DrawnCounts& counts) {
  Texts parts;
  const std::size_t groups = countGroups(group);
  if (groups > 1) parts.push_back(counted(groups, "group", "groups"));
  if (counts.triangles > 0) parts.push_back(counted(counts.triangles, "triangle", "triangles"));
  if (counts.surfaces > 0) parts.push_back(counted(counts.surfaces, "exact surface", "exact surfaces"));
  return parts.empty() ? "empty" : fmt::format("{}", fmt::join(parts, ", "));
}

// The reference that stands for a group's geometry, or null when it has geometry of its own.
const Object* referenceOf(const Group& group) { return group.holdsGeometry() ? nullptr : group.reference(); }

const Material* materialOf(const Object* object) { return object && object->material ? &*object->material : nullptr; }

class Differ {
 public:
  Differ(const Scene& first, const Scene& second, const DiffOptions& options)
      : first_(first), second_(second), options_(options) {}

  std::vector<Difference> found;

  void compare() {
    compareLines(DifferenceKind::kHeader, first_.headers, second_.headers);
    compareLines(DifferenceKind::kModule, first_.modules, second_.modules);
    compareOptions();
    compareCameras();
    compareMaterials();
    const HeldContent looseBefore = contentOf(drawnOf(first_.objects));
    const HeldContent looseAfter = contentOf(drawnOf(second_.objects));
    compareDrawings("", looseBefore, nullptr, looseAfter, nullptr);
    if (first_.groups.size() == 1 && second_.groups.size() == 1) {
      compareTops(*first_.groups[0], *second_.groups[0]);
    } else {
      compareSiblings("", first_.groups, second_.groups);
    }
    compareSources();
  }

 private:
  struct NamedSource {
    std::string path;
    const Group* before;
    const Group* after;
  };

  void add(DifferenceKind kind, std::string path, std::string what) {
    Difference difference;
    difference.kind = kind;
    difference.path = std::move(path);
    difference.what = std::move(what);
    add(std::move(difference));
  }

  void add(Difference difference) {
    if (!options_.without.contains(difference.kind)) found.push_back(std::move(difference));
  }

  static std::vector<DrawnObject> drawnOf(const std::vector<Object>& objects) {
    std::vector<DrawnObject> drawn;
    for (const Object& object : objects) {
      if (object.geometryType == "triangles" || object.geometryType == "nurbs") {
        drawn.push_back({&object, materialOf(&object)});
      }
    }
    return drawn;
  }

  // Lines are told by those that only one side has; the same lines in another order are the same.
  void compareLines(DifferenceKind kind, const Texts& before, const Texts& after) {
    if (before == after) return;
    const auto without = [](const Texts& lines, const Texts& others) {
      std::map<std::string_view, std::size_t> there;
      for (const std::string& other : others) ++there[other];
      Texts left;
      for (const std::string& line : lines) {
        std::size_t& count = there[line];
        if (count == 0) left.push_back(line);
        count -= count > 0 ? 1 : 0;
      }
      return left;
    };
    const Texts removed = without(before, after);
    const Texts added = without(after, before);
    for (std::size_t i = 0; i < std::max(removed.size(), added.size()); ++i) {
      add(kind, "",
          fmt::format("{} -> {}", i < removed.size() ? removed[i] : "none", i < added.size() ? added[i] : "none"));
    }
    if (removed.empty() && added.empty()) {
      add(DifferenceKind::kWritten, "", fmt::format("{} lines in another order", differenceKindName(kind)));
    }
  }

  void compareOptions() {
    using Option = std::pair<std::string, std::string>;
    const auto nameOf = [](const Option& option) { return std::string_view(option.first); };
    auto before = byName(first_.options, nameOf);
    auto after = byName(second_.options, nameOf);
    const auto text = [](const std::vector<const Option*>& options) {
      Texts values;
      for (const Option* option : options) values.push_back(option->second);
      return orNone(fmt::format("{}", fmt::join(values, ", ")));
    };
    for (const std::string_view name : namesOfBoth(first_.options, second_.options, nameOf)) {
      const std::string from = text(before[name]);
      const std::string to = text(after[name]);
      if (from != to) add(DifferenceKind::kOption, "", fmt::format("{} {} -> {}", name, from, to));
    }
  }

  void compareCameras() {
    const auto nameOf = [](const Camera& camera) { return std::string_view(camera.name); };
    auto before = byName(first_.cameras, nameOf);
    auto after = byName(second_.cameras, nameOf);
    for (const std::string_view name : namesOfBoth(first_.cameras, second_.cameras, nameOf)) {
      const auto& from = before[name];
      const auto& to = after[name];
      for (std::size_t i = 0; i < std::max(from.size(), to.size()); ++i) {
        const std::string change = i >= from.size() ? "added"
                                   : i >= to.size() ? "removed"
                                                    : cameraChange(*from[i], *to[i]);
        if (!change.empty()) add(DifferenceKind::kCamera, "", fmt::format("{}: {}", name, change));
      }
    }
  }

  std::string cameraChange(const Camera& before, const Camera& after) const {
    Texts changes;
    addValueChanges(before.values, after.values, changes);
    const Matrix from = before.transform.value_or(kIdentity);
    const Matrix to = after.transform.value_or(kIdentity);
    if (!samePlacement(from, to, options_.tolerance)) changes.push_back("moved " + moveText(from, to));
    const bool sameEnvironment = before.environment.has_value() == after.environment.has_value() &&
                                 (!before.environment || sameShader(*before.environment, *after.environment));
    if (!sameEnvironment) changes.emplace_back("another environment");
    return fmt::format("{}", fmt::join(changes, ", "));
  }

  // Those that stand outside objects.
  void compareMaterials() {
    const auto nameOf = [](const Material& material) { return std::string_view(material.name); };
    auto before = byName(first_.materials, nameOf);
    auto after = byName(second_.materials, nameOf);
    for (const std::string_view name : namesOfBoth(first_.materials, second_.materials, nameOf)) {
      // The last of a name counts.
      const Material* from = before[name].empty() ? nullptr : before[name].back();
      const Material* to = after[name].empty() ? nullptr : after[name].back();
      const std::string change = materialChange(from, to);
      if (!change.empty()) add(DifferenceKind::kRecoloured, "", change);
    }
  }

  void compareTops(const Group& before, const Group& after) {
    if (before.name != after.name) {
      add(DifferenceKind::kRenamed, before.name, fmt::format("{} -> {}", before.name, after.name));
    }
    compareGroups(before.name, before, after);
  }

  using Groups = std::vector<std::unique_ptr<Group>>;

  void compareSiblings(const std::string& path, const Groups& before, const Groups& after) {
    struct Namesakes {
      std::string_view name;
      std::vector<const Group*> before;
      std::vector<const Group*> after;
    };
    std::vector<Namesakes> all;
    std::map<std::string_view, std::size_t> known;
    const auto collect = [&](const Groups& groups, std::vector<const Group*> Namesakes::*list) {
      for (const auto& group : groups) {
        if (group->materialGroup()) continue;
        const auto [entry, isNew] = known.try_emplace(group->name, all.size());
        if (isNew) all.push_back({group->name, {}, {}});
        (all[entry->second].*list).push_back(group.get());
      }
    };
    collect(before, &Namesakes::before);
    collect(after, &Namesakes::after);
    for (const Namesakes& namesakes : all) compareNamesakes(path, namesakes.before, namesakes.after);
  }

  void compareNamesakes(const std::string& path, const std::vector<const Group*>& before,
                        const std::vector<const Group*>& after) {
    std::unordered_map<const Group*, std::size_t> numbers;
    if (before.size() > 1 || after.size() > 1) {
      for (std::size_t i = 0; i < before.size(); ++i) numbers[before[i]] = i + 1;
      for (std::size_t i = 0; i < after.size(); ++i) numbers[after[i]] = i + 1;
    }
    const auto pathOf = [&](const Group& group) {
      std::string full = path.empty() ? group.name : path + "/" + group.name;
      const auto number = numbers.find(&group);
      if (number != numbers.end()) full += fmt::format("[{}]", number->second);
      return full;
    };
    const auto pairs = matchSiblings(before, after, [this](const Group& group) { return content_.keyOf(group); });
    for (const GroupPair& pair : pairs) {
      if (pair.first && pair.second) {
        compareGroups(pathOf(*pair.first), *pair.first, *pair.second);
      } else if (pair.first) {
        const DrawnCounts counts = content_.countsBelow(*pair.first);
        add({DifferenceKind::kRemoved, pathOf(*pair.first), contentText(*pair.first, counts), 0, 0, counts, {}});
      } else {
        const DrawnCounts counts = content_.countsBelow(*pair.second);
        add({DifferenceKind::kAdded, pathOf(*pair.second), contentText(*pair.second, counts), 0, 0, {}, counts});
      }
    }
  }

  void compareGroups(const std::string& path, const Group& before, const Group& after) {
    const Matrix from = before.placement.value_or(kIdentity);
    const Matrix to = after.placement.value_or(kIdentity);
    if (!samePlacement(from, to, options_.tolerance)) {
      add({DifferenceKind::kMoved,
           path,
           moveText(from, to),
           distanceBetween(from, to),
           degreesBetween(from, to),
           {},
           {}});
    }
    compareContent(path, before, after);
    compareAnimations(path, before, after);
    if (before.hasFlags != after.hasFlags || before.flags != after.flags) {
      add(DifferenceKind::kWritten, path, fmt::format("flags {} -> {}", flagsText(before), flagsText(after)));
    }
    compareSiblings(path, before.children, after.children);
  }

  void compareContent(const std::string& path, const Group& before, const Group& after) {
    const Object* from = referenceOf(before);
    const Object* to = referenceOf(after);
    const Group* holderBefore = geometryHolder(before);
    const Group* holderAfter = geometryHolder(after);
    tellWriting(path, from, to, before, after);
    if (from && to && from->source == to->source && holderBefore && holderAfter) {
      sources_.push_back({path, holderBefore, holderAfter});
      compareReferenceMaterials(path, *from, *to);
      return;
    }
    compared_.insert({holderBefore, holderAfter});
    compareDrawings(path, content_.held(holderBefore), replacing(from, holderBefore), content_.held(holderAfter),
                    replacing(to, holderAfter));
  }

  void tellWriting(const std::string& path, const Object* from, const Object* to, const Group& before,
                   const Group& after) {
    if (from && !to && after.holdsGeometry()) add(DifferenceKind::kWritten, path, "now holds its geometry itself");
    if (!from && to && before.holdsGeometry()) add(DifferenceKind::kWritten, path, "now a reference to " + to->source);
    if (from && to && from->source != to->source) {
      add(DifferenceKind::kWritten, path, fmt::format("refers to {} -> {}", from->source, to->source));
    }
  }

  // The material of a reference that takes the place of its source's, or null.
  const Material* replacing(const Object* reference, const Group* holder) {
    return reference && content_.held(holder).singleMaterial ? materialOf(reference) : nullptr;
  }

  void compareReferenceMaterials(const std::string& path, const Object& from, const Object& to) {
    const HeldContent& before = content_.held(from.sourceGroup);
    const HeldContent& after = content_.held(to.sourceGroup);
    if (!before.singleMaterial || !after.singleMaterial || before.objects.empty() || after.objects.empty()) return;
    const auto drawn = [](const Object& reference, const HeldContent& held) {
      return reference.material ? &*reference.material : held.objects.front().material;
    };
    const std::string change = materialChange(drawn(from, before), drawn(to, after));
    if (!change.empty()) add(DifferenceKind::kRecoloured, path, change);
  }

  // Geometry that references name alike on both sides and that no two groups were compared by.
  void compareSources() {
    for (const NamedSource& source : sources_) {
      if (!compared_.insert({source.before, source.after}).second) continue;
      const HeldContent& before = content_.held(source.before);
      const HeldContent& after = content_.held(source.after);
      // References that say their own material were compared by it.
      const bool single = before.singleMaterial && after.singleMaterial;
      const Material* same = single && !before.objects.empty() ? before.objects.front().material : nullptr;
      compareDrawings(source.path, before, same, after, same);
    }
  }

  void compareDrawings(const std::string& path, const HeldContent& before, const Material* replacedBefore,
                       const HeldContent& after, const Material* replacedAfter) {
    // Thousands of references can name the same two.
    const auto [entry, isNew] =
        drawn_.try_emplace({&before, &after, materialKey(replacedBefore), materialKey(replacedAfter)});
    DrawnDifference& difference = entry->second;
    if (isNew) difference = compareDrawn({before, replacedBefore}, {after, replacedAfter});
    if (!difference.remeshed.empty()) {
      add({DifferenceKind::kRemeshed, path, difference.remeshed, 0, 0, before.counts, after.counts});
    }
    for (const std::string& change : difference.recoloured) add(DifferenceKind::kRecoloured, path, change);
  }

  void compareAnimations(const std::string& path, const Group& before, const Group& after) {
    const std::size_t from = before.animations.size();
    const std::size_t to = after.animations.size();
    for (std::size_t i = 0; i < std::max(from, to); ++i) {
      std::string change;
      if (i >= from) {
        change = fmt::format("added, {} matrices", after.animations[i].matrices.size());
      } else if (i >= to) {
        change = fmt::format("removed, {} matrices", before.animations[i].matrices.size());
      } else {
        change = animationChange(before.animations[i], after.animations[i], options_.tolerance);
      }
      if (!change.empty()) add(DifferenceKind::kAnimated, path, change);
    }
  }

  const Scene& first_;
  const Scene& second_;
  const DiffOptions& options_;
  DrawnContent content_;
  std::map<std::tuple<const HeldContent*, const HeldContent*, std::uint64_t, std::uint64_t>, DrawnDifference> drawn_;
  std::vector<NamedSource> sources_;
  std::set<std::pair<const Group*, const Group*>> compared_;  // holders of geometry
};

}  // namespace

std::string_view differenceKindName(DifferenceKind kind) { return kKindNames[static_cast<std::size_t>(kind)]; }

std::vector<Difference> diffScenes(const Scene& first, const Scene& second, const DiffOptions& options) {
  Differ differ(first, second, options);
  differ.compare();
  return std::move(differ.found);
}

}  // namespace rpk

#include "tools/rpk/report/group_tree.h"

#include <bit>

#include "tools/rpk/hash_mix.h"

namespace rpk {
namespace {

class TreeMaker {
 public:
  TreeMaker(const PackageInfo& info, std::size_t depth, bool each) : info_(info), depth_(depth), each_(each) {}

  std::vector<TreeRow> rows;

  void add(const std::vector<std::unique_ptr<Group>>& siblings, std::size_t level) {
    if (level >= depth_) return;
    for (TreeRow& row : alike(siblings, level)) {
      const Group& first = *row.groups.front();
      rows.push_back(std::move(row));
      if (level + 1 >= depth_) rows.back().below = countBelow(first);
      add(first.children, level + 1);
    }
  }

 private:
  std::vector<TreeRow> alike(const std::vector<std::unique_ptr<Group>>& siblings, std::size_t level) {
    std::vector<TreeRow> found;
    std::unordered_map<std::uint64_t, std::size_t> rowOf;
    for (const auto& group : siblings) {
      if (group->materialGroup()) continue;
      const std::uint64_t key = each_ ? found.size() : shapeOf(*group);
      const auto [entry, isNew] = rowOf.try_emplace(key, found.size());
      if (isNew) found.push_back({level, {}, 0});
      found[entry->second].groups.push_back(group.get());
    }
    return found;
  }

  // The same number for groups of one name that draw as much and hold the same groups at the same places.
  std::uint64_t shapeOf(const Group& group) {
    const auto known = shapes_.find(&group);
    if (known != shapes_.end()) return known->second;
    std::uint64_t shape = hashMix(0, group.name);
    const GroupKind kind = groupKind(group);
    shape = hashMix(shape, static_cast<std::uint64_t>(kind == GroupKind::kReference ? GroupKind::kPart : kind));
    shape = hashMix(shape, info_.trianglesAt(group));
    shape = hashMix(shape, group.animations.size());
    for (const auto& child : group.children) {
      if (child->materialGroup()) continue;
      shape = hashMix(shape, shapeOf(*child));
      for (const double value : child->placement.value_or(kIdentity)) {
        shape = hashMix(shape, std::bit_cast<std::uint64_t>(value));
      }
    }
    shapes_.emplace(&group, shape);
    return shape;
  }

  static std::uint64_t countBelow(const Group& group) {
    std::uint64_t count = 0;
    for (const auto& child : group.children) {
      if (!child->materialGroup()) count += 1 + countBelow(*child);
    }
    return count;
  }

  const PackageInfo& info_;
  std::size_t depth_;
  bool each_;
  std::unordered_map<const Group*, std::uint64_t> shapes_;
};

}  // namespace

std::vector<TreeRow> treeRows(const PackageInfo& info, std::size_t depth, bool each) {
  TreeMaker maker(info, depth, each);
  maker.add(info.scene.groups, 0);
  return std::move(maker.rows);
}

}  // namespace rpk

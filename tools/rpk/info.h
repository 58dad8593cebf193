// What a package holds, gathered for those who want to know.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tools/rpk/bounds.h"
#include "tools/rpk/exact/exact_parts.h"
#include "tools/rpk/package_counts.h"
#include "tools/rpk/scene_summary.h"

namespace rpk {

// A material as objects use it. Materials of one name but other content are entries of their own.
struct MaterialUse {
  Material material;
  std::uint64_t objects = 0;  // written with it; those that references draw do not count again
};

// Exact surfaces, and the loops of curves that trim them.
struct TrimCounts {
  std::uint64_t trimmed = 0;
  std::uint64_t loops = 0;
  std::uint64_t curves = 0;
};

struct PackageInfo {
  std::uint64_t fileBytes = 0;
  Scene scene;
  PackageCounts counts;
  std::uint64_t assemblies = 0;      // groups with the flag of a sub-assembly
  std::uint64_t materialGroups = 0;  // inner groups of one material
  std::uint64_t meshes = 0;          // objects with triangles
  TrimCounts trims;
  std::vector<MaterialUse> materials;  // in the order of their first use; at last those that no object uses
  std::vector<const Group*> animated;  // groups with an animation, in the order of the file
  SceneBox box;
  double unitsPerMetre = 1;
  // Triangles that are drawn at the place of a group that has geometry or a reference, without its sub-groups.
  std::unordered_map<const Group*, std::uint64_t> triangles;
  // Exact surfaces evaluated, which takes its time: only when someone fills it in.
  std::optional<std::vector<ExactPart>> exact;

  std::uint64_t trianglesAt(const Group& group) const;
};

// The result holds views into `bytes`, which must outlive it.
PackageInfo gatherInfo(std::string_view bytes, const ReadLimits& limits = {});

// What stands for a group in a tree of the model.
enum class GroupKind { kAssembly, kPart, kReference, kMaterial, kEmpty };
GroupKind groupKind(const Group& group);
std::string_view groupKindName(GroupKind kind);  // "assembly", "part", "reference", "material", "empty"

// The names from the top down to the group, joined by "/".
std::string groupPath(const Group& group);

}  // namespace rpk

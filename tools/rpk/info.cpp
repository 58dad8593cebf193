#include "tools/rpk/info.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "tools/rpk/drawing.h"

namespace rpk {
namespace {

class Gatherer {
 public:
  explicit Gatherer(PackageInfo& info) : info_(info) {}

  void gather() {
    for (const Object& object : info_.scene.objects) addObject(object);
    for (const Group* group : info_.scene.allGroups()) addGroup(*group);
    for (const Material& material : info_.scene.materials) useOf(material);
    std::stable_partition(info_.materials.begin(), info_.materials.end(),
                          [](const MaterialUse& use) { return use.objects > 0; });
  }

 private:
  void addGroup(const Group& group) {
    if (group.assembly()) ++info_.assemblies;
    if (group.materialGroup()) ++info_.materialGroups;
    if (!group.animations.empty()) info_.animated.push_back(&group);
    for (const Object& object : group.objects) addObject(object);
    if (group.materialGroup()) return;
    if (const Group* holder = geometryHolder(group)) info_.triangles[&group] = trianglesOf(*holder);
  }

  void addObject(const Object& object) {
    if (object.geometryType == "triangles") ++info_.meshes;
    if (object.geometryType == "nurbs") addTrims(object);
    if (object.material) ++useOf(*object.material).objects;
  }

  void addTrims(const Object& object) {
    const auto count = [&](const char* name) -> std::uint64_t {
      const auto array = object.arrays.find(name);
      return array == object.arrays.end() ? 0 : array->second.count();
    };
    const std::uint64_t loops = count("trim_nedges");
    if (loops > 0) ++info_.trims.trimmed;
    info_.trims.loops += loops;
    info_.trims.curves += count("edge_order");
  }

  MaterialUse& useOf(const Material& material) {
    const auto diffuse = material.surface.values.find("diffuse");
    const std::string colour = diffuse == material.surface.values.end() ? std::string() : diffuse->second;
    const auto [entry, isNew] = uses_.try_emplace({material.name, material.surface.type, colour, material.texture}, 0);
    if (isNew) {
      entry->second = info_.materials.size();
      info_.materials.push_back({material, 0});
    }
    return info_.materials[entry->second];
  }

  std::uint64_t trianglesOf(const Group& holder) {
    const auto [entry, isNew] = held_.try_emplace(&holder, 0);
    if (isNew) {
      for (const DrawnObject& drawn : drawnObjects(holder)) entry->second += drawn.object->mesh.triangleCount();
    }
    return entry->second;
  }

  // Name, shader, colour as it is written, texture.
  using Key = std::array<std::string, 4>;

  PackageInfo& info_;
  std::map<Key, std::size_t> uses_;
  std::unordered_map<const Group*, std::uint64_t> held_;
};

}  // namespace

std::uint64_t PackageInfo::trianglesAt(const Group& group) const {
  const auto found = triangles.find(&group);
  return found == triangles.end() ? 0 : found->second;
}

PackageInfo gatherInfo(std::string_view bytes, const ReadLimits& limits) {
  PackageInfo info;
  info.fileBytes = bytes.size();
  info.counts = countPackage(bytes, limits);
  info.scene = readScene(bytes, limits);
  Gatherer(info).gather();
  info.box = sceneBox(info.scene);
  info.unitsPerMetre = unitsPerMetre(info.scene);
  return info;
}

GroupKind groupKind(const Group& group) {
  if (group.materialGroup()) return GroupKind::kMaterial;
  if (group.holdsGeometry()) return GroupKind::kPart;
  if (group.reference()) return GroupKind::kReference;
  const bool holdsGroups = std::any_of(group.children.begin(), group.children.end(),
                                       [](const auto& child) { return !child->materialGroup(); });
  return group.assembly() || holdsGroups ? GroupKind::kAssembly : GroupKind::kEmpty;
}

std::string_view groupKindName(GroupKind kind) {
  switch (kind) {
    case GroupKind::kAssembly:
      return "assembly";
    case GroupKind::kPart:
      return "part";
    case GroupKind::kReference:
      return "reference";
    case GroupKind::kMaterial:
      return "material";
    case GroupKind::kEmpty:
      break;
  }
  return "empty";
}

std::string groupPath(const Group& group) {
  std::string path = group.name;
  for (const Group* outer = group.parent; outer; outer = outer->parent) path.insert(0, "/").insert(0, outer->name);
  return path;
}

}  // namespace rpk

#include "geometry/part_geometry.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "geometry/surface_collection.h"
#include "geometry/tessellation.h"
#include "scene/appearance_reader.h"
#include "scene/vntScene_api.h"

namespace rendara {
namespace {

constexpr std::size_t kModelNameBuffer = 260;
constexpr unsigned kDefinedGeometryFlags = 0x400;
constexpr unsigned kMaterialGroupFlags = 0x10400;

// The surfaces of a part that carry the same material, as indices into its SurfaceCollection.
struct MaterialGroup {
  MaterialRecord record;
  std::vector<std::size_t> surfaces;
};

// Ordered by the material's name, byte by byte, which is the order in which the groups are written.
using MaterialGroups = std::map<std::string, MaterialGroup>;

MaterialGroups groupByMaterial(const SurfaceCollection& collection, const PartOccurrence& occurrence,
                               const std::string& partName, bool separateMaterials) {
  // For surfaces without an appearance of their own.
  const MaterialRecord inherited =
      occurrenceMaterial(occurrence.part, occurrence.appearancePath).value_or(MaterialRecord{});
  const std::string inheritedName = materialName(inherited, partName, separateMaterials);
  MaterialGroups groups;
  for (std::size_t index = 0; index < collection.surfaces.size(); ++index) {
    ProGeomitem item{};
    ProSurfaceToGeomitem(collection.part, collection.surfaces[index], &item);
    const auto own = readAppearance(item);
    const std::string name = own ? materialName(*own, partName, separateMaterials) : inheritedName;
    const auto [group, isNew] = groups.try_emplace(name);
    if (isNew) {
      group->second.record = own ? *own : inherited;
    }
    group->second.surfaces.push_back(index);
  }
  return groups;
}

class PartWriter {
 public:
  PartWriter(vntScene_api& scene, const PartOccurrence& occurrence, const GeometryOptions& options,
             MeshBuffers& buffers)
      : scene_(scene), occurrence_(occurrence), options_(options), buffers_(buffers) {}

  std::optional<MaterialRecord> writeGeometry(const SurfaceCollection& collection) {
    partName_ = modelName(occurrence_.part).text;
    const SurfaceTessellator tessellator(occurrence_.part, options_.tessellationQuality);
    scene_.flags(kDefinedGeometryFlags);
    const MaterialGroups groups = groupByMaterial(collection, occurrence_, partName_, options_.separateMaterials);
    std::optional<MaterialRecord> first;
    for (const auto& [name, group] : groups) {
      if (writeGroup(collection, tessellator, name, group) && !first) {
        first = group.record;
      }
    }
    return first;
  }

 private:
  bool writeGroup(const SurfaceCollection& collection, const SurfaceTessellator& tessellator, const std::string& name,
                  const MaterialGroup& group) {
    if (options_.includeNURBS) {
      scene_.beginGroup(partName_.c_str(), true);
      scene_.flags(kMaterialGroupFlags);
    }
    collectMesh(collection, tessellator, group);
    const bool hasMesh = buffers_.hasMesh();
    if (hasMesh) {
      scene_.beginObject(partName_.c_str(), true);
      buffers_.write(scene_);
      writeMaterial(scene_, name, group.record);
      scene_.endObject();
    }
    if (options_.includeNURBS) {
      scene_.endGroup();
    }
    return hasMesh;
  }

  void collectMesh(const SurfaceCollection& collection, const SurfaceTessellator& tessellator,
                   const MaterialGroup& group) {
    buffers_.clear();
    for (const std::size_t index : group.surfaces) {
      if (const Tessellation tessellation = tessellator.tessellate(collection.surfaces[index])) {
        buffers_.append(tessellation.get());
      }
    }
  }

  vntScene_api& scene_;
  const PartOccurrence& occurrence_;
  const GeometryOptions& options_;
  MeshBuffers& buffers_;
  std::string partName_;
};

}  // namespace

NarrowText modelName(ProMdl model) {
  ProName name{};
  const ProError status = ProMdlNameGet(model, name);
  NarrowText narrow = narrowText(name, kModelNameBuffer);
  narrow.exact = narrow.exact && status == PRO_TK_NO_ERROR;
  return narrow;
}

std::optional<MaterialRecord> exportPartGeometry(vntScene_api& scene, const PartOccurrence& occurrence,
                                                 const GeometryOptions& options, MeshBuffers& buffers,
                                                 const std::function<void()>& writeAnimation) {
  SurfaceCollection collection;
  collectSurfaces(occurrence.part, collection);
  if (collection.surfaces.empty()) {
    return std::nullopt;
  }
  scene.beginGroup(occurrence.name, true);
  std::optional<MaterialRecord> written;
  if (occurrence.defineGeometry) {
    written = PartWriter(scene, occurrence, options, buffers).writeGeometry(collection);
  }
  writeAnimation();
  scene.transform(occurrence.placement, false);
  scene.endGroup();
  return written;
}

}  // namespace rendara

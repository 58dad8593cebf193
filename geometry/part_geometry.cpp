#include "geometry/part_geometry.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "geometry/exact_records.h"
#include "geometry/exact_surface.h"
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
             const GeometryBuffers& buffers)
      : scene_(scene), occurrence_(occurrence), options_(options), buffers_(buffers) {}

  std::optional<MaterialRecord> writeGeometry(const SurfaceCollection& collection) {
    partName_ = modelName(occurrence_.part).text;
    const SurfaceTessellator tessellator(occurrence_.part, options_.tessellationQuality);
    scene_.flags(kDefinedGeometryFlags);
    if (options_.includeNURBS) {
      records_.emplace(collection);
    }
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
    bool written = false;
    buffers_.mesh.clear();
    for (const std::size_t index : group.surfaces) {
      const ProSurface surface = collection.surfaces[index];
      if (const Tessellation tessellation = tessellator.tessellate(surface)) {
        buffers_.mesh.append(tessellation.get());
        written = writeExactSurfaces(surface, name, group.record) || written;
      }
    }
    if (buffers_.mesh.hasMesh()) {
      scene_.beginObject(partName_.c_str(), true);
      buffers_.mesh.write(scene_);
      writeMaterial(scene_, name, group.record);
      scene_.endObject();
      written = true;
    }
    if (options_.includeNURBS) {
      scene_.endGroup();
    }
    return written;
  }

  // One object for each record of the surface; false when there is none.
  bool writeExactSurfaces(ProSurface surface, const std::string& material, const MaterialRecord& record) {
    if (!records_) {
      return false;
    }
    int id = 0;
    ProSurfaceIdGet(surface, &id);
    const auto records = records_->recordsOf(id);
    for (ProSurfacedata* data : records) {
      buffers_.exact.clear();
      records_->collectTrims(surface, buffers_.exact);
      scene_.beginObject(partName_.c_str(), true);
      writeExactSurface(scene_, data, buffers_.exact);
      writeMaterial(scene_, material, record);
      scene_.endObject();
    }
    return !records.empty();
  }

  vntScene_api& scene_;
  const PartOccurrence& occurrence_;
  const GeometryOptions& options_;
  GeometryBuffers buffers_;
  std::string partName_;
  std::optional<ExactRecords> records_;
};

}  // namespace

NarrowText modelName(ProMdl model) {
  ProName name{};
  const ProError status = ProMdlNameGet(model, name);
  NarrowText narrow = narrowText(name, kModelNameBuffer);
  narrow.exact = narrow.exact && status == PRO_TK_NO_ERROR;
  return narrow;
}

WrittenOccurrence exportPartGeometry(vntScene_api& scene, const PartOccurrence& occurrence,
                                     const GeometryOptions& options, const GeometryBuffers& buffers,
                                     const std::function<void()>& writeAnimation) {
  SurfaceCollection collection;
  collectSurfaces(occurrence.part, collection);
  if (collection.surfaces.empty()) {
    return {};
  }
  scene.beginGroup(occurrence.name, true);
  WrittenOccurrence written{true, std::nullopt};
  if (occurrence.defineGeometry) {
    written.material = PartWriter(scene, occurrence, options, buffers).writeGeometry(collection);
  }
  writeAnimation();
  scene.transform(occurrence.placement, false);
  scene.endGroup();
  return written;
}

}  // namespace rendara

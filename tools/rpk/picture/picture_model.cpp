#include "tools/rpk/picture/picture_model.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "tools/rpk/exact/exact_mesh.h"
#include "tools/rpk/texture_file.h"

namespace rpk {
namespace {

// The largest side of the box around the control points of some surfaces, which the surfaces lie in.
double sizeOf(const std::vector<std::optional<TrimmedSurface>>& surfaces) {
  double size = 0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const auto& trimmed : surfaces) {
      if (!trimmed) continue;
      for (const auto& point : trimmed->surface.points) {
        low = std::min(low, point[axis]);
        high = std::max(high, point[axis]);
      }
    }
    if (low < high) size = std::max(size, high - low);
  }
  return size;
}

// A surface that cannot be read gives an empty mesh, so that the meshes stay in step with the materials.
void addExact(const std::vector<DrawnObject>& drawn, PicturePart& part) {
  constexpr double kChord = 1.0 / 2000;
  part.twoSided = true;
  std::vector<std::optional<TrimmedSurface>> surfaces;
  surfaces.reserve(drawn.size());
  for (const DrawnObject& entry : drawn) surfaces.push_back(readTrimmedSurface(*entry.object));
  const double chord = kChord * sizeOf(surfaces);
  for (const auto& trimmed : surfaces) {
    part.meshes.push_back(trimmed ? exactMesh(*trimmed, chord) : TriangleMesh{});
  }
}

std::vector<DrawnObject> meshesOf(const Group& group, PictureSource source) {
  std::vector<DrawnObject> meshes = drawnObjects(group);
  std::erase_if(meshes, [source](const DrawnObject& drawn) {
    return drawn.object->geometryType != (source == PictureSource::kExactSurfaces ? "nurbs" : "triangles");
  });
  return meshes;
}

// Gathers the distinct materials and parts of a scene while its placements are gone through.
class Collector {
 public:
  Collector(const TextureLoader& loader, PictureSource source) : loader_(loader), source_(source) {}

  void add(const PlacedGroup& placed) {
    const std::vector<DrawnObject> meshes = meshesOf(*placed.group, source_);
    if (meshes.empty()) return;
    PictureInstance instance;
    instance.part = partOf(meshes);
    instance.placement = placed.placement;
    for (const DrawnObject& mesh : meshes) instance.materials.push_back(materialOf(mesh.material));
    model_.instances.push_back(std::move(instance));
  }

  PictureModel take() { return std::move(model_); }

 private:
  // A group and the references to it draw the same objects, so the first of them tells the part.
  std::size_t partOf(const std::vector<DrawnObject>& meshes) {
    const auto [entry, added] = parts_.try_emplace(meshes.front().object, model_.parts.size());
    if (!added) return entry->second;
    PicturePart& part = model_.parts.emplace_back();
    if (source_ == PictureSource::kExactSurfaces) {
      addExact(meshes, part);
    } else {
      for (const DrawnObject& mesh : meshes) part.meshes.push_back(copyMesh(mesh.object->mesh));
    }
    return entry->second;
  }

  // A material block is written at every use, so blocks that say the same are one material.
  std::size_t materialOf(const Material* material) {
    const Material none;
    const Material& source = material ? *material : none;
    const Vector colour = source.colour.value_or(PictureMaterial{}.colour);
    const auto [entry, added] = materials_.try_emplace(
        std::tuple(source.name, colour, source.texture, textureRepeats(source)), model_.materials.size());
    if (added) model_.materials.push_back({colour, textureOf(source.texture), textureRepeats(source)});
    return entry->second;
  }

  std::shared_ptr<const Image> textureOf(const std::string& path) {
    if (path.empty() || !loader_) return nullptr;
    const auto found = textures_.find(path);
    if (found != textures_.end()) return found->second;
    return textures_[path] = loader_(path);
  }

  const TextureLoader& loader_;
  PictureSource source_;
  PictureModel model_;
  std::map<const Object*, std::size_t> parts_;
  std::map<std::tuple<std::string, Vector, std::string, bool>, std::size_t> materials_;
  std::map<std::string, std::shared_ptr<const Image>> textures_;
};

}  // namespace

PictureModel pictureModel(const Scene& scene, const TextureLoader& loader, PictureSource source) {
  return pictureModel(placedGroups(scene), loader, source);
}

PictureModel pictureModel(const std::vector<PlacedGroup>& groups, const TextureLoader& loader, PictureSource source) {
  Collector collector(loader, source);
  for (const PlacedGroup& placed : groups) collector.add(placed);
  return collector.take();
}

std::vector<Matrix> instancePlacements(const std::vector<PlacedGroup>& groups, PictureSource source) {
  std::vector<Matrix> placements;
  for (const PlacedGroup& placed : groups) {
    if (!meshesOf(*placed.group, source).empty()) placements.push_back(placed.placement);
  }
  return placements;
}

}  // namespace rpk

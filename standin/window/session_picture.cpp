#include "standin/window/session_picture.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "standin/app/component_change.h"
#include "tools/rpk/image_file.h"
#include "tools/rpk/mapped_file.h"

namespace standin {
namespace {

// Chord height as a share of the part's largest side: round on a screen, and quick.
constexpr double kChordShare = 0.002;

double chordHeight(const Model& part) {
  const std::optional<Box> box = boundingBox(part);
  double size = 0;
  for (std::size_t i = 0; box && i < 3; ++i) size = std::max(size, (*box)[1][i] - (*box)[0][i]);
  return size > 0 && std::isfinite(size) ? size * kChordShare : 1;
}

// The part's surfaces that are to be seen, by their indices.
std::vector<std::size_t> shownSurfaces(const Model& part) {
  std::vector<std::size_t> indices = part.solidSurfaces;
  for (const Quilt& quilt : part.quilts) {
    if (quilt.hidden || quilt.inactive || quilt.backup) continue;
    indices.insert(indices.end(), quilt.surfaces.begin(), quilt.surfaces.end());
  }
  std::erase_if(indices, [&](std::size_t index) {
    const Surface& surface = part.surfaces[index];
    return surface.hidden || surface.inactive;
  });
  return indices;
}

void append(const SurfaceMesh& source, rpk::TriangleMesh& mesh) {
  const auto first = static_cast<std::uint32_t>(mesh.vertexCount());
  const auto add = [](const std::vector<Point>& points, std::vector<float>& values) {
    for (const Point& point : points) {
      for (const double value : point) values.push_back(static_cast<float>(value));
    }
  };
  add(source.vertices, mesh.positions);
  // Normals count only when every vertex has one.
  if (source.normals.size() == source.vertices.size() && mesh.normals.size() == std::size_t{first} * 3) {
    add(source.normals, mesh.normals);
  } else {
    mesh.normals.clear();
  }
  if (source.params.size() == source.vertices.size() && mesh.uvs.size() == std::size_t{first} * 2) {
    for (const std::array<double, 2>& param : source.params) {
      for (const double value : param) mesh.uvs.push_back(static_cast<float>(value));
    }
  } else {
    mesh.uvs.clear();
  }
  for (const std::array<int, 3>& facet : source.facets) {
    for (const int corner : facet) mesh.indices.push_back(first + static_cast<std::uint32_t>(corner));
  }
}

bool sameLook(const Appearance& a, const Appearance& b) {
  return a.name == b.name && a.color == b.color && a.texture == b.texture;
}

}  // namespace

// Walks the tree of components.
class SessionPictureMaker::Collector {
 public:
  Collector(SessionPictureMaker& maker, const Progress& progress) : maker_(maker), progress_(progress) {}

  void add(const Model& model, const Matrix& placement, const Appearance* given) {
    if (model.type == PRO_MDL_PART) addPart(model, placement, given);
    for (const Feature& feature : model.features) {
      if (feature.component == nullptr || !isShown(model, feature) || path_.size() >= PRO_MAX_ASSEM_LEVEL) continue;
      path_.push_back(feature.id);
      add(*feature.component, multiply(feature.placement, placement),
          feature.appearance ? &*feature.appearance : nullptr);
      path_.pop_back();
    }
  }

  SessionPicture take() { return std::move(picture_); }

 private:
  void addPart(const Model& part, const Matrix& placement, const Appearance* given) {
    const PartMeshes& meshes = maker_.meshesOf(part, progress_);
    const auto [entry, added] = parts_.try_emplace(&part, picture_.model.parts.size());
    if (added) picture_.model.parts.push_back(meshes.part);
    rpk::PictureInstance& instance = picture_.model.instances.emplace_back();
    instance.part = entry->second;
    instance.placement = placement;
    const Appearance* const common = given || !part.appearance ? given : &*part.appearance;
    for (const Appearance* own : meshes.own) instance.materials.push_back(materialOf(own ? own : common));
    picture_.paths.push_back(path_);
  }

  std::size_t materialOf(const Appearance* appearance) {
    const rpk::Vector colour = appearance ? appearance->color : rpk::PictureMaterial{}.colour;
    const std::wstring texture = appearance ? appearance->texture : std::wstring();
    const auto [entry, added] = materials_.try_emplace({colour, texture}, picture_.model.materials.size());
    if (added) picture_.model.materials.push_back({colour, maker_.texture(texture), true});
    return entry->second;
  }

  SessionPictureMaker& maker_;
  const Progress& progress_;
  SessionPicture picture_;
  std::map<const Model*, std::size_t> parts_;
  std::map<std::pair<rpk::Vector, std::wstring>, std::size_t> materials_;
  std::vector<int> path_;
};

const SessionPictureMaker::PartMeshes& SessionPictureMaker::meshesOf(const Model& part, const Progress& progress) {
  PartMeshes& kept = parts_[&part];
  if (kept.versionStamp == part.versionStamp && !kept.own.empty()) return kept;
  kept = {part.versionStamp, {}, {nullptr}};
  kept.part.meshes.emplace_back();
  if (!part.mesher) return kept;
  if (progress) progress(part);
  const double chord = chordHeight(part);
  for (const std::size_t index : shownSurfaces(part)) {
    std::string failure;
    const std::shared_ptr<const SurfaceMesh> mesh = part.mesher->mesh(index, chord, failure);
    if (!mesh) continue;
    const auto& own = part.surfaces[index].appearance;
    const auto known = std::find_if(kept.own.begin(), kept.own.end(), [&](const Appearance* candidate) {
      return own && candidate ? sameLook(*own, *candidate) : !own && !candidate;
    });
    const auto at = static_cast<std::size_t>(known - kept.own.begin());
    if (known == kept.own.end()) {
      kept.own.push_back(&*own);
      kept.part.meshes.emplace_back();
    }
    append(*mesh, kept.part.meshes[at]);
  }
  // The meshes of the display are of no use to an export.
  part.mesher->forget();
  return kept;
}

std::shared_ptr<const rpk::Image> SessionPictureMaker::texture(const std::wstring& name) {
  if (name.empty()) return nullptr;
  const auto [entry, added] = textures_.try_emplace(name);
  const auto file = added ? session_.findTexture(name) : std::nullopt;
  const auto content = file ? rpk::MappedFile::open(*file) : std::nullopt;
  auto image = content ? rpk::decodeImage(content->bytes()) : std::nullopt;
  if (image) entry->second = std::make_shared<const rpk::Image>(std::move(*image));
  return entry->second;
}

rpk::ViewDirection viewDirection(const Matrix& view) {
  return {{-view[2], -view[6], -view[10]}, {view[1], view[5], view[9]}};
}

SessionPicture SessionPictureMaker::make(const Model& top, const Progress& progress) {
  Collector collector(*this, progress);
  collector.add(top, kIdentity, nullptr);
  return collector.take();
}

}  // namespace standin

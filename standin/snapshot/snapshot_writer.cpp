#include "standin/snapshot/snapshot_writer.h"

#include <exception>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include "standin/snapshot/records.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

std::string utf8(const fs::path& path) {
  const std::u8string text = path.generic_u8string();
  return {text.begin(), text.end()};
}

StoredFolder storedFolder(const fs::path& texture, const fs::path& folder) {
  const fs::path relative = texture.is_absolute() ? texture.lexically_relative(folder.lexically_normal()) : fs::path();
  return {utf8(texture), utf8(relative)};
}

class SnapshotWriter {
 public:
  SnapshotWriter(std::ostream& output, const MeshSource& meshes) : output_(output), meshes_(meshes) {}

  SnapshotCounts write(Session& session, const fs::path& folder) {
    put(kSnapshotMark);
    ArchiveWriter version;
    version(kSnapshotVersion);
    put(version.bytes());

    ArchiveWriter records;
    std::size_t number = 0;
    for (const auto& model : session.models()) records.modelNumbers[model.get()] = number++;
    records(headOf(session, folder));
    for (const auto& model : session.models()) {
      const StoredGeometry geometry = store(*model);
      records(*model, geometry);
    }
    Model* const current = session.current;
    records(current);

    ArchiveWriter footer;
    footer(store(records.bytes()));
    put(footer.bytes());
    put(kSnapshotEnd);
    counts_.bytes = position_;
    return counts_;
  }

 private:
  static SnapshotHead headOf(const Session& session, const fs::path& folder) {
    SnapshotHead head{systemCodePage(), session.mode, session.configOptions, {}, session.models().size()};
    for (const fs::path& texture : session.textureFolders) {
      head.textureFolders.push_back(storedFolder(texture, folder));
    }
    return head;
  }

  StoredGeometry store(Model& model) {
    StoredGeometry geometry;
    counts_.parts += model.type == PRO_MDL_PART ? 1 : 0;
    counts_.surfaces += model.surfaces.size();
    geometry.hasMesher = model.mesher != nullptr;
    if (model.mesher) {
      geometry.meshes.resize(model.surfaces.size());
      meshes_(model, [&](std::size_t surface, double chordHeight, const SurfaceMesh* mesh, const std::string& failure) {
        geometry.meshes.at(surface).push_back(storedMesh(chordHeight, mesh, failure));
      });
      model.mesher->forget();
    }
    geometry.hasConverter = model.converter != nullptr;
    if (model.converter) {
      if (const auto part = converted(*model.converter)) geometry.exact = store(*part);
      model.converter->forget();
    }
    return geometry;
  }

  // A conversion that throws counts as one that gives nothing, as it does for the toolkit's operations.
  static std::shared_ptr<const ExactPart> converted(PartConverter& converter) {
    try {
      return converter.convert();
    } catch (const std::exception&) {
      return nullptr;
    }
  }

  StoredMesh storedMesh(double chordHeight, const SurfaceMesh* mesh, const std::string& failure) {
    ++(mesh != nullptr ? counts_.meshes : counts_.failures);
    if (mesh == nullptr) return {chordHeight, std::nullopt, failure};
    counts_.triangles += mesh->facets.size();
    return {chordHeight, store(*mesh), {}};
  }

  template <typename Record>
  BlobPlace store(const Record& record) {
    ArchiveWriter archive;
    archive(record);
    return store(archive.bytes());
  }

  // Bytes of the same size and checksum are taken as the same.
  BlobPlace store(const std::string& bytes) {
    BlobPlace place{position_, bytes.size(), checksum(bytes.data(), bytes.size())};
    const auto [known, isNew] = places_.try_emplace({place.size, place.checksum}, place);
    if (isNew) put(bytes);
    return known->second;
  }

  void put(std::string_view bytes) {
    output_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    position_ += bytes.size();
  }

  std::ostream& output_;
  const MeshSource& meshes_;
  std::uint64_t position_ = 0;
  std::map<std::pair<std::uint64_t, std::uint64_t>, BlobPlace> places_;  // by size and checksum
  SnapshotCounts counts_;
};

}  // namespace

MeshSource meshesAt(std::function<std::vector<double>(const Model&)> chordHeights) {
  return [heights = std::move(chordHeights)](Model& model, const KeepMesh& keep) {
    for (const double chordHeight : heights(model)) {
      for (std::size_t surface = 0; surface < model.surfaces.size(); ++surface) {
        std::string failure;
        const auto mesh = model.mesher->mesh(surface, chordHeight, failure);
        keep(surface, chordHeight, mesh.get(), failure);
      }
    }
  };
}

SnapshotCounts writeSnapshot(std::ostream& output, Session& session, const fs::path& folder, const MeshSource& meshes) {
  return SnapshotWriter(output, meshes).write(session, folder);
}

}  // namespace standin

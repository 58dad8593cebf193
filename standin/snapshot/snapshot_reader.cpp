#include "standin/snapshot/snapshot_reader.h"

#include <algorithm>
#include <exception>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "standin/snapshot/snapshot_file.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

struct SavedModel {
  Model model;
  StoredGeometry geometry;
};

struct SavedSession {
  SnapshotHead head;
  std::deque<SavedModel> models;
  std::vector<std::pair<Model**, std::size_t>> componentLinks;
  std::size_t current = 0;
};

void checkIndices(const std::vector<std::size_t>& indices, const Model& model) {
  const bool known = std::all_of(indices.begin(), indices.end(),
                                 [&model](std::size_t index) { return index < model.surfaces.size(); });
  if (!known) ArchiveReader::fail("a surface is listed that is not there");
}

void checkModel(const SavedModel& saved, const SnapshotFile& file) {
  const auto& [model, geometry] = saved;
  checkIndices(model.solidSurfaces, model);
  for (const Quilt& quilt : model.quilts) checkIndices(quilt.surfaces, model);
  if (geometry.meshes.size() != (geometry.hasMesher ? model.surfaces.size() : 0)) {
    ArchiveReader::fail("surfaces and their meshes differ in number");
  }
  for (const std::vector<StoredMesh>& meshes : geometry.meshes) {
    for (const StoredMesh& stored : meshes) {
      if (stored.mesh) file.checkPlace(*stored.mesh);
    }
  }
  if (geometry.exact) file.checkPlace(*geometry.exact);
}

// Takes away models that hold no others than those taken away before, until none is left.
void checkAcyclic(const std::vector<std::vector<std::size_t>>& components) {
  std::vector<std::vector<std::size_t>> owners(components.size());
  std::vector<std::size_t> left(components.size());
  std::vector<std::size_t> ready;
  for (std::size_t owner = 0; owner < components.size(); ++owner) {
    for (const std::size_t component : components[owner]) owners[component].push_back(owner);
    left[owner] = components[owner].size();
    if (left[owner] == 0) ready.push_back(owner);
  }
  std::size_t taken = 0;
  for (; !ready.empty(); ++taken) {
    const std::size_t model = ready.back();
    ready.pop_back();
    for (const std::size_t owner : owners[model]) {
      if (--left[owner] == 0) ready.push_back(owner);
    }
  }
  if (taken != components.size()) ArchiveReader::fail("an assembly holds itself");
}

SavedSession readRecords(SnapshotFile& file, const LoadProgress& progress) {
  SavedSession saved;
  ArchiveReader archive(file.stream(), file.records());
  archive(saved.head);
  std::vector<std::vector<std::size_t>> components;
  for (std::size_t number = 0; number < saved.head.models; ++number) {
    SavedModel& added = saved.models.emplace_back();
    const std::size_t linksBefore = archive.modelLinks.size();
    archive(added.model, added.geometry);
    checkModel(added, file);
    std::vector<std::size_t>& held = components.emplace_back();
    for (std::size_t link = linksBefore; link < archive.modelLinks.size(); ++link) {
      held.push_back(archive.modelLinks[link].second);
      if (held.back() >= saved.head.models) ArchiveReader::fail("a component is no model of it");
    }
    if (progress && !progress(static_cast<double>(number + 1) / static_cast<double>(saved.head.models))) {
      throw SnapshotError("reading was stopped");
    }
  }
  saved.componentLinks = archive.modelLinks;
  Model* current = nullptr;
  archive(current);
  if (archive.modelLinks.size() == saved.componentLinks.size()) ArchiveReader::fail("it holds no open model");
  saved.current = archive.modelLinks.back().second;
  if (saved.current >= saved.head.models) ArchiveReader::fail("the open model is no model of it");
  archive.finish();
  checkAcyclic(components);
  return saved;
}

// The saved model as one of the session. Lists are moved as a whole, so their records keep their addresses.
Model& adopt(Session& session, SavedModel&& saved, const std::shared_ptr<SnapshotFile>& file) {
  Model& model = session.addModel(saved.model.type, saved.model.name);
  const std::uint64_t stamp = saved.model.versionStamp;
  saved.model.name = model.name;
  model = std::move(saved.model);
  session.restoreStamp(model, stamp);
  std::size_t index = 0;
  for (Surface& surface : model.surfaces) {
    surface.owner = &model;
    surface.index = index++;
  }
  for (Quilt& quilt : model.quilts) quilt.owner = &model;
  if (saved.geometry.hasMesher) {
    model.mesher = std::make_shared<SnapshotMesher>(file, std::move(saved.geometry.meshes));
  }
  if (saved.geometry.hasConverter) {
    model.converter = std::make_shared<SnapshotConverter>(file, saved.geometry.exact);
  }
  return model;
}

fs::path pathFromUtf8(const std::string& text) { return std::u8string(text.begin(), text.end()); }

// Textures that were moved together with the snapshot are found before those where they were.
fs::path textureFolder(const StoredFolder& stored, const fs::path& folder) {
  if (!stored.relative.empty()) {
    std::error_code ignored;
    const fs::path moved = (folder / pathFromUtf8(stored.relative)).lexically_normal();
    if (fs::is_directory(moved, ignored)) return moved.has_filename() ? moved : moved.parent_path();
  }
  return pathFromUtf8(stored.path);
}

void addSettings(Session& session, const SnapshotHead& head, const std::vector<fs::path>& folders) {
  for (const auto& [name, value] : head.configOptions) session.configOptions[name] = value;
  for (const fs::path& folder : folders) {
    auto& known = session.textureFolders;
    if (std::find(known.begin(), known.end(), folder) == known.end()) known.push_back(folder);
  }
  session.mode = head.mode;
}

LoadResult read(Session& session, const fs::path& path, const LoadProgress& progress) {
  const auto file = std::make_shared<SnapshotFile>(path);
  SavedSession saved = readRecords(*file, progress);
  std::vector<fs::path> folders;
  for (const StoredFolder& stored : saved.head.textureFolders) {
    folders.push_back(textureFolder(stored, fs::absolute(path).parent_path()));
  }
  std::vector<Model*> models;
  for (SavedModel& model : saved.models) models.push_back(&adopt(session, std::move(model), file));
  for (const auto& [component, number] : saved.componentLinks) *component = models[number];
  addSettings(session, saved.head, folders);
  session.current = models[saved.current];
  return {session.current, {}, saved.head.codePage, true};
}

}  // namespace

bool isSnapshot(const fs::path& file) {
  std::error_code ignored;
  if (!fs::is_regular_file(file, ignored)) return false;
  std::ifstream stream(file, std::ios::binary);
  std::string mark(kSnapshotMark.size(), '\0');
  return stream.read(mark.data(), static_cast<std::streamsize>(mark.size())) && mark == kSnapshotMark;
}

LoadResult readSnapshot(Session& session, const fs::path& file, const LoadProgress& progress) {
  try {
    return read(session, file, progress);
  } catch (const SnapshotError& error) {
    return {nullptr, error.what()};
  } catch (const std::exception& error) {
    return {nullptr, std::string("the snapshot cannot be opened: ") + error.what()};
  }
}

}  // namespace standin

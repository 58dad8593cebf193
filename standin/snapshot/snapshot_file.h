// An open snapshot, and the geometry that its models read from it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "standin/cad/model.h"
#include "standin/snapshot/records.h"

namespace standin {

class SnapshotFile {
 public:
  // Throws SnapshotError when it cannot be opened, or is not a whole snapshot of this version.
  explicit SnapshotFile(const std::filesystem::path& file);

  const BlobPlace& records() const { return records_; }
  // Throws SnapshotError when the place is not one of geometry in the file.
  void checkPlace(const BlobPlace& place) const;
  std::istream& stream() { return stream_; }

  // What a place holds; throws SnapshotError.
  std::shared_ptr<const SurfaceMesh> mesh(const BlobPlace& place);
  // The last answer is kept, over all parts: it is asked for again for each surface of a part.
  std::shared_ptr<const ExactPart> exactPart(const BlobPlace& place);
  void forgetExactPart() { lastExact_ = {}; }

 private:
  template <typename Record>
  std::shared_ptr<const Record> load(const BlobPlace& place);

  std::ifstream stream_;
  BlobPlace records_;
  std::pair<std::uint64_t, std::shared_ptr<const ExactPart>> lastExact_;  // by its offset
};

// Answers for the chord heights that the snapshot holds, give or take some units of rounding.
class SnapshotMesher : public PartMesher {
 public:
  // `meshes`: of each surface.
  SnapshotMesher(std::shared_ptr<SnapshotFile> file, std::vector<std::vector<StoredMesh>> meshes)
      : file_(std::move(file)), meshes_(std::move(meshes)) {}
  std::shared_ptr<const SurfaceMesh> mesh(std::size_t surface, double chordHeight, std::string& failure) override;

 private:
  std::shared_ptr<SnapshotFile> file_;
  std::vector<std::vector<StoredMesh>> meshes_;
};

class SnapshotConverter : public PartConverter {
 public:
  SnapshotConverter(std::shared_ptr<SnapshotFile> file, std::optional<BlobPlace> place)
      : file_(std::move(file)), place_(place) {}
  std::shared_ptr<const ExactPart> convert() override { return place_ ? file_->exactPart(*place_) : nullptr; }
  void forget() override { file_->forgetExactPart(); }

 private:
  std::shared_ptr<SnapshotFile> file_;
  std::optional<BlobPlace> place_;
};

}  // namespace standin

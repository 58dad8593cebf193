#include "standin/snapshot/snapshot_file.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <new>

namespace standin {
namespace {

// Another compiler may round the last digits of a chord height otherwise.
constexpr double kSameChord = 1e-12;

void checkWeights(const std::vector<double>& weights, const std::vector<Point>& poles) {
  if (!weights.empty() && weights.size() != poles.size()) ArchiveReader::fail("weights and poles differ in number");
}

// Whoever reads weights takes one for each pole.
void check(const ExactPart& part) {
  const auto checkAll = [](const std::vector<ExactSurface>& surfaces) {
    for (const ExactSurface& surface : surfaces) checkWeights(surface.weights, surface.poles);
  };
  checkAll(part.solid);
  for (const std::vector<ExactSurface>& quilt : part.quilts) checkAll(quilt);
  for (const ExactEdge& edge : part.edges) {
    for (const ExactEdge::Side& side : edge.sides) checkWeights(side.curve.weights, side.curve.poles);
  }
}

void check(const SurfaceMesh& mesh) {
  for (const std::array<int, 3>& facet : mesh.facets) {
    for (const int corner : facet) {
      if (corner < 0 || static_cast<std::size_t>(corner) >= mesh.vertices.size()) {
        ArchiveReader::fail("a facet has a corner that is not there");
      }
    }
  }
}

std::string shortText(double value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 6).ptr;
  return {text.data(), end};
}

}  // namespace

SnapshotFile::SnapshotFile(const std::filesystem::path& file) : stream_(file, std::ios::binary) {
  if (!stream_) throw SnapshotError("the snapshot cannot be read");
  stream_.seekg(0, std::ios::end);
  const auto size = static_cast<std::uint64_t>(std::max<std::streamoff>(stream_.tellg(), 0));
  const auto textAt = [this](std::uint64_t offset, std::string_view wanted) {
    std::string text(wanted.size(), '\0');
    stream_.clear();
    stream_.seekg(static_cast<std::streamoff>(offset));
    return stream_.read(text.data(), static_cast<std::streamsize>(text.size())) && text == wanted;
  };
  if (size < kSnapshotMark.size() || !textAt(0, kSnapshotMark)) throw SnapshotError("the file is no snapshot");
  if (size < kSnapshotHeaderSize + kSnapshotFooterSize || !textAt(size - kSnapshotEnd.size(), kSnapshotEnd)) {
    throw SnapshotError("the snapshot is cut short");
  }
  std::uint64_t version = 0;
  ArchiveReader(stream_, {kSnapshotMark.size(), sizeof(version), 0})(version);
  if (version != kSnapshotVersion) {
    throw SnapshotError("the snapshot has version " + std::to_string(version) + ", this program reads version " +
                        std::to_string(kSnapshotVersion));
  }
  const std::uint64_t footer = size - kSnapshotFooterSize;
  ArchiveReader(stream_, {footer, kSnapshotFooterSize - kSnapshotEnd.size(), 0})(records_);
  if (records_.offset < kSnapshotHeaderSize || records_.offset > footer || records_.size != footer - records_.offset) {
    ArchiveReader::fail("the place of its records is wrong");
  }
}

void SnapshotFile::checkPlace(const BlobPlace& place) const {
  if (place.offset < kSnapshotHeaderSize || place.offset > records_.offset ||
      place.size > records_.offset - place.offset) {
    ArchiveReader::fail("geometry has a place outside of it");
  }
}

template <typename Record>
std::shared_ptr<const Record> SnapshotFile::load(const BlobPlace& place) {
  auto record = std::make_shared<Record>();
  ArchiveReader archive(stream_, place);
  archive(*record);
  archive.finish();
  check(*record);
  return record;
}

std::shared_ptr<const SurfaceMesh> SnapshotFile::mesh(const BlobPlace& place) { return load<SurfaceMesh>(place); }

std::shared_ptr<const ExactPart> SnapshotFile::exactPart(const BlobPlace& place) {
  if (!lastExact_.second || lastExact_.first != place.offset) {
    forgetExactPart();
    lastExact_ = {place.offset, load<ExactPart>(place)};
  }
  return lastExact_.second;
}

std::shared_ptr<const SurfaceMesh> SnapshotMesher::mesh(std::size_t surface, double chordHeight, std::string& failure) {
  failure.clear();
  if (surface >= meshes_.size()) {
    failure = "no such surface";
    return nullptr;
  }
  const std::vector<StoredMesh>& stored = meshes_[surface];
  const auto distance = [chordHeight](const StoredMesh& candidate) {
    return std::abs(candidate.chordHeight - chordHeight);
  };
  const auto nearest = std::min_element(
      stored.begin(), stored.end(),
      [&](const StoredMesh& first, const StoredMesh& second) { return distance(first) < distance(second); });
  if (nearest == stored.end() || !(distance(*nearest) <= kSameChord * std::abs(chordHeight))) {
    failure = "the snapshot holds no mesh for chord height " + shortText(chordHeight);
    return nullptr;
  }
  if (!nearest->mesh) {
    failure = nearest->failure;
    return nullptr;
  }
  try {
    return file_->mesh(*nearest->mesh);
  } catch (const SnapshotError& error) {
    failure = error.what();
  } catch (const std::bad_alloc&) {
    failure = "there is not enough memory for the mesh";
  }
  return nullptr;
}

}  // namespace standin

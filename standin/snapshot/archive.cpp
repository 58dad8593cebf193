#include "standin/snapshot/archive.h"

namespace standin {

std::uint64_t checksum(const char* bytes, std::size_t size, std::uint64_t before) {
  std::uint64_t hash = before;
  for (std::size_t i = 0; i < size; ++i) {
    hash = (hash ^ static_cast<unsigned char>(bytes[i])) * 0x100000001B3;
  }
  return hash;
}

ArchiveReader::ArchiveReader(std::istream& file, const BlobPlace& place)
    : file_(file), left_(place.size), wantedChecksum_(place.checksum) {
  file_.clear();
  file_.seekg(static_cast<std::streamoff>(place.offset));
}

void ArchiveReader::finish() const {
  if (left_ != 0) fail("a record is shorter than its place");
  if (checksum_ != wantedChecksum_) fail("its bytes are not those that were written");
}

void ArchiveReader::fail(const std::string& what) { throw SnapshotError("the snapshot is damaged: " + what); }

void ArchiveReader::bytes(char* target, std::uint64_t size) {
  if (size > left_) fail("a record is longer than its place");
  if (!file_.read(target, static_cast<std::streamsize>(size))) fail("it cannot be read to its end");
  left_ -= size;
  checksum_ = checksum(target, static_cast<std::size_t>(size), checksum_);
}

std::size_t ArchiveReader::count(std::uint64_t bytesEach) {
  std::uint32_t elements = 0;
  scalars(&elements, 1);
  if (elements > left_ / bytesEach) fail("a list is longer than its place");
  return elements;
}

}  // namespace standin

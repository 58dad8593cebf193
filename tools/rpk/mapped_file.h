// A file's bytes as one read-only range, mapped where the system can.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace rpk {

// Owns the mapping; views into bytes() live as long as the object that was opened or moved to. The file must not be
// shortened by another process meanwhile: touching a page that is gone ends the program.
class MappedFile {
 public:
  // Nothing when the file cannot be read; `error`, when given, then says why. An empty file gives an empty range.
  static std::optional<MappedFile> open(const std::string& path, std::string* error = nullptr);

  MappedFile(MappedFile&& other) noexcept;
  MappedFile& operator=(MappedFile&& other) noexcept;
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;
  ~MappedFile();

  std::string_view bytes() const { return {data_, size_}; }
  // Gives back the memory of a range within bytes() that is done with; reading it again brings it back.
  void drop(std::string_view range) const noexcept;

 private:
  MappedFile(const char* data, std::size_t size) : data_(data), size_(size) {}
  void release() noexcept;

  const char* data_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace rpk

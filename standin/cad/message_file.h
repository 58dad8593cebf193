// The host's message files: texts by key.
//
// A file is UTF-8 text in groups of four lines:
//   the key
//   the text
//   the text in the user's language, or "#" or nothing
//   "#" or nothing
// Between groups, empty lines and lines that begin with "!" are passed over. Keys are told apart by letter case; the
// first of two equal keys counts. A group that the end of the file cuts short counts as far as it goes.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>

namespace standin {

class MessageFile {
 public:
  // Reads the file again when it has changed; false when it cannot be read.
  bool refresh(const std::filesystem::path& path);
  // Null when there is no such key.
  const std::wstring* text(const std::string& key) const;

 private:
  void parse(const std::string& content);

  std::unordered_map<std::string, std::wstring> texts_;
  std::filesystem::file_time_type written_;
  std::uintmax_t size_ = 0;
  bool read_ = false;
};

// Puts the arguments into a message text. "%0s", "%1w", "%2d" and "%3f" stand for the arguments 0 to 9 as narrow text
// (UTF-8), wide text, a whole number and a number; "%%" is a per cent sign. A message class at the front ("%CI") is
// left out. Anything else stands for itself.
std::wstring formatMessage(const std::wstring& text, std::va_list arguments);

}  // namespace standin

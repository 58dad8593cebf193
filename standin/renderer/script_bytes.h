// A script as it came, held until nothing refers to it.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "standin/renderer/nameless_file.h"

namespace standin {

struct ScriptBytes {
  std::shared_ptr<const void> owner;
  std::string_view bytes;  // live as long as the owner

  static ScriptBytes ofText(std::string text);
};

// Gathers a script in a file without a name, so that the memory of long ones can be given back by the system and
// nothing is left behind however the process ends.
class ScriptSpool {
 public:
  // False when the disk has no room, or there is no place for the file.
  bool append(std::string_view bytes);
  std::size_t size() const { return size_; }
  // What was gathered; the spool is empty then. No owner when it cannot be had.
  ScriptBytes take();

 private:
  Descriptor file_;  // made by the first bytes
  std::size_t size_ = 0;
};

}  // namespace standin

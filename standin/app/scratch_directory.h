// A fresh folder of our own that is the working directory while the object lives.
#pragma once

#include <filesystem>

#include "tools/terminal/signal_cleanup.h"

namespace standin {

class ScratchDirectory {
 public:
  // Makes the folder where temporary files belong and enters it. Throws Failure when that cannot be done.
  ScratchDirectory();
  // Goes back and removes the folder with everything in it.
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }
  // The working directory of before, which the user's relative paths mean.
  const std::filesystem::path& origin() const { return origin_; }

 private:
  std::filesystem::path origin_;
  std::filesystem::path path_;
  // The plug-in writes nothing but its settings file into the working directory.
  terminal::RemovedOnSignal removedFolder_;
  terminal::RemovedOnSignal removedSettings_;
};

}  // namespace standin

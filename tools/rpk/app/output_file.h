// A file that a command writes: there whole or not at all.
#pragma once

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "tools/terminal/signal_cleanup.h"

namespace rpk {

// Writes beside the place and moves the file there at the end, so that a failure, or a signal, leaves what was there
// before. A device or pipe is written to as it is.
class OutputFile {
 public:
  // Throws Failure(kOutput) when nothing can be written there.
  explicit OutputFile(const std::string& path);
  // Without finish() nothing stays behind.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  std::fstream& stream() { return stream_; }
  // Throws Failure(kOutput) when not everything could be written.
  void finish();
  // Throws Failure(kOutput) with the system's reason, as far as `error` (of errno) tells one.
  [[noreturn]] void fail(int error) const;

 private:
  std::string path_;                 // as the user said it
  std::filesystem::path place_;      // with links followed
  std::filesystem::path temporary_;  // empty when written in place
  std::optional<terminal::RemovedOnSignal> removed_;
  std::fstream stream_;
};

// A file for reading and writing beside another that is gone when this goes.
class ScratchFile {
 public:
  // Throws Failure(kOutput).
  explicit ScratchFile(const std::string& beside);
  ~ScratchFile();
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  std::fstream& stream() { return stream_; }

 private:
  std::filesystem::path path_;
  std::optional<terminal::RemovedOnSignal> removed_;
  std::fstream stream_;
};

}  // namespace rpk

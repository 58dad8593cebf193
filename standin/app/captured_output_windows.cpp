#include <fcntl.h>
#include <io.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <random>

#include "standin/app/captured_output.h"

namespace standin {
namespace {

constexpr int kOutput = 1;  // the descriptor of standard output

void flushAll() {
  std::cout.flush();
  std::fflush(stdout);
}

// An unnamed file, as far as others can tell: it goes when it is closed.
int openBuffer() {
  std::error_code error;
  const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  const std::string name = "creo-standin-output-" + std::to_string(std::random_device{}());
  return _wopen((folder / name).c_str(), _O_CREAT | _O_EXCL | _O_RDWR | _O_BINARY | _O_TEMPORARY | _O_NOINHERIT, 0600);
}

std::string readAll(int file) {
  std::string text;
  std::array<char, 4096> block{};
  _lseek(file, 0, SEEK_SET);
  for (int count = 0; (count = _read(file, block.data(), static_cast<unsigned>(block.size()))) > 0;) {
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace

CapturedOutput::CapturedOutput() : buffer_(openBuffer()) {
  flushAll();
  if (buffer_ < 0) return;
  original_ = _dup(kOutput);
  if (original_ >= 0) _dup2(buffer_, kOutput);
}

CapturedOutput::~CapturedOutput() { end(); }

std::string CapturedOutput::end() {
  std::string text;
  if (original_ >= 0) {
    flushAll();
    _dup2(original_, kOutput);
    _close(original_);
    text = readAll(buffer_);
  }
  if (buffer_ >= 0) _close(buffer_);
  original_ = buffer_ = -1;
  return text;
}

}  // namespace standin

#include "standin/app/captured_output.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <iostream>

#include "standin/app/system.h"

namespace standin {
namespace {

void flushAll() {
  std::cout.flush();
  std::fflush(stdout);
}

std::string readAll(int file) {
  std::string text;
  std::array<char, 4096> block{};
  lseek(file, 0, SEEK_SET);
  for (ssize_t count = 0; (count = read(file, block.data(), block.size())) > 0;) {
    text.append(block.data(), static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace

CapturedOutput::CapturedOutput() : buffer_(makeNamelessBuffer()) {
  flushAll();
  if (buffer_ < 0) return;
  original_ = duplicate(STDOUT_FILENO);
  if (original_ >= 0) dup2(buffer_, STDOUT_FILENO);
}

CapturedOutput::~CapturedOutput() { end(); }

std::string CapturedOutput::end() {
  std::string text;
  if (original_ >= 0) {
    flushAll();
    dup2(original_, STDOUT_FILENO);
    close(original_);
    text = readAll(buffer_);
  }
  if (buffer_ >= 0) close(buffer_);
  original_ = buffer_ = -1;
  return text;
}

}  // namespace standin

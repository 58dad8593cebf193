// Random bytes, led by what they reach, through the reader of frame files; the C library is the judge.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "settings/animation.h"
#include "settings/frame_file.h"
#include "tests/settings/scanned_frames.h"

namespace {

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

template <typename Reader>
rendara::AnimationFrames framesOf(const std::uint8_t* data, std::size_t size, Reader read) {
  rendara::AnimationFrames frames;
  const std::unique_ptr<std::FILE, Close> file(::fmemopen(const_cast<std::uint8_t*>(data), size, "rb"));
  if (file == nullptr) {
    std::abort();
  }
  read(file.get(), frames);
  return frames;
}

// Memory follows from the records in the file, never from a number in it.
bool memoryIsExplained(const rendara::AnimationFrames& frames, std::size_t size) {
  constexpr std::size_t kShortestRecord = 32;  // "Part:1(1" and twelve digits, a blank before each
  std::size_t room = 0;
  for (const auto& entry : frames.animationFrames) {
    room += entry.second.capacity();
  }
  return room <= 4 * (size / kShortestRecord + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  const rendara::AnimationFrames frames = framesOf(data, size, rendara::readFrameFile);
  const rendara::AnimationFrames scanned = framesOf(data, size, rendara::testing::scanFrames);
  if (!rendara::testing::sameFrames(frames, scanned) || !memoryIsExplained(frames, size)) {
    std::abort();
  }
  return 0;
}

#include "settings/frame_file.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "settings/animation.h"
#include "settings/frame_text.h"

namespace rendara {
namespace {

constexpr int kMaxFrameCount = 1'000'000;

// The placements of a component, in the order of its records. As long as all are the same, bit for bit, one stands for
// them: most components of a mechanism never move.
struct Track {
  std::vector<Matrix> frames;
  std::size_t repeats = 0;  // of the only frame
  // The component whose record came after this one's the last time; it mostly does again.
  std::pair<const std::vector<int>, Track>* following = nullptr;
};

bool sameBits(const Matrix& first, const Matrix& second) {
  using Bits = std::array<std::uint64_t, 16>;
  return std::bit_cast<Bits>(first) == std::bit_cast<Bits>(second);
}

// Room grows by the half of what is wanted only where the announced count does not tell better; never to more than four
// times what the file has really held, so that a wrong count costs nothing.
void makeRoom(std::vector<Matrix>& frames, std::size_t wanted, std::size_t announced) {
  if (wanted <= frames.capacity()) {
    return;
  }
  std::size_t room = wanted * 4;
  if (wanted > announced) {
    room = wanted + wanted / 2;
  } else {
    room = std::min(room, announced);
  }
  frames.reserve(room);
}

void spellOut(Track& track, std::size_t further, std::size_t announced) {
  makeRoom(track.frames, track.frames.size() + track.repeats + further, announced);
  track.frames.resize(track.frames.size() + track.repeats, track.frames.front());
  track.repeats = 0;
}

// By comparing numbers: zeros are equal whatever their signs, what is not a number equals nothing.
bool moves(const Track& track) {
  const Matrix& first = track.frames.front();
  const bool numbers = std::none_of(first.begin(), first.end(), [](double number) { return std::isnan(number); });
  return (track.repeats > 0 && !numbers) ||
         std::any_of(track.frames.begin() + 1, track.frames.end(), [&](const Matrix& frame) { return frame != first; });
}

class FrameReader {
 public:
  FrameReader(std::FILE* file, AnimationFrames& frames) : text_(file), frames_(frames) {}

  void read() {
    if (readHeader()) {
      while (text_.skipPast("Part:") && readRecord()) {
      }
    }
    takeMoving();
  }

 private:
  bool readHeader() {
    int ignored = 0;
    int count = 0;
    if (!text_.skipPast("parts:") || !text_.readInt(ignored) || !text_.skipPast("frames:") || !text_.readInt(count)) {
      return false;
    }
    frames_.animationFrameCount = std::clamp(count, 0, kMaxFrameCount);
    return text_.skipPast("MaFrame") && text_.readInt(ignored);
  }

  bool readRecord() {
    int count = 0;
    if (!text_.readInt(count) || !readPath(count)) {
      return false;
    }
    std::array<float, 12> numbers;
    if (!text_.readFloats(numbers)) {
      return false;
    }
    Matrix matrix = kIdentityMatrix;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      matrix[i / 3 * 4 + i % 3] = static_cast<double>(numbers[i]);
    }
    if (count >= 1 && count <= PRO_MAX_ASSEM_LEVEL) {
      add(matrix);
    }
    return true;
  }

  // "(7)", "(5 7)" and so on. Unless there is one identifier there are at least two, whatever the count says.
  bool readPath(int count) {
    if (!text_.skipOpening()) {
      return false;
    }
    path_.clear();
    const int identifiers = count == 1 ? 1 : std::max(count, 2);
    for (int i = 0; i < identifiers; ++i) {
      int identifier = 0;
      if (!text_.readInt(identifier)) {
        return false;
      }
      if (i < PRO_MAX_ASSEM_LEVEL) {
        path_.push_back(identifier);
      }
    }
    text_.skipClosing();
    return true;
  }

  void add(const Matrix& matrix) {
    Track& track = trackOfPath();
    if (track.frames.size() == 1 && sameBits(track.frames.front(), matrix)) {
      ++track.repeats;
      return;
    }
    const auto announced = static_cast<std::size_t>(frames_.animationFrameCount);
    if (track.repeats > 0) {
      spellOut(track, 1, announced);
    } else if (!track.frames.empty()) {
      makeRoom(track.frames, track.frames.size() + 1, announced);
    }
    track.frames.push_back(matrix);
  }

  Track& trackOfPath() {
    auto* entry = last_ != nullptr ? last_->second.following : nullptr;
    if (entry == nullptr || entry->first != path_) {
      entry = &*tracks_.try_emplace(path_).first;
      if (last_ != nullptr) {
        last_->second.following = entry;
      }
    }
    last_ = entry;
    return entry->second;
  }

  void takeMoving() {
    while (!tracks_.empty()) {
      auto node = tracks_.extract(tracks_.begin());
      Track& track = node.mapped();
      if (moves(track)) {
        spellOut(track, 0, 0);
        frames_.animationFrames.emplace_hint(frames_.animationFrames.end(), std::move(node.key()),
                                             std::move(track.frames));
      }
    }
  }

  FrameText text_;
  AnimationFrames& frames_;
  std::map<std::vector<int>, Track> tracks_;
  std::pair<const std::vector<int>, Track>* last_ = nullptr;
  std::vector<int> path_;  // of the record that is read
};

}  // namespace

void readFrameFile(std::FILE* file, AnimationFrames& frames) {
  frames.clear();
  std::rewind(file);
  FrameReader(file, frames).read();
}

}  // namespace rendara

#include "settings/frame_file.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "settings/animation.h"
#include "settings/frame_text.h"

namespace rendara {
namespace {

constexpr int kMaxFrameCount = 1'000'000;
constexpr std::size_t kLongestRecord = 512;  // whose text is kept
constexpr std::string_view kSpace = " \t\n\v\f\r";

struct Track;
using Component = std::pair<const std::vector<int>, Track>;

// The placements of a component, in the order of its records. As long as all are the same, bit for bit, one stands for
// them: most components of a mechanism never move.
struct Track {
  std::vector<FramePlacement> frames;
  std::size_t repeats = 0;  // of the only frame
  // The text of its records until the end of the path, and of the only frame's numbers; empty when not known. Where the
  // same text stands again there is nothing to read from it.
  std::string head;
  std::string numbers;
  // The component whose record came after this one's the last time; it mostly does again.
  Component* following = nullptr;
};

std::string_view withoutSpaceBehind(std::string_view text) { return text.substr(0, text.find_last_not_of(kSpace) + 1); }

bool sameBits(const FramePlacement& first, const FramePlacement& second) {
  using Bits = std::array<std::uint32_t, 12>;
  return std::bit_cast<Bits>(first) == std::bit_cast<Bits>(second);
}

// Room grows by the half of what is wanted only where the announced count does not tell better; never to more than
// eight times what the file has really held, so that a wrong count costs nothing. Towards the announced count it grows
// by eighths of it, so that little is copied.
void makeRoom(std::vector<FramePlacement>& frames, std::size_t wanted, std::size_t announced) {
  if (wanted <= frames.capacity()) {
    return;
  }
  std::size_t room = wanted > announced ? wanted + wanted / 2 : announced;
  while (room > wanted * 8) {
    room /= 8;
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
  const FramePlacement& first = track.frames.front();
  const bool numbers =
      std::none_of(first.numbers.begin(), first.numbers.end(), [](float number) { return std::isnan(number); });
  return (track.repeats > 0 && !numbers) || std::any_of(track.frames.begin() + 1, track.frames.end(),
                                                        [&](const FramePlacement& frame) { return frame != first; });
}

class FrameReader {
 public:
  FrameReader(std::FILE* file, AnimationFrames& frames) : text_(file), frames_(frames) {}

  void read() {
    if (readHeader()) {
      while (readRecord()) {
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

  bool readRecord() { return skipExpectedHead() ? readFrame(last_->second) : readWholeRecord(); }

  bool readWholeRecord() {
    int count = 0;
    if (!text_.skipPast("Part:") || !text_.readInt(count) || !readPath(count)) {
      return false;
    }
    const std::size_t head = text_.sinceToken().size();
    FramePlacement placement{};
    if (!text_.readFloats(placement.numbers)) {
      return false;
    }
    if (count >= 1 && count <= PRO_MAX_ASSEM_LEVEL) {
      Track& track = trackOfPath();
      const bool first = track.frames.empty();
      add(track, placement);
      if (!first && track.head.empty()) {
        keepText(track, head);
      }
    }
    return true;
  }

  bool readFrame(Track& track) {
    if (track.frames.size() == 1) {
      return readSecondFrame(track);
    }
    // Read where it stays.
    makeRoom(track.frames, track.frames.size() + 1, announced());
    if (!text_.readFloats(track.frames.emplace_back().numbers)) {
      track.frames.pop_back();
      return false;
    }
    return true;
  }

  // It may be the first one again.
  bool readSecondFrame(Track& track) {
    if (text_.skipText(track.numbers)) {
      ++track.repeats;
      return true;
    }
    FramePlacement placement{};
    if (!text_.readFloats(placement.numbers)) {
      return false;
    }
    add(track, placement);
    return true;
  }

  bool skipExpectedHead() {
    Component* const expected = last_ != nullptr ? last_->second.following : nullptr;
    if (expected == nullptr || expected->second.head.empty() || !text_.skipText(expected->second.head)) {
      return false;
    }
    last_ = expected;
    return true;
  }

  void keepText(Track& track, std::size_t head) const {
    const std::string_view record = withoutSpaceBehind(text_.sinceToken());
    if (record.empty() || record.size() > kLongestRecord) {
      return;
    }
    track.head = record.substr(0, head);
    if (track.frames.size() == 1) {
      track.numbers = record.substr(record.find_first_not_of(kSpace, head));
    }
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

  std::size_t announced() const { return static_cast<std::size_t>(frames_.animationFrameCount); }

  void add(Track& track, const FramePlacement& placement) {
    if (track.frames.size() == 1 && sameBits(track.frames.front(), placement)) {
      ++track.repeats;
      return;
    }
    if (track.repeats > 0) {
      spellOut(track, 1, announced());
    } else if (!track.frames.empty()) {
      makeRoom(track.frames, track.frames.size() + 1, announced());
    }
    track.frames.push_back(placement);
  }

  Track& trackOfPath() {
    Component* component = last_ != nullptr ? last_->second.following : nullptr;
    if (component == nullptr || component->first != path_) {
      component = &*tracks_.try_emplace(path_).first;
      if (last_ != nullptr) {
        last_->second.following = component;
      }
    }
    last_ = component;
    return component->second;
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
  Component* last_ = nullptr;
  std::vector<int> path_;  // of the record that is read
};

}  // namespace

void readFrameFile(std::FILE* file, AnimationFrames& frames) {
  frames.clear();
  std::rewind(file);
  FrameReader(file, frames).read();
}

}  // namespace rendara

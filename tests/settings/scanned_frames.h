// Frame files read with `fscanf`, number by number: slow, and the judge of the reader that is used.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <vector>

#include "settings/animation.h"

namespace rendara::testing {

inline bool scanPast(std::FILE* file, const char* word) {
  char token[256] = "";
  while (std::fscanf(file, "%255s", token) == 1) {
    if (std::strcmp(token, word) == 0) return true;
  }
  return false;
}

inline int bounded(long long value) {
  return static_cast<int>(
      std::clamp<long long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

inline bool scanInt(std::FILE* file, int& value) {
  long long wide = 0;
  if (std::fscanf(file, "%lld", &wide) != 1) return false;
  value = bounded(wide);
  return true;
}

inline bool scanPath(std::FILE* file, int count, std::vector<int>& path) {
  path.clear();
  long long first = 0;
  long long second = 0;
  if (count == 1) {
    if (std::fscanf(file, " (%lld)", &first) != 1) return false;
    path = {bounded(first)};
    return true;
  }
  if (count == 2) {
    if (std::fscanf(file, " (%lld %lld)", &first, &second) != 2) return false;
    path = {bounded(first), bounded(second)};
    return true;
  }
  if (std::fscanf(file, " (%lld", &first) != 1) return false;
  path.push_back(bounded(first));
  for (int i = 2; i < count; ++i) {
    if (std::fscanf(file, "%lld", &first) != 1) return false;
    path.push_back(bounded(first));
  }
  if (std::fscanf(file, "%lld)", &first) != 1) return false;
  path.push_back(bounded(first));
  return true;
}

inline bool scanRecord(std::FILE* file, AnimationFrames& frames) {
  int count = 0;
  std::vector<int> path;
  if (!scanInt(file, count) || !scanPath(file, count, path)) return false;
  FramePlacement placement{};
  for (float& number : placement.numbers) {
    if (std::fscanf(file, "%f", &number) != 1) return false;
  }
  if (count >= 1 && count <= 25) frames.animationFrames[path].push_back(placement);
  return true;
}

inline void scanFrames(std::FILE* file, AnimationFrames& frames) {
  frames.clear();
  int number = 0;
  if (!scanPast(file, "parts:") || !scanInt(file, number)) return;
  if (!scanPast(file, "frames:") || !scanInt(file, number)) return;
  frames.animationFrameCount = std::clamp(number, 0, 1'000'000);
  if (!scanPast(file, "MaFrame") || !scanInt(file, number)) return;
  while (scanPast(file, "Part:") && scanRecord(file, frames)) {
  }
  std::erase_if(frames.animationFrames, [](const auto& entry) {
    const auto& all = entry.second;
    return std::all_of(all.begin() + 1, all.end(), [&](const FramePlacement& frame) { return frame == all.front(); });
  });
}

// The same components with the same numbers; not-a-numbers are alike, zeros differ by their signs.
inline bool sameFrames(const AnimationFrames& first, const AnimationFrames& second) {
  const auto sameNumber = [](float a, float b) {
    return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
  };
  const auto samePlacement = [&](const FramePlacement& a, const FramePlacement& b) {
    return std::equal(a.numbers.begin(), a.numbers.end(), b.numbers.begin(), sameNumber);
  };
  return first.animationFrameCount == second.animationFrameCount &&
         std::equal(first.animationFrames.begin(), first.animationFrames.end(), second.animationFrames.begin(),
                    second.animationFrames.end(), [&](const auto& a, const auto& b) {
                      return a.first == b.first && std::equal(a.second.begin(), a.second.end(), b.second.begin(),
                                                              b.second.end(), samePlacement);
                    });
}

}  // namespace rendara::testing

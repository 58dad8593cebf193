// What the live-link library of the tests answers, and what it was asked.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace rendara::testing {

struct LiveLinkScript {
  bool starts = true;  // the entry gives an interface
  bool hasScene = true;
  bool hasInstances = true;
  // The list at the n-th question, from 0; none for a null text.
  std::function<std::optional<std::string>(std::size_t)> list = [](std::size_t) { return std::string(); };
  std::function<bool(int port, int mode)> accepts = [](int, int) { return true; };

  std::size_t questions = 0;
  std::vector<std::string> calls;  // without those of the list
};

// Exported by the library: the script from now on, which outlives its use.
inline constexpr char kSetLiveLinkScript[] = "setLiveLinkScript";
using SetLiveLinkScript = void (*)(LiveLinkScript*);

}  // namespace rendara::testing

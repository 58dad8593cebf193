#pragma once

#include <utility>

namespace rendara {

// Runs what is left when the current scope ends, on every path.
template <typename Action>
class AtEnd {
 public:
  explicit AtEnd(Action action) : action_(std::move(action)) {}
  ~AtEnd() { action_(); }
  AtEnd(const AtEnd&) = delete;
  AtEnd& operator=(const AtEnd&) = delete;

 private:
  Action action_;
};

}  // namespace rendara

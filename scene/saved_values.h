// A stack that survives unbalanced use.
#pragma once

#include <cstddef>
#include <vector>

namespace rendara {

// Popping when nothing is saved gives the bottom entry: the value that was stored there last or, before any push,
// the initial one.
template <typename Value>
class SavedValues {
 public:
  explicit SavedValues(Value initial = Value()) : entries_(kInitialCapacity, Entry{initial}) {}

  void push(Value value) {
    if (count_ == entries_.size()) entries_.resize(entries_.size() * 2 + kInitialCapacity);
    entries_[count_++].value = value;
  }
  Value pop() {
    drop();
    return entries_[count_].value;
  }
  void drop() {
    if (count_ > 0) --count_;
  }

 private:
  static constexpr std::size_t kInitialCapacity = 32;
  // Keeps a vector of booleans from becoming a bit set.
  struct Entry {
    Value value = Value();
  };

  std::vector<Entry> entries_;
  std::size_t count_ = 0;
};

}  // namespace rendara

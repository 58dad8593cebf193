// What stands for the time that Sleep waits.
#pragma once

#include <functional>
#include <utility>

namespace standin {

// From now on Sleep calls this with its milliseconds instead of waiting; an empty function waits again. The function
// of before is returned. It may throw nothing that its test needs to see.
std::function<void(unsigned)> setSleep(std::function<void(unsigned)> sleep);

// The same while this lives.
class SleepReplaced {
 public:
  explicit SleepReplaced(std::function<void(unsigned)> sleep) : before_(setSleep(std::move(sleep))) {}
  ~SleepReplaced() { setSleep(std::move(before_)); }
  SleepReplaced(const SleepReplaced&) = delete;
  SleepReplaced& operator=(const SleepReplaced&) = delete;

 private:
  std::function<void(unsigned)> before_;
};

}  // namespace standin

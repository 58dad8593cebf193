// One thread that does jobs in the order in which they are posted.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace standin {

class Worker {
 public:
  // With so many jobs waiting, posting waits too.
  explicit Worker(std::size_t maxWaiting);
  // Finishes the job in hand and drops those that wait.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // The job does not throw. To be called from other threads than the worker's.
  void post(std::function<void()> job);
  // From now on jobs are dropped, so that nobody waits for room any more.
  void stop();
  bool busy() const;

 private:
  void run();

  std::size_t maxWaiting_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> waiting_;
  bool working_ = false;
  bool stopped_ = false;
  std::thread thread_;  // the last: runs on the members above
};

}  // namespace standin

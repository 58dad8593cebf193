#include "standin/renderer/worker.h"

#include <utility>

namespace standin {

Worker::Worker(std::size_t maxWaiting) : maxWaiting_(maxWaiting), thread_([this] { run(); }) {}

Worker::~Worker() {
  stop();
  thread_.join();
}

void Worker::post(std::function<void()> job) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return stopped_ || waiting_.size() < maxWaiting_; });
  if (stopped_) return;
  waiting_.push_back(std::move(job));
  changed_.notify_all();
}

void Worker::stop() {
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  waiting_.clear();
  changed_.notify_all();
}

bool Worker::busy() const {
  const std::lock_guard lock(mutex_);
  return working_ || !waiting_.empty();
}

void Worker::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return stopped_ || !waiting_.empty(); });
    if (stopped_) return;
    std::function<void()> job = std::move(waiting_.front());
    waiting_.pop_front();
    working_ = true;
    changed_.notify_all();
    lock.unlock();
    job();
    job = nullptr;
    lock.lock();
    working_ = false;
  }
}

}  // namespace standin

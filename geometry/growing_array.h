// A growable array for mesh data in a process that is short of address space: it grows by steps of bounded size, so
// that its capacity never exceeds its content by more than one step, and by reallocation, which for large blocks
// moves pages instead of copying them where the system can.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>
#include <type_traits>

namespace rendara {

template <typename T>
class GrowingArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  GrowingArray() = default;
  GrowingArray(const GrowingArray&) = delete;
  GrowingArray& operator=(const GrowingArray&) = delete;
  ~GrowingArray() { std::free(data_); }

  const T* data() const { return data_; }
  std::size_t size() const { return size_; }
  std::size_t capacity() const { return capacity_; }
  bool empty() const { return size_ == 0; }
  // Empties the array and keeps its capacity.
  void clear() { size_ = 0; }

  // Makes room for `count` more elements and gives the place where they are written; all of them must be. Throws
  // std::length_error or std::bad_alloc and leaves the array as it was.
  T* extend(std::size_t count) {
    if (count > capacity_ - size_) {
      grow(count);
    }
    T* place = data_ + size_;
    size_ += count;
    return place;
  }

 private:
  static constexpr std::size_t kSmallestStep = 4096 / sizeof(T);
  static constexpr std::size_t kLargestStep = (std::size_t{1} << 20) / sizeof(T);
  static constexpr std::size_t kMost = static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / sizeof(T);

  void grow(std::size_t count) {
    if (count > kMost - size_) {
      throw std::length_error("vector<T> too long");
    }
    const std::size_t step = std::clamp(capacity_, kSmallestStep, kLargestStep);
    const std::size_t wanted = std::max(size_ + count, std::min(capacity_ + step, kMost));
    void* grown = std::realloc(data_, wanted * sizeof(T));
    if (grown == nullptr) {
      throw std::bad_alloc();
    }
    data_ = static_cast<T*>(grown);
    capacity_ = wanted;
  }

  T* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace rendara

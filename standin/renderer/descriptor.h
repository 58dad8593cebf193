// An open file descriptor with one owner; on Windows one of the C run-time.
#pragma once

#include <string_view>
#include <utility>

namespace standin {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}  // takes it over; -1 for none
  Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { reset(); }

  int get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }
  void reset();
  // The number, which is the caller's from now on.
  int release() { return std::exchange(number_, -1); }
  // Writes everything; false, with the reason in errno, when not all of it could be written.
  bool writeAll(std::string_view bytes) const;

 private:
  int number_ = -1;
};

}  // namespace standin

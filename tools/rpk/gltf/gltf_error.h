#pragma once

#include <stdexcept>

namespace rpk {

// The scene cannot be written as binary glTF: too large, or a stream failed.
class GltfError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace rpk

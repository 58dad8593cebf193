// How a model file comes into the session.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "standin/cad/session.h"

namespace standin {

struct LoadResult {
  Model* model = nullptr;  // the top model; null when the file could not be opened
  std::string error;       // what is wrong with the file, in one line, without its name
  // Of the system that the file was saved on; files that do not say leave it to the system.
  std::optional<unsigned> codePage = std::nullopt;
  bool overlaid = false;  // the file holds what an overlay says, so one that lies beside it was applied before
};

// The share of the work done so far, 0 to 1; false asks to stop.
using LoadProgress = std::function<bool(double)>;

using ModelReader = std::function<LoadResult(Session&, const std::filesystem::path&, const LoadProgress&)>;

}  // namespace standin

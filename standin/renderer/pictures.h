// Pictures of the merged scene, when the libraries are there that draw them.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

#include "standin/renderer/merged_scene.h"

namespace standin {

// The model at rest, seen from above its front corner by the up axis of the last script. Pictures are scene-0001.png
// and so on, the first number that is free, and latest.png; each appears when it is complete.
class Pictures {
 public:
  // Breaks off the picture in hand.
  virtual ~Pictures() = default;

  // Draws the scene as it is now, and holds its scripts for so long. Waits when several pictures wait already.
  virtual void add(const MergedScene& scene) = 0;
  // Breaks off; what is added from now on is dropped.
  virtual void stop() = 0;
  virtual bool busy() const = 0;
  virtual std::size_t written() const = 0;
  // Why the last picture that failed did; empty when none has.
  virtual std::string lastFailure() const = 0;
};

bool canDrawPictures();

// Makes the folder. Throws std::filesystem::filesystem_error; null where none can be drawn.
std::unique_ptr<Pictures> makePictures(const std::filesystem::path& folder);

}  // namespace standin

// Pictures of the merged scene, drawn one after the other on a thread of their own.
#pragma once

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "standin/renderer/merged_scene.h"
#include "standin/renderer/worker.h"
#include "tools/rpk/drawing.h"
#include "tools/rpk/scene_summary.h"

namespace standin {

// The model at rest, seen from above its front corner by the up axis of the last script. Pictures are scene-0001.png
// and so on, the first number that is free, and latest.png; each appears when it is complete.
class PictureWriter {
 public:
  // Makes the folder. Throws std::filesystem::filesystem_error.
  explicit PictureWriter(const std::filesystem::path& folder);
  // Breaks off the picture in hand.
  ~PictureWriter();

  // Draws the scene as it is now, and holds its scripts for so long. Waits when several pictures wait already.
  void add(const MergedScene& scene);
  // Breaks off; what is added from now on is dropped.
  void stop();
  bool busy() const { return worker_.busy(); }
  std::size_t written() const { return written_; }
  // Why the last picture that failed did; empty when none has.
  std::string lastFailure() const;

 private:
  struct Shot {
    std::vector<rpk::PlacedGroup> placed;
    std::vector<std::shared_ptr<const MergedScene::Script>> scripts;
    int upAxis = 1;
  };

  void draw(const Shot& shot);
  void write(const std::string& png);

  std::filesystem::path folder_;
  std::size_t number_ = 1;  // none below is free
  std::atomic<std::size_t> written_ = 0;
  std::atomic<bool> stopped_ = false;
  mutable std::mutex failureMutex_;
  std::string failure_;
  Worker worker_;  // the last: its thread uses what stands before
};

}  // namespace standin

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
#include "standin/renderer/pictures.h"
#include "standin/renderer/worker.h"
#include "tools/rpk/drawing.h"
#include "tools/rpk/scene_summary.h"

namespace standin {

class PictureWriter final : public Pictures {
 public:
  // Makes the folder. Throws std::filesystem::filesystem_error.
  explicit PictureWriter(const std::filesystem::path& folder);
  ~PictureWriter() override;

  void add(const MergedScene& scene) override;
  void stop() override;
  bool busy() const override { return worker_.busy(); }
  std::size_t written() const override { return written_; }
  std::string lastFailure() const override;

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

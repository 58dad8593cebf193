#include "tools/rpk/picture/draw_picture.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "tools/rpk/picture/picture_tile.h"

namespace rpk {
namespace {

// Hands the tiles of a picture out to the threads that ask.
class Tiles {
 public:
  Tiles(const PictureView& view, Image& image) : view_(view), image_(image) {
    columns_ = (view.width + TileDrawer::kSide - 1) / TileDrawer::kSide;
    count_ = columns_ * ((view.height + TileDrawer::kSide - 1) / TileDrawer::kSide);
  }

  std::uint32_t count() const { return count_; }
  double share() const { return static_cast<double>(done_.load()) / count_; }
  void stop() { stopped_ = true; }
  bool stopped() const { return stopped_; }

  // Draws until there are no more tiles; `after` is called after each and tells whether to go on.
  void work(const std::function<bool()>& after) {
    TileDrawer drawer(view_);
    while (!stopped_) {
      const std::uint32_t tile = next_.fetch_add(1);
      if (tile >= count_) return;
      drawer.draw(tile % columns_, tile / columns_, image_);
      ++done_;
      if (after && !after()) stop();
    }
  }

 private:
  const PictureView& view_;
  Image& image_;
  std::uint32_t columns_ = 0;
  std::uint32_t count_ = 0;
  std::atomic<std::uint32_t> next_ = 0;
  std::atomic<std::uint32_t> done_ = 0;
  std::atomic<bool> stopped_ = false;
};

// The calling thread works as well. What one of them throws ends the work of all and is thrown on.
void drawTiles(Tiles& tiles, unsigned threads, const PictureProgress& progress) {
  std::exception_ptr failure;
  std::mutex failing;
  const auto guarded = [&](const std::function<bool()>& after) {
    try {
      tiles.work(after);
    } catch (...) {
      tiles.stop();
      const std::lock_guard lock(failing);
      failure = std::current_exception();
    }
  };
  {
    std::vector<std::jthread> helpers;
    try {
      for (unsigned i = 1; i < threads; ++i) helpers.emplace_back([&] { guarded({}); });
    } catch (const std::system_error&) {
      // Fewer threads do as well.
    }
    guarded(progress ? std::function<bool()>([&] { return progress(tiles.share()); }) : nullptr);
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace

Image drawPicture(const PictureScene& scene, const PictureCamera& camera, const PictureOptions& options,
                  const PictureProgress& progress) {
  if (options.width == 0 || options.height == 0 || options.width > kMaxPictureSide ||
      options.height > kMaxPictureSide || std::uint64_t{options.width} * options.height > kMaxPicturePixels) {
    return {};
  }
  Image image{options.width, options.height, {}};
  image.pixels.resize(std::size_t{options.width} * options.height * 4);
  const PictureView view(scene, camera, options);
  Tiles tiles(view, image);
  const unsigned wanted = options.threads != 0 ? options.threads : std::max(1U, std::thread::hardware_concurrency());
  drawTiles(tiles, std::min(wanted, tiles.count()), progress);
  return tiles.stopped() ? Image{} : std::move(image);
}

}  // namespace rpk

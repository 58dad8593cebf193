// Draws pictures on a thread of its own: a coarse one at once, then the full one.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "tools/rpk/picture/draw_picture.h"

namespace standin {

// Which instance of the model each pixel shows.
struct InstanceMap {
  static constexpr std::int32_t kNone = -1;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::int32_t> instances;  // width × height, rows from the top
};

struct PaintedPicture {
  rpk::Image image;
  InstanceMap map;  // mostly smaller than the image
  rpk::PictureCamera camera;
  std::uint64_t model = 0;  // the number of the model that is shown
  std::uint64_t wish = 0;   // the number of the wish
  bool full = false;
};

struct PictureWish {
  std::uint64_t number = 0;
  rpk::PictureCamera camera;
  bool fit = false;         // the camera's direction alone counts; it is to show everything
  bool coarseOnly = false;  // for a picture that will be out of date soon
  std::uint32_t width = 0;  // in pixels
  std::uint32_t height = 0;
};

class PicturePainter {
 public:
  // Called on the painter's thread, for each picture; must not wait for the painter.
  using Deliver = std::function<void(std::shared_ptr<const PaintedPicture>)>;

  explicit PicturePainter(Deliver deliver);
  // Ends soon, in the middle of a picture.
  ~PicturePainter();
  PicturePainter(const PicturePainter&) = delete;
  PicturePainter& operator=(const PicturePainter&) = delete;

  // What is drawn from the next wish on. Its numbers count up from 1; the result is this one's.
  std::uint64_t setModel(rpk::PictureModel model);
  // Takes the place of a wish that is being worked on.
  void paint(const PictureWish& wish);

 private:
  void work(const std::stop_token& stop);
  void draw(const PictureWish& wish, const std::stop_token& stop);
  bool outOfDate();

  Deliver deliver_;
  std::mutex lock_;  // for the three below
  std::optional<rpk::PictureModel> newModel_;
  std::uint64_t newNumber_ = 0;
  std::optional<PictureWish> wish_;
  std::condition_variable_any changed_;
  // The thread's own.
  std::optional<rpk::PictureScene> scene_;
  std::uint64_t number_ = 0;
  std::jthread thread_;
};

}  // namespace standin

#include "standin/window/picture_painter.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

namespace standin {
namespace {

// A coarse picture has one pixel in the place of so many, along each side.
constexpr std::uint32_t kCoarse = 4;
// So does the instance map.
constexpr std::uint32_t kMapCell = 2;

// One ray through the middle of each cell.
InstanceMap instanceMap(const rpk::PictureScene& scene, const rpk::PictureCamera& camera, std::uint32_t width,
                        std::uint32_t height) {
  InstanceMap map{width, height, {}};
  map.instances.assign(std::size_t{width} * height, InstanceMap::kNone);
  if (scene.empty()) return map;
  const rpk::PictureAxes axes = rpk::pictureAxes(camera.view);
  const rpk::Vector middle = scene.centre();
  const auto vec = [](const rpk::Vector& v) {
    return rpk::Vec3{static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])};
  };
  const double radius = scene.radius();
  const rpk::Vec3 centre = vec({(camera.centre[0] - middle[0]) / radius, (camera.centre[1] - middle[1]) / radius,
                                (camera.centre[2] - middle[2]) / radius});
  const rpk::Vec3 back = vec(axes.back);
  const rpk::Vec3 start = centre + back * (2 + rpk::length(centre));
  const double step = camera.height / radius / height;
  for (std::uint32_t row = 0; row < height; ++row) {
    const auto up = static_cast<float>((0.5 * height - row - 0.5) * step);
    for (std::uint32_t column = 0; column < width; ++column) {
      const auto right = static_cast<float>((column + 0.5 - 0.5 * width) * step);
      rpk::SurfacePoint point;
      if (!scene.closest(start + vec(axes.right) * right + vec(axes.up) * up, -back, point)) continue;
      map.instances[std::size_t{row} * width + column] = static_cast<std::int32_t>(point.instance);
    }
  }
  return map;
}

std::uint32_t share(std::uint32_t size, std::uint32_t part) { return std::max(1U, size / part); }

}  // namespace

PicturePainter::PicturePainter(Deliver deliver)
    : deliver_(std::move(deliver)), thread_([this](const std::stop_token& stop) { work(stop); }) {}

PicturePainter::~PicturePainter() {
  thread_.request_stop();
  thread_.join();
}

std::uint64_t PicturePainter::setModel(rpk::PictureModel model) {
  const std::lock_guard lock(lock_);
  newModel_ = std::move(model);
  wish_.reset();
  return ++newNumber_;
}

void PicturePainter::paint(const PictureWish& wish) {
  const std::lock_guard lock(lock_);
  wish_ = wish;
  changed_.notify_all();
}

bool PicturePainter::outOfDate() {
  const std::lock_guard lock(lock_);
  return wish_ || newModel_;
}

void PicturePainter::work(const std::stop_token& stop) {
  while (true) {
    PictureWish wish;
    std::optional<rpk::PictureModel> model;
    {
      std::unique_lock lock(lock_);
      if (!changed_.wait(lock, stop, [this] { return wish_.has_value(); })) return;
      wish = *std::exchange(wish_, std::nullopt);
      model = std::exchange(newModel_, std::nullopt);
      number_ = newNumber_;
    }
    try {
      if (model) scene_.emplace(std::move(*model));
      if (scene_) draw(wish, stop);
    } catch (const std::exception&) {
      // Memory is short: this picture is not drawn, the next one may be.
    }
  }
}

void PicturePainter::draw(const PictureWish& wish, const std::stop_token& stop) {
  PaintedPicture painted;
  painted.model = number_;
  painted.wish = wish.number;
  painted.camera = wish.fit ? rpk::frameScene(*scene_, wish.camera.view, wish.width, wish.height) : wish.camera;
  const auto goOn = [&](double) { return !stop.stop_requested() && !outOfDate(); };
  const auto deliver = [&](std::uint32_t part, std::uint32_t mapPart, const rpk::PictureProgress& progress) {
    rpk::PictureOptions options;
    options.width = share(wish.width, part);
    options.height = share(wish.height, part);
    painted.full = part == 1;
    options.edges = painted.full;
    painted.image = rpk::drawPicture(*scene_, painted.camera, options, progress);
    if (painted.image.pixels.empty()) return;
    painted.map = instanceMap(*scene_, painted.camera, share(wish.width, mapPart), share(wish.height, mapPart));
    deliver_(std::make_shared<const PaintedPicture>(painted));
  };
  // The coarse one is always finished, so that a picture that is turned is seen to turn.
  deliver(kCoarse, kCoarse, {});
  if (!wish.coarseOnly && goOn(0)) deliver(1, kMapCell, goOn);
}

}  // namespace standin

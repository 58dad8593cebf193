#include "standin/window/picture_view.h"

#include <QMetaObject>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

namespace standin {
namespace {

constexpr double kRadiansPerPixel = 0.008;
constexpr double kWheelFactor = 1.0 / 960;  // powers of two for each unit of a wheel's turn
constexpr int kSettleMilliseconds = 180;
constexpr QRgb kHighlight = qRgba(255, 128, 0, 64);
constexpr QRgb kOutline = qRgba(255, 100, 0, 255);  // tells a selected part of the same colour

rpk::Vector combined(const rpk::Vector& a, double factorA, const rpk::Vector& b, double factorB) {
  return {a[0] * factorA + b[0] * factorB, a[1] * factorA + b[1] * factorB, a[2] * factorA + b[2] * factorB};
}

QImage toQImage(const rpk::Image& image) {
  return QImage(image.pixels.data(), static_cast<int>(image.width), static_cast<int>(image.height),
                static_cast<int>(image.width * 4), QImage::Format_RGBA8888)
      .copy();
}

}  // namespace

PictureView::PictureView(QWidget* parent) : QWidget(parent) {
  setObjectName("picture");
  setMinimumSize(240, 180);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  settle_.setSingleShot(true);
  settle_.setInterval(kSettleMilliseconds);
  connect(&settle_, &QTimer::timeout, this, [this] { wish(); });
  painter_ = std::make_unique<PicturePainter>([this](auto painted) {
    // What is still on its way when the widget ends is dropped with it.
    QMetaObject::invokeMethod(
        this, [this, painted] { take(painted); }, Qt::QueuedConnection);
  });
}

void PictureView::setPicture(SessionPicture picture, bool fit) {
  paths_ = std::move(picture.paths);
  model_ = painter_->setModel(std::move(picture.model));
  fitted_ = fit || !camera_;
  wish();
}

void PictureView::setView(const rpk::ViewDirection& direction) {
  direction_ = direction;
  fitted_ = true;
  wish();
}

void PictureView::setSelected(std::vector<Path> paths) {
  selected_ = std::move(paths);
  std::sort(selected_.begin(), selected_.end());
  drawHighlight();
  update();
}

void PictureView::wish(bool coarseOnly) {
  complete_ = false;
  if (model_ == 0 || width() < 1 || height() < 1) return;
  PictureWish wanted;
  wanted.number = ++lastWish_;
  if (camera_) wanted.camera = *camera_;
  wanted.camera.view = direction_;
  wanted.fit = fitted_ || !camera_;
  wanted.coarseOnly = coarseOnly;
  wanted.width = static_cast<std::uint32_t>(std::lround(width() * devicePixelRatioF()));
  wanted.height = static_cast<std::uint32_t>(std::lround(height() * devicePixelRatioF()));
  painter_->paint(wanted);
}

void PictureView::take(const std::shared_ptr<const PaintedPicture>& painted) {
  if (painted->model != model_) return;
  painted_ = painted;
  if (fitted_) camera_ = painted->camera;
  image_ = toQImage(painted->image);
  complete_ = painted->full && painted->wish == lastWish_;
  drawHighlight();
  update();
}

bool PictureView::isSelected(const Path& path) const {
  return std::any_of(selected_.begin(), selected_.end(), [&](const Path& chosen) {
    return chosen.size() <= path.size() && std::equal(chosen.begin(), chosen.end(), path.begin());
  });
}

void PictureView::drawHighlight() {
  highlight_ = QImage();
  if (!painted_ || painted_->model != model_ || selected_.empty()) return;
  const InstanceMap& map = painted_->map;
  std::vector<bool> chosen;
  chosen.reserve(paths_.size());
  for (const Path& path : paths_) chosen.push_back(isSelected(path));
  // Beyond the edges, where numbers wrap around, nothing is.
  const auto isChosen = [&](std::uint32_t column, std::uint32_t row) {
    if (column >= map.width || row >= map.height) return false;
    const std::int32_t instance = map.instances[std::size_t{row} * map.width + column];
    return instance >= 0 && chosen[static_cast<std::size_t>(instance)];
  };
  highlight_ = QImage(static_cast<int>(map.width), static_cast<int>(map.height), QImage::Format_ARGB32);
  highlight_.fill(Qt::transparent);
  for (std::uint32_t row = 0; row < map.height; ++row) {
    auto* line = reinterpret_cast<QRgb*>(highlight_.scanLine(static_cast<int>(row)));
    for (std::uint32_t column = 0; column < map.width; ++column) {
      if (!isChosen(column, row)) continue;
      const bool inside = isChosen(column - 1, row) && isChosen(column + 1, row) && isChosen(column, row - 1) &&
                          isChosen(column, row + 1);
      line[column] = inside ? kHighlight : kOutline;
    }
  }
}

const PictureView::Path* PictureView::pathAt(const QPoint& place) const {
  if (!painted_ || painted_->model != model_ || !rect().contains(place)) return nullptr;
  const InstanceMap& map = painted_->map;
  const auto cell = [](int at, int size, std::uint32_t cells) {
    return std::min(cells - 1, static_cast<std::uint32_t>(at) * cells / static_cast<std::uint32_t>(size));
  };
  const std::uint32_t row = cell(place.y(), height(), map.height);
  const std::int32_t instance = map.instances[std::size_t{row} * map.width + cell(place.x(), width(), map.width)];
  return instance < 0 ? nullptr : &paths_[static_cast<std::size_t>(instance)];
}

void PictureView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  if (model_ == 0 || image_.isNull()) {
    painter.fillRect(rect(), palette().window());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::WindowText));
    painter.drawText(rect(), Qt::AlignCenter, hint_);
    return;
  }
  painter.drawImage(rect(), image_);
  if (!highlight_.isNull()) painter.drawImage(rect(), highlight_);
}

void PictureView::resizeEvent(QResizeEvent* /*event*/) {
  wish(true);
  settle_.start();
}

void PictureView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton && event->button() != Qt::MiddleButton) return;
  dragFrom_ = event->pos();
  dragged_ = false;
}

void PictureView::mouseMoveEvent(QMouseEvent* event) {
  if (!dragFrom_ || !camera_) return;
  const QPoint by = event->pos() - *dragFrom_;
  if (!dragged_ && by.manhattanLength() < 4) return;
  dragged_ = true;
  dragFrom_ = event->pos();
  fitted_ = false;
  if ((event->modifiers() & Qt::ShiftModifier) != 0) {
    shift(by);
  } else {
    turn(by);
  }
  settle_.start();
  wish(true);
}

void PictureView::mouseReleaseEvent(QMouseEvent* event) {
  if (!std::exchange(dragFrom_, std::nullopt) || dragged_ || event->button() != Qt::LeftButton) return;
  if (onPicked) onPicked(pathAt(event->pos()), (event->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier)) != 0);
}

void PictureView::wheelEvent(QWheelEvent* event) {
  if (!camera_) return;
  camera_->height *= std::exp2(-event->angleDelta().y() * kWheelFactor * 2);
  fitted_ = false;
  settle_.start();
  wish(true);
}

// The model follows the mouse as a ball would that is taken hold of in front.
void PictureView::turn(const QPoint& by) {
  const rpk::PictureAxes axes = rpk::pictureAxes(direction_);
  const double across = by.x() * kRadiansPerPixel;
  const double down = by.y() * kRadiansPerPixel;
  const rpk::Vector sideways = combined(axes.back, std::cos(across), axes.right, -std::sin(across));
  const rpk::Vector back = combined(sideways, std::cos(down), axes.up, std::sin(down));
  direction_.direction = combined(back, -1, back, 0);
  direction_.up = combined(axes.up, std::cos(down), sideways, -std::sin(down));
}

void PictureView::shift(const QPoint& by) {
  const rpk::PictureAxes axes = rpk::pictureAxes(direction_);
  const double unit = camera_->height / std::max(1, height());
  camera_->centre = combined(camera_->centre, 1, combined(axes.right, -by.x() * unit, axes.up, by.y() * unit), 1);
}

}  // namespace standin

// The picture of the model in the middle of the window.
#pragma once

#include <QImage>
#include <QPoint>
#include <QString>
#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "standin/window/picture_painter.h"
#include "standin/window/session_picture.h"

namespace standin {

// Dragging with the left or the middle button turns the model, with Shift it moves it; the wheel brings it nearer.
class PictureView : public QWidget {
 public:
  using Path = std::vector<int>;

  explicit PictureView(QWidget* parent = nullptr);

  // The camera stays unless the whole model is shown or `fit` asks for that.
  void setPicture(SessionPicture picture, bool fit);
  // With all of the model.
  void setView(const rpk::ViewDirection& direction);
  // All of the model from where it is seen now.
  void refit() { setView(direction_); }
  // Stands in the middle while there is no picture.
  void setHint(const QString& text) {
    hint_ = text;
    update();
  }
  // The instances at and below these paths stand out.
  void setSelected(std::vector<Path> paths);

  // The user clicked at a part, or with null beside all of them; `add` when it is to join those selected before.
  std::function<void(const Path* path, bool add)> onPicked;

  // Whether the picture is up to date and in full.
  bool complete() const { return complete_; }
  // What is shown at a place of the widget; null for nothing.
  const Path* pathAt(const QPoint& place) const;

  QSize sizeHint() const override { return {760, 560}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  void wish(bool coarseOnly = false);
  void take(const std::shared_ptr<const PaintedPicture>& painted);
  void drawHighlight();
  void turn(const QPoint& by);
  void shift(const QPoint& by);
  bool isSelected(const Path& path) const;

  std::vector<Path> paths_;     // of the instances of the model
  std::vector<Path> selected_;  // sorted
  std::uint64_t model_ = 0;
  std::uint64_t lastWish_ = 0;
  rpk::ViewDirection direction_;
  std::optional<rpk::PictureCamera> camera_;  // none until the first picture is there
  bool fitted_ = true;                        // the camera shows the whole model
  bool complete_ = false;
  QString hint_;
  std::shared_ptr<const PaintedPicture> painted_;
  QImage image_;
  QImage highlight_;
  std::optional<QPoint> dragFrom_;
  bool dragged_ = false;
  QTimer settle_;  // draws in full when the model has come to rest
  // Ends before all else.
  std::unique_ptr<PicturePainter> painter_;
};

}  // namespace standin

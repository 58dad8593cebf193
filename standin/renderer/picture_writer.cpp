#include "standin/renderer/picture_writer.h"

#include <fmt/format.h>

#include <cerrno>
#include <exception>
#include <fstream>
#include <optional>
#include <set>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "standin/renderer/process.h"
#include "tools/rpk/mapped_file.h"
#include "tools/rpk/picture/draw_picture.h"
#include "tools/rpk/picture/picture_camera.h"
#include "tools/rpk/picture/picture_model.h"
#include "tools/rpk/texture_file.h"

namespace standin {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaxWaiting = 4;

void collectScripts(const std::vector<MergedScene::Node>& nodes,
                    std::set<std::shared_ptr<const MergedScene::Script>>& scripts) {
  for (const MergedScene::Node& node : nodes) {
    if (node.script) scripts.insert(node.script);
    collectScripts(node.children, scripts);
  }
}

// Null for what is not there or is no picture; the plain colour stands in.
std::shared_ptr<const rpk::Image> loadTexture(const std::string& path) {
  const auto found = rpk::findTexture(path, {});
  const auto content = found ? rpk::MappedFile::open(*found) : std::nullopt;
  auto image = content ? rpk::decodeImage(content->bytes()) : std::nullopt;
  return image ? std::make_shared<const rpk::Image>(std::move(*image)) : nullptr;
}

}  // namespace

PictureWriter::PictureWriter(const fs::path& folder) : folder_(folder), worker_(kMaxWaiting) {
  fs::create_directories(folder_);
}

PictureWriter::~PictureWriter() { PictureWriter::stop(); }

void PictureWriter::stop() {
  stopped_ = true;
  worker_.stop();
}

std::string PictureWriter::lastFailure() const {
  const std::lock_guard lock(failureMutex_);
  return failure_;
}

void PictureWriter::add(const MergedScene& scene) {
  auto shot = std::make_shared<Shot>();
  shot->placed = placedContent(scene.groups());
  std::set<std::shared_ptr<const MergedScene::Script>> scripts;
  collectScripts(scene.groups(), scripts);
  shot->scripts.assign(scripts.begin(), scripts.end());
  shot->upAxis = rpk::upAxis(scene.head());
  worker_.post([this, shot] {
    try {
      draw(*shot);
    } catch (const std::exception& error) {
      const std::lock_guard lock(failureMutex_);
      failure_ = error.what();
    }
  });
}

void PictureWriter::draw(const Shot& shot) {
  const rpk::PictureScene scene(rpk::pictureModel(shot.placed, loadTexture));
  if (scene.empty()) throw std::runtime_error("there is nothing to draw");
  const rpk::PictureOptions options;
  const auto view = rpk::standardView("iso", shot.upAxis).value_or(rpk::ViewDirection{});
  const rpk::PictureCamera camera = rpk::frameScene(scene, view, options.width, options.height);
  const rpk::Image image = rpk::drawPicture(scene, camera, options, [this](double) { return !stopped_; });
  if (stopped_) return;
  const std::string png = rpk::encodePng(image, false);
  if (png.empty()) throw std::bad_alloc();
  write(png);
}

// A link takes no name that is there already, so that renderers that share a folder keep each other's pictures.
void PictureWriter::write(const std::string& png) {
  const fs::path temporary = folder_ / fmt::format(".scene-{}.new", processId());
  std::ofstream file(temporary, std::ios::binary);
  file << png;
  file.close();
  if (!file) throw std::runtime_error(fmt::format("{} cannot be written", temporary.string()));
  std::error_code error;
  for (;; ++number_) {
    fs::create_hard_link(temporary, folder_ / fmt::format("scene-{:04}.png", number_), error);
    if (error != std::errc::file_exists) break;
  }
  if (error) throw fs::filesystem_error("picture", folder_, error);
  fs::rename(temporary, folder_ / "latest.png");
  ++written_;
}

bool canDrawPictures() { return true; }

std::unique_ptr<Pictures> makePictures(const fs::path& folder) { return std::make_unique<PictureWriter>(folder); }

}  // namespace standin

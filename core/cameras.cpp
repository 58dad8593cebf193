#include "core/cameras.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

#include "platform/creo_handles.h"
#include "scene/matrix.h"
#include "scene/narrow_text.h"
#include "scene/scene_builder.h"
#include "scene/vntScene_api.h"

namespace rendara {
namespace {

constexpr std::size_t kCameraNameBuffer = 128;

// What outlives one camera: a failed host operation shows the values of the camera before.
class CameraWriter {
 public:
  CameraWriter(SceneBuilder& builder, ProMdl model) : builder_(builder), model_(model) {}

  void write(const std::string& name, ProView viewOrNull) {
    readOrientation(viewOrNull);
    builder_.openCamera(name.c_str());
    builder_.setPosition(0.0F, 0.0F, 2000.0F);
    builder_.setDirection(0.0F, 0.0F, -1.0F);
    builder_.setUp(0.0F, 1.0F, 0.0F);
    builder_.setFov(55.0F);
    builder_.scene()->transform(orientation_.data(), false);
    builder_.scene()->parameter("projection", kString, "orthographic");
    builder_.closeCamera();
  }

 private:
  void readOrientation(ProView viewOrNull) {
    ProMatrix matrix;
    std::memcpy(matrix, view_.data(), sizeof(matrix));
    ProViewMatrixGet(model_, viewOrNull, matrix);
    std::memcpy(view_.data(), matrix, sizeof(matrix));
    invertSimilarity(view_, orientation_);
    std::fill(orientation_.begin() + 12, orientation_.begin() + 15, 0.0);
  }

  SceneBuilder& builder_;
  ProMdl model_;
  Matrix view_ = kIdentityMatrix;
  Matrix orientation_ = kIdentityMatrix;
};

}  // namespace

void exportCameras(SceneBuilder& builder, ProMdl model) {
  CameraWriter writer(builder, model);
  writer.write("Current Creo camera", nullptr);

  CadArray<ProLine> names;
  int count = 0;
  ProViewNamesGet(model, names.receive(), nullptr, &count);
  const auto all = names.view();
  ProView view = nullptr;
  for (auto& name : all.first(std::min(all.size(), static_cast<std::size_t>(std::max(count, 0))))) {
    ProViewNameToView(model, name, &view);
    writer.write(narrowText(name, kCameraNameBuffer).text, view);
  }
}

}  // namespace rendara

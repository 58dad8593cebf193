#include "scene/scene_builder.h"

#include <array>

#include "scene/vntScene_api.h"

namespace rendara {
namespace {

constexpr int kEnvironmentFormat = 3;
constexpr float kEnvironmentRadius = 25;
// Turns the image's axes into the scene's.
constexpr std::array<double, 16> kEnvironmentTransform = {0, 0, -1, 0,  //
                                                          1, 0, 0,  0,  //
                                                          0, 1, 0,  0,  //
                                                          0, 0, 0,  1};

}  // namespace

void SceneBuilder::openGroup(const char* name) { scene_->beginGroup(name, true); }

void SceneBuilder::closeGroup() { scene_->endGroup(); }

void SceneBuilder::openCamera(const char* nameOrNull) {
  scene_->beginShader(nullptr, "vnt_envmap");
  scene_->parameter("texture", kString, "startup.hdr");  // the renderer finds the file
  scene_->parameter("format", kInt, &kEnvironmentFormat);
  scene_->parameter("radius", kFloat, &kEnvironmentRadius);
  scene_->parameter("transform", kMatrix, kEnvironmentTransform.data());
  CaptureBuffer* environment = scene_->currentCapture();
  scene_->endShader(0);
  scene_->beginCamera(nameOrNull);
  scene_->parameter("reflection map", kCapture, &environment);
}

void SceneBuilder::writeEnvironment(const void*) { openCamera(nullptr); }

void SceneBuilder::closeCamera() { scene_->endCamera(); }

void SceneBuilder::setPosition(float x, float y, float z) { writeVector("position", x, y, z); }

void SceneBuilder::setDirection(float x, float y, float z) { writeVector("direction", x, y, z); }

void SceneBuilder::setUp(float x, float y, float z) { writeVector("up", x, y, z); }

void SceneBuilder::setFov(float fov) { scene_->parameter("fov", kFloat, &fov); }

bool SceneBuilder::finish() {
  if (scene_ == nullptr) return false;
  const bool handedOver = scene_->endScene();
  release();
  return handedOver;
}

void SceneBuilder::writeVector(const char* name, float x, float y, float z) {
  const std::array<double, 3> values = {x, y, z};
  scene_->parameter(name, kDouble3, values.data());
}

}  // namespace rendara

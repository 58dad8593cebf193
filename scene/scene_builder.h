// The few higher-level operations that the export code shares: groups, a camera's parameters, the environment.
#pragma once

namespace rendara {

class vntScene_api;

// The scene is the caller's and must be set for every operation but `finish`.
class SceneBuilder {
 public:
  explicit SceneBuilder(vntScene_api* scene) : scene_(scene) {}
  virtual ~SceneBuilder() = default;
  SceneBuilder(const SceneBuilder&) = delete;
  SceneBuilder& operator=(const SceneBuilder&) = delete;

  vntScene_api* scene() const { return scene_; }

  // A group that is used where it stands, not a definition.
  void openGroup(const char* name);
  void closeGroup();

  // Writes the environment, which is the same for every scene, and opens the camera section, which stays open for the
  // camera's parameters.
  void openCamera(const char* nameOrNull);
  // The same without a name. The argument plays no part.
  void writeEnvironment(const void* ignored);
  void closeCamera();

  void setPosition(float x, float y, float z);
  void setDirection(float x, float y, float z);
  void setUp(float x, float y, float z);
  void setFov(float fov);

  // Ends the scene and then releases what a derived builder holds for it; without a scene it does nothing. True when
  // the scene was handed over.
  bool finish();

 protected:
  virtual void release() {}

 private:
  void writeVector(const char* name, float x, float y, float z);

  vntScene_api* scene_;
};

}  // namespace rendara

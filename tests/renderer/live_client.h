// The live-link library as the plug-in has it: loaded, entered by name, used through its tables.
#pragma once

#include <dlfcn.h>

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/live_link.h"
#include "scene/vntScene_api.h"
#include "tests/renderer/renderer_process.h"

namespace renderer_test {

class LoadedLibrary {
 public:
  LoadedLibrary() : handle_(dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_) throw std::runtime_error(dlerror());
    const auto entry = reinterpret_cast<rendara::InitializeLiveLink>(dlsym(handle_, rendara::kLiveLinkEntry));
    if (!entry) throw std::runtime_error(dlerror());
    interface_ = entry();
  }
  ~LoadedLibrary() {
    interface_->shutdown();
    dlclose(handle_);
  }
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  rendara::LiveLinkInterface* operator->() const { return interface_; }

 private:
  void* handle_;
  rendara::LiveLinkInterface* interface_ = nullptr;
};

inline bool connect(rendara::vntScene_api& scene, int port, int mode = 1) {
  return scene.connect("127.0.0.1", port, mode);
}

inline void writeHeader(rendara::vntScene_api& scene) {
  const int off = 0;
  const int on = 1;
  const float scale = 39.370079F;
  scene.writeFormatted("//---vantor:dal:%d---\n", 7);
  scene.writeFormatted("// 100%% a scene\n");
  scene.beginLoad("vntrtopt.so");
  scene.parameter("import_merge_groups", rendara::kBool, &off);
  scene.parameter("import_keep_original", rendara::kBool, &on);
  scene.parameter("meter_scale", rendara::kFloat, &scale);
  scene.endBlock();
}

// A strip of triangles with a material whose shader is captured first.
inline void writePart(rendara::vntScene_api& scene, const char* name, int triangles) {
  std::vector<float> vertices;
  std::vector<int> indices;
  for (int i = 0; i < triangles + 2; ++i) {
    vertices.insert(vertices.end(), {static_cast<float>(i) * 0.5F, static_cast<float>(i % 2), 0.25F});
    if (i >= 2) indices.insert(indices.end(), {i - 2, i - 1, i});
  }
  const rendara::SceneArray points{vertices.data(), static_cast<int>(vertices.size() / 3)};
  const rendara::SceneArray corners{indices.data(), static_cast<int>(indices.size())};
  const std::array<float, 3> colour = {0.1F, 0.2F, 0.3F};
  const std::array<double, 16> placement = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1.5, 2.25, -0.125, 1};
  scene.beginGroup(name, true);
  scene.flags(1024);
  scene.beginObject(name, true);
  scene.beginGeometry("triangles");
  scene.parameter("vertices", rendara::arrayOf(rendara::kFloat3), &points);
  scene.parameter("triangles", rendara::arrayOf(rendara::kInt), &corners);
  scene.endGeometry();
  scene.beginMaterial("paint", true);
  scene.beginShader(nullptr, "vnt_diffuse");
  scene.parameter("diffuse", rendara::kFloat3, colour.data());
  scene.endShader(0);
  scene.shader(0, scene.currentCapture());
  scene.endMaterial();
  scene.endObject();
  scene.transform(placement.data(), false);
  scene.endGroup();
}

inline void writeScene(rendara::vntScene_api& scene, const char* top, int triangles = 2) {
  writeHeader(scene);
  scene.beginGroup(top, true);
  scene.flags(0x8000);
  writePart(scene,
            "pi\xe8"
            "ce.prt",
            triangles);
  scene.endGroup();
}

}  // namespace renderer_test

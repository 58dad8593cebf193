#include "scene/material.h"

#include <cmath>

#include "scene/narrow_text.h"
#include "scene/vntScene_api.h"

namespace rendara {
namespace {

constexpr std::size_t kNameBuffer = 1024;

double clampComponent(double component) {
  if (std::isnan(component) || component <= 0.0) {
    return 0.0;
  }
  return component < 1.0 ? component : 1.0;
}

int colorByte(double component) { return static_cast<int>(std::floor(clampComponent(component) * 255.0 + 0.5)); }

std::array<float, 3> shaderColor(const MaterialRecord& record) {
  std::array<float, 3> color{};
  for (std::size_t i = 0; i < color.size(); ++i) {
    color[i] = static_cast<float>(clampComponent(record.color[i]));
  }
  return color;
}

void set(vntScene_api& scene, const char* name, const std::array<float, 3>& value) {
  scene.parameter(name, kFloat3, value.data());
}
void set(vntScene_api& scene, const char* name, float value) { scene.parameter(name, kFloat, &value); }
void setInt(vntScene_api& scene, const char* name, int value) { scene.parameter(name, kInt, &value); }
void setOn(vntScene_api& scene, const char* name) {
  const int on = 1;
  scene.parameter(name, kBool, &on);
}

// The captured texture shader; null when the scene captures none.
const CaptureBuffer* captureTexture(vntScene_api& scene, const std::wstring& path) {
  const std::string file = narrowText(path).text;
  scene.beginShader(nullptr, "texture_rgb");
  setInt(scene, "project", 3);
  setOn(scene, "wrap");
  set(scene, "default_color", {0.0F, 0.0F, 0.0F});
  scene.parameter("texture", kString, file.c_str());
  scene.endShader(0);
  return scene.currentCapture();
}

void beginTexturedShader(vntScene_api& scene, const MaterialRecord& record, const CaptureBuffer& texture) {
  scene.beginShader(nullptr, "vnt_advanced");
  set(scene, "diffuse", shaderColor(record));
  set(scene, "specular", {0.0F, 0.0F, 0.0F});
  setOn(scene, "fresnel");
  set(scene, "roughness", 0.0F);
  set(scene, "ior", 1.5F);
  setOn(scene, "glossy");
  setInt(scene, "glossy_samples", 9);
  set(scene, "alpha", 1.0F);
  // A second entry of the same name: the texture follows the colour.
  scene.parameterText("diffuse", &texture);
}

void beginPlainShader(vntScene_api& scene, const MaterialRecord& record) {
  scene.beginShader(nullptr, "vnt_diffuse");
  set(scene, "diffuse", shaderColor(record));
}

}  // namespace

std::string materialName(const MaterialRecord& record, const std::string& prefix, bool separateMaterials) {
  std::string name;
  if (separateMaterials) {
    name = prefix;
    name += ':';
  }
  name += narrowText(record.displayName).text;
  for (const double component : record.color) {
    name += ':';
    name += std::to_string(colorByte(component));
  }
  truncateWhole(name, kNameBuffer - 1);
  lowerCaseInPlace(name);
  return name;
}

void writeMaterial(vntScene_api& scene, const std::string& name, const MaterialRecord& record) {
  scene.beginMaterial(name.c_str(), true);
  const CaptureBuffer* texture = record.texturePath.empty() ? nullptr : captureTexture(scene, record.texturePath);
  if (texture != nullptr) {
    beginTexturedShader(scene, record, *texture);
  } else {
    beginPlainShader(scene, record);
  }
  const CaptureBuffer* shader = scene.currentCapture();
  scene.endShader(0);
  scene.shader(0, shader);
  scene.endBlock();
}

}  // namespace rendara

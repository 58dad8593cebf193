// A surface's material: its record, its name, and the block that it becomes in a scene.
#pragma once

#include <array>
#include <string>

namespace rendara {

class vntScene_api;

struct MaterialRecord {
  std::wstring displayName = L"color";
  std::array<double, 3> color = {0.6, 0.6, 0.6};  // red, green, blue, 0 to 1
  std::wstring texturePath;                       // full path of a readable texture; empty for a plain material
};

// The name of a record's material, at most 1,023 bytes in lower case: the prefix (only with separate materials), the
// display name, and the colour's components as integers 0 to 255, joined by colons. Equal names mean equal materials
// to the renderer, and the surfaces of a part are grouped by it.
std::string materialName(const MaterialRecord& record, const std::string& prefix, bool separateMaterials);

// Writes the material block with its inline shader into the open object.
void writeMaterial(vntScene_api& scene, const std::string& name, const MaterialRecord& record);

}  // namespace rendara

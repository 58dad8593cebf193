#include "core/scene_script.h"

#include <array>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "scene/vntScene_api.h"

namespace rendara {
namespace {

constexpr char kFullHeader[] = "//---vantor:dal:7---\n";

using Switches = std::initializer_list<std::pair<const char*, int>>;

// The load block of the import module: switches in their order, then what the model brings.
void writeImportOptions(vntScene_api& scene, const ImportSettings& settings, Switches switches) {
  scene.beginLoad("vntrtopt.so");
  for (const auto& [name, on] : switches) {
    scene.parameter(name, kBool, &on);
  }
  scene.parameter("import_up_vector", kInt, &settings.upAxis);
  scene.parameter("meter_scale", kFloat, &settings.meterScale);
  const int off = 0;
  scene.parameter("ext", kBool, &off);
  scene.endBlock();
}

}  // namespace

void writeRenderHeader(vntScene_api& scene, const ImportSettings& settings) {
  scene.writeFormatted(settings.includeNURBS ? kFullHeader : "//---vantor:dal:4---\n");
  scene.writeFormatted("//---import:dal:1---\n");
  scene.writeFormatted("// This is a Rendara scene file\n\n");
  writeImportOptions(scene, settings,
                     {{"import_mode", 1},
                      {"import_merge_groups", 0},
                      {"import_merge_objects", 0},
                      {"import_adjust_environment", 1},
                      {"import_keep_original", 1}});
}

void writePackageHeader(vntScene_api& scene, const ImportSettings& settings) {
  scene.writeFormatted(settings.includeNURBS ? kFullHeader : "//---vantor:dal:5---\n");
  scene.writeFormatted("//---import:dal:1---\n");
  scene.writeFormatted("//---id:1---\n");
  scene.writeFormatted("// This is a Rendara scene file\n\n");
  scene.beginLoad("vntgeometry_nurbs.so");
  scene.endBlock();
  writeImportOptions(scene, settings,
                     {{"import_mode", 1},
                      {"import_merge_groups", 0},
                      {"import_merge_objects", 0},
                      {"import_keep_original", 1},
                      {"import_adjust_environment", 1},
                      {"import_adjust_camera", 1}});
}

void writeUpdateHeader(vntScene_api& scene, const ImportSettings& settings) {
  scene.writeFormatted(kFullHeader);
  scene.writeFormatted("//---import:dal:1---\n");
  scene.writeFormatted("// This is a Rendara scene file\n\n");
  writeImportOptions(scene, settings,
                     {{"import_mode", 1},
                      {"import_merge_groups", 0},
                      {"import_merge_objects", 0},
                      {"import_adjust_environment", 1},
                      {"import_adjust_camera", 0},
                      {"import_keep_original", 1}});
}

float meterScaleOfUnit(const wchar_t* unitName) {
  constexpr std::array<std::pair<std::wstring_view, float>, 7> kScales = {{{L"cm", 100.0F},
                                                                           {L"ft", 3.2808399F},
                                                                           {L"in", 39.370079F},
                                                                           {L"mm", 1000.0F},
                                                                           {L"mil", 39370.078F},
                                                                           {L"micron", 1000000.0F},
                                                                           {L"m", 1.0F}}};
  for (const auto& [name, scale] : kScales) {
    if (name == unitName) {
      return scale;
    }
  }
  return 1.0F;
}

}  // namespace rendara

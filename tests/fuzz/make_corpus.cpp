// Fills a folder with what the fuzzers begin with: packages written by hand and the writer's golden texts, frame files,
// settings files.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

#include "tests/rpk/exact_model.h"
#include "tests/rpk/model_text.h"
#include "tests/rpk/package_text.h"
#include "tests/rpk/whole_package.h"
#include "tests/support/temporary_folder.h"

namespace {

// Small ones, so that what is changed in them is mostly what matters.
void writeExactModels(const std::filesystem::path& folder) {
  using namespace rpk_test;
  const auto write = [&](const char* name, const rpk::TrimmedSurface& trimmed) {
    rendara::testing::writeFile(folder / name, group("part", {object(exactGeometry(trimmed), "")}));
  };
  write("square.rpk", unitSquare());
  write("pipe.rpk", cylinderWithHole());
  rpk::TrimmedSurface untrimmed = cylinderWithHole();
  untrimmed.loops.clear();
  write("untrimmed.rpk", untrimmed);
  rpk::TrimmedSurface disc = unitSquare();
  disc.loops = {{{circleCurve(0.5, 0.5, 0.4)}, true}, {{circleCurve(0.5, 0.5, 0.2)}, false}};
  write("disc.rpk", disc);
}

void writePackages(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  rendara::testing::writeFile(folder / "pump.rpk", rpk_test::pumpPackage());
  rendara::testing::writeFile(folder / "whole.rpk", rpk_test::wholePackage());
  writeExactModels(folder);
  for (const auto& entry : std::filesystem::directory_iterator(RENDARA_TEST_DATA "/scene")) {
    if (entry.path().extension() != ".golden") continue;
    std::filesystem::copy_file(entry.path(), folder / entry.path().filename(),
                               std::filesystem::copy_options::overwrite_existing);
  }
}

void writeFrameFiles(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  rendara::testing::writeFile(folder / "short.fra",
                              "parts: 2\nframes: 2\nMaFrame 0\n"
                              "Part: 1 (5) 1 0 0 0 1 0 0 0 1 0 0 0\nPart: 2 (5 7) 1 0 0 0 1 0 0 0 1 0.5 -2e-3 inf\n"
                              "MaFrame 1\n"
                              "Part: 1 (5) 1 0 0 0 1 0 0 0 1 0 0 0\nPart: 3 (1 2 3) 0x1p3 0 0 0 1 0 0 0 nan 1 2 3\n");
}

void writeSettingsFiles(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  rendara::testing::writeFile(folder / "settings.xml",
                              "<?xml version=\"1.0\" ?>\n<rendara_plugin_settings>\n"
                              "<tessellationQuality>0.200000</tessellationQuality>\n<upAxis>1</upAxis>\n"
                              "<selectionMode>automatic</selectionMode>\n<includeNURBS>true</includeNURBS>\n"
                              "<separateMaterials>false</separateMaterials>\n"
                              "<promptForMechanism>true</promptForMechanism>\n"
                              "<exportPath>C:\\a &amp; b\\c.rpk</exportPath>\n<fraPath></fraPath>\n"
                              "</rendara_plugin_settings>\n");
  std::string nested;
  for (int depth = 0; depth < 50; ++depth) nested += "<a>";
  rendara::testing::writeFile(folder / "nested.xml", nested);
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 2) {
    std::fputs("usage: make_corpus FOLDER\n", stderr);
    return 1;
  }
  const std::filesystem::path folder = arguments[1];
  writePackages(folder / "package");
  writeFrameFiles(folder / "frame");
  writeSettingsFiles(folder / "settings");
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "make_corpus: %s\n", error.what());
  return 1;
}

// Fills a folder with what the fuzzer begins with: packages written by hand, and the writer's golden texts.
#include <cstdio>
#include <exception>
#include <filesystem>

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

}  // namespace

int main(int count, char** arguments) try {
  if (count != 2) {
    std::fputs("usage: make_corpus FOLDER\n", stderr);
    return 1;
  }
  const std::filesystem::path folder = arguments[1];
  std::filesystem::create_directories(folder);
  rendara::testing::writeFile(folder / "pump.rpk", rpk_test::pumpPackage());
  rendara::testing::writeFile(folder / "whole.rpk", rpk_test::wholePackage());
  writeExactModels(folder);
  for (const auto& entry : std::filesystem::directory_iterator(RENDARA_TEST_DATA "/scene")) {
    if (entry.path().extension() != ".golden") continue;
    std::filesystem::copy_file(entry.path(), folder / entry.path().filename(),
                               std::filesystem::copy_options::overwrite_existing);
  }
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "make_corpus: %s\n", error.what());
  return 1;
}

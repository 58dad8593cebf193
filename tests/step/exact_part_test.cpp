// Exact surfaces: of faces made for the purpose, and of every model at hand.
#include "standin/step/exact_part.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "standin/step/exact_measure.h"
#include "standin/step/step_loader.h"
#include "standin/step/step_mesher.h"
#include "tests/step/exact_checks.h"
#include "tests/step/made_step.h"
#include "tests/step/mesh_checks.h"

namespace standin::test {

namespace {

std::vector<std::filesystem::path> modelFiles() {
  std::vector<std::filesystem::path> files;
  std::error_code error;
  for (const char* root : {RENDARA_MODEL_DIR, RENDARA_SOURCE_DIR "/samples"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root, error)) {
      const auto extension = entry.path().extension();
      if (extension == ".stp" || extension == ".step") files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

class ExactModelFile : public ::testing::TestWithParam<std::filesystem::path> {};

TEST_P(ExactModelFile, HasSoundExactSurfaces) {
  Session session;
  const LoadResult result = loadStep(session, GetParam());
  ASSERT_NE(result.model, nullptr) << result.error;
  std::size_t surfaces = 0;
  std::size_t passed = 0;
  std::size_t misleading = 0;
  for (const auto& model : session.models()) {
    if (!model->converter) continue;
    const ExactFacts facts = exactFacts(*model, defaultChordHeight(*model));
    surfaces += facts.surfaces;
    passed += facts.passed;
    misleading += facts.misleading;
    for (const std::string& fault : facts.faults) ADD_FAILURE() << fault;
  }
  RecordProperty("surfaces", static_cast<int>(surfaces));
  RecordProperty("passed", static_cast<int>(passed));
  RecordProperty("misleading", static_cast<int>(misleading));
  std::cout << GetParam().filename() << ' ' << passed << " of " << surfaces << ", misleading " << misleading << '\n';
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ExactModelFile);
INSTANTIATE_TEST_SUITE_P(Files, ExactModelFile, ::testing::ValuesIn(modelFiles()), [](const auto& tested) {
  std::string name = tested.param.filename().string();
  for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
  return name;
});

}  // namespace

}  // namespace standin::test

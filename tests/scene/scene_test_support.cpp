#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "scene/vntScene_api_file.h"
#include "tests/support/temporary_folder.h"

namespace rendara::testing {

std::string written(const std::function<void(vntScene_api&)>& calls, Arrays arrays) {
  const TemporaryFolder folder;
  const std::string path = (folder.path() / "scene.rpk").string();
  std::FILE* stream = std::fopen(path.c_str(), "wb+");
  EXPECT_NE(stream, nullptr) << path;
  {
    vntScene_api_file writer(stream, arrays == Arrays::kPacked);
    calls(writer);
  }
  return readFile(path);
}

std::string golden(const std::string& name) {
  return readFile(std::string(RENDARA_TEST_DATA) + "/scene/" + name + ".golden");
}

std::string golden() {
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  return golden(std::string(test->test_suite_name()) + "." + test->name());
}

}  // namespace rendara::testing

#include "tests/scene/scene_test_support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "scene/vntScene_api_file.h"

namespace rendara::testing {

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string written(const std::function<void(vntScene_api&)>& calls, Arrays arrays) {
  // Programs that run one test each may run at the same time.
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  const std::string name = std::string("rendara_") + test->test_suite_name() + "_" + test->name() + ".rpk";
  const std::string path = (std::filesystem::temp_directory_path() / name).string();
  std::FILE* stream = std::fopen(path.c_str(), "wb+");
  EXPECT_NE(stream, nullptr) << path;
  {
    vntScene_api_file writer(stream, arrays == Arrays::kPacked);
    calls(writer);
  }
  std::string bytes = readFile(path);
  std::filesystem::remove(path);
  return bytes;
}

std::string golden(const std::string& name) {
  return readFile(std::string(RENDARA_TEST_DATA) + "/scene/" + name + ".golden");
}

std::string golden() {
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  return golden(std::string(test->test_suite_name()) + "." + test->name());
}

}  // namespace rendara::testing

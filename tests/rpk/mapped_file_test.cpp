#include "tools/rpk/mapped_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <utility>

namespace {

class MappedFileTest : public testing::Test {
 protected:
  void SetUp() override { std::filesystem::create_directories(folder_); }
  void TearDown() override { std::filesystem::remove_all(folder_); }
  std::string write(const std::string& name, const std::string& content) {
    const std::filesystem::path path = folder_ / name;
    std::ofstream(path, std::ios::binary) << content;
    return path.string();
  }
  const std::filesystem::path folder_ =
      std::filesystem::temp_directory_path() /
      ("mapped_file_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
};

TEST_F(MappedFileTest, GivesTheBytesAndMovesThem) {
  const std::string content("a\0b\n", 4);
  auto file = rpk::MappedFile::open(write("full", content));
  ASSERT_TRUE(file);
  rpk::MappedFile moved = std::move(*file);
  EXPECT_EQ(moved.bytes(), content);
  auto other = rpk::MappedFile::open(write("other", "other"));
  ASSERT_TRUE(other);
  moved = std::move(*other);
  EXPECT_EQ(moved.bytes(), "other");
}

TEST_F(MappedFileTest, EmptyFileIsAnEmptyRange) {
  const auto file = rpk::MappedFile::open(write("empty", ""));
  ASSERT_TRUE(file);
  EXPECT_TRUE(file->bytes().empty());
}

TEST_F(MappedFileTest, SaysWhyAFileCannotBeRead) {
  std::string error;
  EXPECT_FALSE(rpk::MappedFile::open((folder_ / "missing").string(), &error));
  EXPECT_FALSE(error.empty());
  std::string directoryError;
  EXPECT_FALSE(rpk::MappedFile::open(folder_.string(), &directoryError));
  EXPECT_FALSE(directoryError.empty());
  EXPECT_NE(error, directoryError);
}

}  // namespace

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>

#include "platform/windows_api.h"
#include "standin/windows/code_page.h"
#include "tests/support/temporary_folder.h"

namespace standin {
namespace {

using rendara::testing::readFile;

class FileStreams : public ::testing::Test {
 protected:
  void SetUp() override { forgetFileFailures(); }
  void TearDown() override { forgetFileFailures(); }
};

TEST_F(FileStreams, WritesReadsAndSeeksUnderAWideName) {
  const rendara::testing::TemporaryFolder folder;
  const std::filesystem::path path = folder.path() /
                                     "gr\xC3\xB6\xC3\x9F"
                                     "e.rpk";
  const std::wstring widePath = wideFromUtf8(path.string());
  std::FILE* file = _wfopen(widePath.c_str(), L"wb+");
  ASSERT_NE(file, nullptr);
  const std::string block(100000, 'x');
  std::fputs("head", file);
  EXPECT_EQ(std::fwrite(block.data(), 1, block.size(), file), block.size());
  EXPECT_EQ(std::ftell(file), 100004);
  EXPECT_EQ(std::fseek(file, 0, SEEK_SET), 0);
  std::fputs("HE", file);
  EXPECT_EQ(std::fseek(file, 2, SEEK_SET), 0);
  EXPECT_EQ(std::fgetc(file), 'a');
  EXPECT_EQ(std::fclose(file), 0);
  EXPECT_EQ(readFile(path), "HEad" + block);

  file = _wfopen(widePath.c_str(), L"a");
  ASSERT_NE(file, nullptr);
  std::fputs("tail", file);
  std::fclose(file);
  EXPECT_EQ(readFile(path), "HEad" + block + "tail");

  file = _wfopen(widePath.c_str(), L"rt, ccs=UTF-8");
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(std::fgetc(file), 'H');
  std::fclose(file);
  EXPECT_FALSE(fileFailure());
}

TEST_F(FileStreams, KeepsTheFirstFailureToWrite) {
  std::FILE* full = _wfopen(L"/dev/full", L"wb");
  if (full == nullptr) {
    GTEST_SKIP() << "no /dev/full here";
  }
  std::fputs("text", full);
  EXPECT_NE(std::fflush(full), 0);
  std::fclose(full);
  EXPECT_EQ(_wfopen(L"/nowhere/at/all.rpk", L"wb+"), nullptr);
  ASSERT_TRUE(fileFailure());
  EXPECT_EQ(fileFailure()->path, "/dev/full");
  EXPECT_EQ(fileFailure()->message, "No space left on device");

  forgetFileFailures();
  EXPECT_EQ(_wfopen(L"/nowhere/at/all.rpk", L"rb"), nullptr);
  EXPECT_FALSE(fileFailure()) << "a file that is not there to be read is no failure";
  EXPECT_EQ(_wfopen(L"/nowhere/at/all.rpk", L"wb+"), nullptr);
  ASSERT_TRUE(fileFailure());
  EXPECT_EQ(fileFailure()->message, "No such file or directory");
}

TEST_F(FileStreams, TheCheckedOpeningGivesTheErrorAndClearsTheStream) {
  const rendara::testing::TemporaryFolder folder;
  const std::wstring path = wideFromUtf8((folder.path() / "frames.fra").string());
  std::FILE* stream = nullptr;
  ASSERT_EQ(_wfopen_s(&stream, path.c_str(), L"w"), 0);
  std::fputs("frames: 2", stream);
  std::fclose(stream);
  ASSERT_EQ(_wfopen_s(&stream, path.c_str(), L"r"), 0);
  EXPECT_EQ(std::fgetc(stream), 'f');
  std::FILE* const open = stream;
  EXPECT_EQ(_wfopen_s(&stream, L"/nowhere/at/all.fra", L"r"), ENOENT);
  EXPECT_EQ(stream, nullptr);
  stream = open;
  EXPECT_EQ(_wfopen_s(&stream, path.c_str(), L"x"), EINVAL);
  EXPECT_EQ(stream, nullptr);
  EXPECT_EQ(_wfopen_s(nullptr, path.c_str(), L"r"), EINVAL);
  std::fclose(open);
}

TEST_F(FileStreams, RefusesModesThatAreNone) {
  EXPECT_EQ(_wfopen(L"/tmp", L""), nullptr);
  EXPECT_EQ(_wfopen(L"/tmp", L"x"), nullptr);
  EXPECT_EQ(_wfopen(nullptr, L"r"), nullptr);
}

}  // namespace
}  // namespace standin

// The writer's stream, its limits, and what it keeps of the process's state.
#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <filesystem>
#include <string>

#include "scene/vntScene_api_file.h"
#include "tests/scene/scene_test_support.h"
#include "tests/support/temporary_folder.h"

namespace rendara {
namespace {

using testing::readFile;
using testing::written;

constexpr std::size_t kTextLimit = 1048575;

TEST(WriterLimits, FormattedTextOf4095Characters) {
  const std::string text(5000, 'x');
  EXPECT_EQ(written([&](vntScene_api& scene) { scene.writeFormatted("%s", text.c_str()); }), std::string(4095, 'x'));
}

TEST(WriterLimits, BlanksDoNotCount) {
  const std::string lines(4095, '\n');
  std::string expected = "\ngroup \"g\" {\n";
  for (std::size_t i = 0; i < lines.size(); ++i) expected += "  \n";
  expected += "}\n";
  EXPECT_EQ(written([&](vntScene_api& scene) {
              scene.beginGroup("g", true);
              scene.writeFormatted("%sx", lines.c_str());
              scene.endGroup();
            }),
            expected);
}

TEST(WriterLimits, OnePrinterCallOf1048575Characters) {
  const std::string name(kTextLimit + 10, 'n');
  const std::string fits(kTextLimit - 2, 'n');
  EXPECT_EQ(written([&](vntScene_api& scene) {
              scene.instance(name.c_str());  // the quote at the end is cut too
              scene.instance(fits.c_str());
            }),
            "instance \"" + name.substr(0, kTextLimit - 1) + "\ninstance \"" + fits + "\"\n");

  // The hexadecimal form is written byte by byte.
  const std::string accented(kTextLimit, '\xe9');
  std::string digits;
  for (std::size_t i = 0; i < accented.size(); ++i) digits += "e9";
  EXPECT_EQ(written([&](vntScene_api& scene) { scene.instance(accented.c_str()); }), "instance xX" + digits + "\n");
}

TEST(WriterLimits, CapturedTextIsCutBeforeItsBlanks) {
  constexpr std::size_t kLines = 300;
  const std::string line = std::string(4094, 'x') + "\n";
  std::string all = "\"s\" {\n";
  for (std::size_t i = 0; i < kLines; ++i) all += "  " + line;
  ASSERT_GT(all.size(), kTextLimit);
  std::string expected = "\ngroup \"g\" {\n  surface   ";
  for (const char character : all.substr(0, kTextLimit)) {
    expected += character;
    if (character == '\n') expected += "  ";
  }
  EXPECT_EQ(written([&](vntScene_api& scene) {
              scene.beginGroup("g", true);
              scene.beginShader(nullptr, "s");
              for (std::size_t i = 0; i < kLines; ++i) scene.writeFormatted("%s", line.c_str());
              const CaptureBuffer* buffer = scene.currentCapture();
              scene.endShader(0);
              scene.shader(0, buffer);
              scene.endGroup();
            }),
            expected + "  \n}\n");
}

TEST(WriterLimits, ArraysOfAnySize) {
  const std::vector<int> integers(600000, 1234567);
  const std::array<const char*, 2> strings = {"short", "next"};
  std::string expected = "p [ ";
  for (std::size_t i = 0; i < integers.size(); ++i) {
    expected += i + 1 < integers.size() ? "1234567," : "1234567 ";
    if (i > 0 && i % 8 == 0) expected += '\n';
  }
  expected += "] \n";
  EXPECT_EQ(written([&](vntScene_api& scene) {
              scene.beginOutput("", "", "");
              scene.endOutput();
              const SceneArray array = {integers.data(), static_cast<int>(integers.size())};
              scene.parameter("p", arrayOf(kInt), &array);
              const SceneArray texts = {strings.data(), 2};
              scene.parameter("t", arrayOf(kString), &texts);
            }),
            "output \"\" \"\" \"\" {\n}\n" + expected + "t [ short,next ] \n");
}

class WriterStream : public ::testing::Test {
 protected:
  void SetUp() override {
    path_ = (folder_.path() / "scene.rpk").string();
    stream_ = std::fopen(path_.c_str(), "wb+");
    ASSERT_NE(stream_, nullptr);
  }

  testing::TemporaryFolder folder_;
  std::string path_;
  std::FILE* stream_ = nullptr;
};

TEST_F(WriterStream, ReadersSeeEveryFinishedOperation) {
  vntScene_api_file writer(stream_, true);
  const std::array<int, 2> values = {1, 2};
  const SceneArray array = {values.data(), 2};
  std::size_t seen = 0;
  const auto grew = [&] {
    const std::size_t size = readFile(path_).size();
    const bool result = size > seen;
    seen = size;
    return result;
  };
  writer.writeFormatted("// header\n");
  EXPECT_TRUE(grew());
  writer.beginGroup("g", true);
  EXPECT_TRUE(grew());
  writer.parameter("p", kInt, values.data());
  EXPECT_TRUE(grew());
  writer.parameter("p", arrayOf(kInt), &array);
  EXPECT_TRUE(grew());
  writer.beginArray("a");
  EXPECT_TRUE(grew());
  writer.arrayValue(kString, "text");
  EXPECT_TRUE(grew());
  writer.endArray();
  EXPECT_TRUE(grew());
  writer.progress("p", 1);
  EXPECT_TRUE(grew());
  writer.endGroup();
  EXPECT_TRUE(grew());
}

TEST_F(WriterStream, IsClosedOnDestruction) {
  { const vntScene_api_file writer(stream_, true); }
  // The lowest free descriptor is handed out again, so an open stream would keep it.
  const auto openFiles = [] {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
  };
  const auto before = openFiles();
  {
    const vntScene_api_file writer(std::fopen(path_.c_str(), "wb+"), true);
    EXPECT_EQ(openFiles(), before + 1);
  }
  EXPECT_EQ(openFiles(), before);
}

TEST(WriterWithoutStream, KeepsItsState) {
  vntScene_api_file writer(nullptr, true);
  EXPECT_TRUE(writer.beginGroup("g", true));
  EXPECT_TRUE(writer.beginCamera("c"));
  EXPECT_FALSE(writer.beginOptions());
  writer.endCamera();
  EXPECT_TRUE(writer.beginShader(nullptr, "s"));
  const CaptureBuffer* buffer = writer.currentCapture();
  ASSERT_NE(buffer, nullptr);
  EXPECT_STREQ(buffer->label, "ERROR");
  const int one = 1;
  EXPECT_TRUE(writer.parameter("p", kInt, &one));
  writer.endShader(0);
  EXPECT_EQ(std::string(buffer->data, static_cast<std::size_t>(buffer->length)), "\"s\" {\n  \"p\" 1,\n}");
  EXPECT_FALSE(buffer->holdsRawBytes);
  EXPECT_GE(buffer->capacity, buffer->length);
  writer.shader(0, buffer);
  writer.endGroup();
}

TEST(WriterLocale, NumericLocaleComesBack) {
  if (std::setlocale(LC_NUMERIC, "C.UTF-8") == nullptr) GTEST_SKIP() << "no second locale here";
  const std::string before = std::setlocale(LC_NUMERIC, nullptr);
  {
    const vntScene_api_file writer(nullptr, false);
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
  }
  EXPECT_EQ(std::setlocale(LC_NUMERIC, nullptr), before);
  std::setlocale(LC_NUMERIC, "C");
}

// The locale may even change while the writer is there.
TEST(WriterLocale, NumbersHaveAPointInALocaleWithCommas) {
  const bool found = std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr ||
                     std::setlocale(LC_NUMERIC, "fr_FR.UTF-8") != nullptr ||
                     std::setlocale(LC_NUMERIC, "de_DE") != nullptr;
  if (!found) GTEST_SKIP() << "no locale with commas here";
  const std::string commas = std::setlocale(LC_NUMERIC, nullptr);
  const double half = 0.5;
  EXPECT_EQ(written([&](vntScene_api& scene) {
              std::setlocale(LC_NUMERIC, commas.c_str());
              scene.scale(&half, &half, &half);
              scene.parameter("p", kDouble, &half);
              scene.writeFormatted("%g\n", half);
            }),
            "scale 0.5 0.5 0.5\n\"p\" 0.5000000000000000,\n0.5\n");
  EXPECT_EQ(std::setlocale(LC_NUMERIC, nullptr), commas);
  std::setlocale(LC_NUMERIC, "C");
}

}  // namespace
}  // namespace rendara

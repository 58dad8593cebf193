#include "settings/frame_file.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "settings/animation.h"
#include "settings/number_reading.h"
#include "tests/settings/scanned_frames.h"
#include "tests/support/temporary_folder.h"

namespace rendara {
namespace {

using testing::sameFrames;
using namespace std::string_literals;

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

File fileOf(std::string_view text) {
  File file(std::tmpfile());
  if (file == nullptr || std::fwrite(text.data(), 1, text.size(), file.get()) != text.size()) {
    throw std::runtime_error("cannot make a temporary file");
  }
  return file;
}

AnimationFrames framesOf(std::string_view text) {
  AnimationFrames frames;
  frames.animationFrames[{1}];
  frames.animationFrameCount = 3;
  const File file = fileOf(text);  // stands at its end
  readFrameFile(file.get(), frames);
  return frames;
}

AnimationFrames scannedFramesOf(std::string_view text) {
  AnimationFrames frames;
  const File file = fileOf(text);
  std::rewind(file.get());
  testing::scanFrames(file.get(), frames);
  return frames;
}

// Some C libraries refuse a number that is cut in the middle, others take what is there, as the reader does.
bool libraryTakesCutNumbers() {
  float value = 0;
  return std::sscanf("1e+ ", "%f", &value) == 1;
}

const std::string kHeader = "parts: 2 frames: 3\nMaFrame 0\n";
const std::string kTurn = " 1 0 0 0 1 0 0 0 1 ";

// Two frames of a component, so that it moves.
std::string record(const std::string& path, const std::string& numbers = "1 2 3 4 5 6 7 8 9 10 11 12") {
  return "Part: " + path + " " + numbers + "\n" + "Part: " + path + " 0 0 0 0 0 0 0 0 0 0 0 0\n";
}

TEST(FrameFile, FillsTheFirstThreeColumnsRowByRow) {
  const AnimationFrames frames = framesOf(kHeader + record("3 (5 7 9)"));
  ASSERT_EQ(frames.animationFrames.size(), 1U);
  const auto& [path, placements] = *frames.animationFrames.begin();
  EXPECT_EQ(path, (std::vector<int>{5, 7, 9}));
  ASSERT_EQ(placements.size(), 2U);
  EXPECT_EQ(placements[0].matrix(), (Matrix{1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 1}));
  EXPECT_EQ(placements[1].matrix(), (Matrix{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ(frames.animationFrameCount, 3);
  EXPECT_EQ(frames.animationFrameRate, 25);
}

TEST(FrameFile, HeaderCountAndRecordsAreIndependent) {
  std::string text = "parts: 9 frames: 10 MaFrame 0\n";
  for (int i = 0; i < 12; ++i) text += "Part: 1 (4)" + kTurn + std::to_string(i) + " 0 0\n";
  const AnimationFrames frames = framesOf(text);
  EXPECT_EQ(frames.animationFrameCount, 10);
  ASSERT_EQ(frames.animationFrames.count({4}), 1U);
  EXPECT_EQ(frames.animationFrames.at({4}).size(), 12U);
}

TEST(FrameFile, ComponentsThatStandStillAreLeftOut) {
  std::string text = kHeader;
  for (const char* zero : {"0", "-0", "0", "0"}) {
    text += "Part: 1 (1)" + kTurn + "1 2 3\n";                                   // the same in every frame
    text += "Part: 1 (2)" + kTurn + "1 2 " + zero + "\n";                        // but for the sign of a zero
    text += "Part: 1 (3)" + kTurn + "nan 0 0\n";                                 // equal to nothing
    text += "Part: 1 (4)" + kTurn + "1 2 " + (*zero == '-' ? "3" : "0") + "\n";  // moves once, and back
  }
  text += "Part: 1 (5)" + kTurn + "nan 0 0\n";  // once only
  const AnimationFrames frames = framesOf(text);
  EXPECT_EQ(frames.animationFrames.size(), 2U);
  ASSERT_EQ(frames.animationFrames.count({3}), 1U);
  EXPECT_EQ(frames.animationFrames.at({3}).size(), 4U);
  EXPECT_EQ(frames.animationFrames.count({4}), 1U);
  EXPECT_TRUE(sameFrames(frames, scannedFramesOf(text)));
}

TEST(FrameFile, CountsAreBounded) {
  for (const auto& [text, count] : {std::pair{"-4", 0},
                                    {"0", 0},
                                    {"+7", 7},
                                    {"1000001", 1'000'000},
                                    {"99999999999999999999", 1'000'000},
                                    {"-99999999999999999999", 0},
                                    {"x", 0}}) {
    EXPECT_EQ(framesOf("parts: 1 frames: "s + text + " MaFrame 0").animationFrameCount, count) << text;
  }
}

// What is complete until the reading ends: the identifiers that are found.
struct Odd {
  std::string what;
  std::string text;
  std::vector<int> found;  // the first identifiers of the paths
};

std::vector<Odd> oddTexts() {
  const std::string good = record("1 (5)");
  const std::string later = record("1 (6)");
  const std::string path25 = "(1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25";
  return {
      {"nothing", "", {}},
      {"no parts", "frames: 3 MaFrame 0 " + good, {}},
      {"no frames", "parts: 3 MaFrame 0 " + good, {}},
      {"no frame begins", "parts: 3 frames: 3 " + good, {}},
      {"header without numbers", "parts: x frames: 3 MaFrame 0 " + good, {}},
      {"frame without a number", "parts: 3 frames: 3 MaFrame Part: 0 " + good, {}},
      {"words as beginnings of others", "parts:3 parts: 3 frames:: frames: 3 MaFrames MaFrame 0 " + good, {5}},
      {"comments and quotes", kHeader + "# Part:x \"Part:\" xPart: Part :\n" + good, {5}},
      {"a word among others", kHeader + "see Part: no " + good, {}},
      {"CRLF", "parts: 2\r\nframes: 3\r\nMaFrame 0\r\nPart:\r\n1\r\n(5)\r\n1 2 3 4 5 6 7 8 9 10 11 12\r\n" + good, {5}},
      {"all white space", kHeader + "Part:\v1\f(5)\t1\v2\f3 4 5 6 7 8 9 10 11 12" + "\v" + good, {5}},
      {"a token of 300 characters", kHeader + std::string(300, 'x') + "\n" + good, {5}},
      {"a word at the end of a split token", kHeader + std::string(255, 'x') + good, {5}},
      {"a word that a split token tears", kHeader + std::string(253, 'x') + good + later, {6}},
      {"NUL in a word", kHeader + "Part:\0z 1 (5) 1 2 3 4 5 6 7 8 9 10 11 12 "s + good, {5}},
      {"NUL before a word", kHeader + "\0Part: 1 (4) 1 2 3 4 5 6 7 8 9 10 11 12 "s + good, {5}},
      {"NUL behind a number", kHeader + "Part: 1\0 (5) "s + good, {}},
      {"no blanks around the parentheses", kHeader + record("1(5)") + record("2(6 7)") + record("3(7 8 9)"), {5, 6, 7}},
      {"blanks behind the opening", kHeader + record("1 ( 5)") + record("2 (\n6\t7)"), {5, 6}},
      {"no closing", kHeader + record("1 (5") + record("2 (6 7") + record("3 (7 8 9"), {5, 6, 7}},
      {"a blank before the closing", kHeader + good + record("1 (6 )"), {5}},
      {"no opening", kHeader + good + record("1 6)"), {5}},
      {"commas", kHeader + good + record("2 (6,7)"), {5}},
      {"more identifiers than counted", kHeader + good + record("1 (6 7)"), {5}},
      {"fewer identifiers than counted", kHeader + good + record("3 (6 7)"), {5}},
      {"signs", kHeader + record("+1 (-5)") + record("1 (+6)", "+1 -2 +.3 4. 5 6 7 8 9 1 2 3"), {-5, 6}},
      {"large identifiers",
       kHeader + record("1 (99999999999)") + record("1 (-99999999999999999999999)"),
       {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}},
      {"no identifiers", kHeader + record("0 (7 8)") + good, {5}},
      {"a negative count", kHeader + record("-3 (7 8)") + good, {5}},
      {"25 identifiers", kHeader + record("25 " + path25 + ")") + good, {1, 5}},
      {"26 identifiers", kHeader + record("26 " + path25 + " 26)") + good, {5}},
      {"a count beyond the file", kHeader + good + record("2147483647 (7 8)"), {5}},
      {"a number too many", kHeader + record("1 (5)", "1 2 3 4 5 6 7 8 9 10 11 12 13") + later, {5, 6}},
      {"a number too few", kHeader + good + "Part: 1 (6) 1 2 3 4 5 6 7 8 9 10 11 Part: 1 (6)" + later, {5}},
      {"a word for a number", kHeader + good + "Part: 1 (6) 1 2 3 4 x " + later, {5}},
      {"cut in a record", kHeader + good + "Part: 1 (6) 1 2 3", {5}},
      {"numbers of all kinds",
       kHeader + record("1 (5)", "0x1.8p1 -0XFFp-3 inf -Infinity nan 1e39 -1e39 1e-50 1e-42 0x1p-149 1.5E+3 00012"),
       {5}},
      {"the mark of a hexadecimal number alone", kHeader + good + record("1 (6)", "0x 2 3 4 5 6 7 8 9 10 11 12"), {5}},
      {"comma as decimal point", kHeader + good + record("1 (6)", "1,5 2 3 4 5 6 7 8 9 10 11 12"), {5}},
      {"half an infinity", kHeader + good + record("1 (6)", "infin 2 3 4 5 6 7 8 9 10 11 12"), {5}},
  };
}

TEST(FrameFile, OddFiles) {
  for (const Odd& odd : oddTexts()) {
    const AnimationFrames frames = framesOf(odd.text);
    std::vector<int> found;
    for (const auto& entry : frames.animationFrames) found.push_back(entry.first.front());
    EXPECT_EQ(found, odd.found) << odd.what;
    EXPECT_TRUE(sameFrames(frames, scannedFramesOf(odd.text))) << odd.what;
  }
}

TEST(FrameFile, LongNumbersAndBlanksAcrossBlocks) {
  const std::string zeros(4000, '0');
  for (const std::size_t blanks : {65000U, 65530U, 65536U, 131060U}) {
    const std::string numbers = fmt::format("{}1.{:3<90}{:{}}2 3 4 5 6 7 8 9 10 11 12", zeros, "", "", blanks);
    const std::string text = kHeader + record(fmt::format("1 ({}5)", zeros), numbers);
    const AnimationFrames frames = framesOf(text);
    EXPECT_EQ(frames.animationFrames.count({5}), 1U);
    EXPECT_TRUE(sameFrames(frames, scannedFramesOf(text)));
  }
  EXPECT_TRUE(framesOf(kHeader + record(fmt::format("1 ({0}{0}5)", zeros))).animationFrames.empty());
}

TEST(FrameFile, AFailureToReadIsTheEndOfTheFile) {
  const File file(std::fopen("/dev/null", "w"));
  AnimationFrames frames;
  frames.animationFrames[{1}];
  readFrameFile(file.get(), frames);
  EXPECT_TRUE(frames.animationFrames.empty());
}

TEST(FrameFile, NumbersAreFreeOfTheLocale) {
  const std::string text = kHeader + record("1 (5)", "1.5 0x1.8p1 3.25e2 4 5 6 7 8 9 0.1 1234567890.12345678901 12");
  const AnimationFrames expected = framesOf(text);
  ASSERT_EQ(expected.animationFrames.size(), 1U);
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "no locale with commas";
  const AnimationFrames frames = framesOf(text);
  std::setlocale(LC_ALL, "C");
  EXPECT_TRUE(sameFrames(frames, expected));
  EXPECT_EQ(frames.animationFrames.at({5}).front().numbers[0], 1.5F);
}

class Maker {
 public:
  explicit Maker(unsigned seed) : random_(seed) {}
  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(random_() % bound); }

  // Numbers of many shapes; those in the middle between two floats and next to it are the hard ones.
  std::string number() {
    const double value = std::ldexp(static_cast<double>(random_()), -static_cast<int>(below(40)));
    const float single = std::bit_cast<float>(static_cast<std::uint32_t>(random_()));
    const double middle = (static_cast<double>(single) + static_cast<double>(std::nextafterf(single, INFINITY))) / 2;
    switch (below(10)) {
      case 0:
        return fmt::format("{:.6f}", value / 1e4);
      case 1:
        return fmt::format("{:g}", -value);
      case 2:
        return fmt::format("{:.{}e}", value, below(20));
      case 3:
        return fmt::format("{:.17g}", std::nextafter(middle, below(2) == 0 ? 0.0 : INFINITY));
      case 4:
        return fmt::format("{:.30f}", middle);
      case 5:
        return fmt::format("{:.9g}", single);
      case 6:
        return fmt::format("{:a}", value);
      case 7:
      case 8:  // as a program prints them
        return fmt::format("{}{}.{:06}", below(2) == 0 ? "-" : "", below(1000) >> (3 * below(4)), below(1'000'000));
      default:
        return std::to_string(below(3));
    }
  }

  // Mostly a component stays where it is, then it may be written in another way.
  std::string file(std::size_t components, std::size_t frames, bool plain) {
    std::vector<std::string> numbers(components);
    std::string text = fmt::format("Motion\nparts: {}\nframes: {}\n", components, frames);
    for (std::size_t frame = 0; frame < frames; ++frame) {
      text += fmt::format("MaFrame {}\n", frame);
      for (std::size_t part = 0; part < components; ++part) {
        text += fmt::format("Part: {} (", part % 4 + 1);
        for (std::size_t i = 0; i <= part % 4; ++i) text += fmt::format("{}{}", i == 0 ? "" : " ", part + i);
        text += below(9) == 0 ? " " : ")";
        if (frame == 0 || (part % 2 == 0 && below(3) == 0)) {
          numbers[part].clear();
          for (int i = 0; i < 12; ++i) numbers[part] += " " + (plain ? std::to_string(below(4)) : number());
        }
        text += numbers[part] + (below(9) == 0 ? "0\n" : "\n");
      }
    }
    return text;
  }

  std::string damaged(std::string text) {
    static constexpr std::string_view kLetters = "0123456789 \n().+-exnaifp:Part,\0";
    for (std::size_t changes = 1 + below(4); changes > 0 && !text.empty(); --changes) {
      const std::size_t place = below(text.size());
      switch (below(5)) {
        case 0:
          text[place] = kLetters[below(kLetters.size())];
          break;
        case 1:
          text.insert(place, 1, kLetters[below(kLetters.size())]);
          break;
        case 2:
          text.erase(place, 1 + below(4));
          break;
        case 3:
          text.insert(place, text.substr(below(text.size()), below(30)));
          break;
        default:
          text[place] = static_cast<char>(random_());
      }
    }
    if (below(20) == 0) text.resize(below(text.size() + 1));
    return text;
  }

 private:
  std::mt19937_64 random_;
};

TEST(FrameFile, LargeFilesReadAsScanned) {
  for (unsigned seed = 1; seed <= 4; ++seed) {
    Maker maker(seed);
    const std::string text = maker.file(1 + maker.below(40), 100, false);
    ASSERT_GT(text.size(), 10'000U);
    EXPECT_TRUE(sameFrames(framesOf(text), scannedFramesOf(text))) << "seed " << seed;
  }
}

TEST(FrameFile, DamagedFilesReadAsScanned) {
  if (!libraryTakesCutNumbers()) GTEST_SKIP() << "the C library refuses numbers that are cut";
  std::size_t moving = 0;
  for (unsigned seed = 1; seed <= 4000; ++seed) {
    Maker maker(seed);
    const std::string text = maker.damaged(maker.file(1 + maker.below(3), 2 + maker.below(5), maker.below(2) == 0));
    const AnimationFrames frames = framesOf(text);
    moving += frames.animationFrames.size();
    ASSERT_TRUE(sameFrames(frames, scannedFramesOf(text))) << "seed " << seed << "\n" << text;
  }
  EXPECT_GT(moving, 2000U);  // the damage leaves something to compare
}

// Where a point of a component stands in a frame.
std::array<double, 3> placed(const std::array<double, 3>& point, const Matrix& frame) {
  std::array<double, 3> result{};
  for (std::size_t i = 0; i < 3; ++i) {
    result[i] = point[0] * frame[i] + point[1] * frame[4 + i] + point[2] * frame[8 + i] + frame[12 + i];
  }
  return result;
}

// The sample's crank drive (11), rods (12, 13) and the pistons (2) in its two cylinder units (14, 15) stay joined.
TEST(FrameFile, TheSampleIsAMechanism) {
  const AnimationFrames sample =
      framesOf(testing::readFile(std::filesystem::path(RENDARA_SOURCE_DIR) / "samples" / "twin_compressor.fra"));
  EXPECT_EQ(sample.animationFrameCount, 50);
  EXPECT_EQ(sample.animationFrames.size(), 7U);
  const auto& frames = sample.animationFrames;
  const auto expectJoined = [](const std::array<double, 3>& first, const std::array<double, 3>& second) {
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(first[i], second[i], 1e-4);
  };
  for (std::size_t frame = 0; frame < 50; ++frame) {
    const Matrix drive = frames.at({11}).at(frame).matrix();
    for (const auto& [rod, unit, throwOffset, radius] : {std::tuple{12, 14, 18.0, 22.0}, {13, 15, -18.0, -22.0}}) {
      const Matrix rodFrame = frames.at({rod}).at(frame).matrix();
      expectJoined(placed({throwOffset, radius, 0}, drive), placed({0, 0, 0}, rodFrame));
      expectJoined(placed({0, 85, 0}, rodFrame), placed({0, 0, 0}, frames.at({unit, 2}).at(frame).matrix()));
    }
  }
}

}  // namespace
}  // namespace rendara

// The program's command, by its exit codes, what it says and the files it leaves.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/rpk/package_text.h"
#include "tests/support/temporary_folder.h"
#include "tools/rpk/app/program.h"
#include "tools/rpk/image_file.h"

namespace {

using rendara::testing::readFile;
using rendara::testing::writeFile;
using rpk::ExitCode;

struct Outcome {
  ExitCode code;
  std::string said;   // on standard output
  std::string error;  // on standard error
};

Outcome run(const std::vector<std::string>& words) {
  std::vector<const char*> arguments = {"rpk", "picture"};
  for (const std::string& word : words) arguments.push_back(word.c_str());
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const ExitCode code = rpk::runProgram(static_cast<int>(arguments.size()), arguments.data());
  return {code, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

// A square in the plane z = 0 with a texture, and nothing else.
std::string plate(const std::string& texture) {
  return "//---vantor:dal:7---\ngroup \"plate\" {\n  group \"plate.prt\" {\n    object \"plate\" {\n"
         "      geometry \"triangles\" {\n        \"vertices\" [ " +
         rpk_test::packedFloats('c', {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}) + "] ,\n        \"uv_tex\" [ " +
         rpk_test::packedFloats('f', {0, 0, 1, 0, 1, 1, 0, 1}) + "] ,\n        \"triangles\" [ " +
         rpk_test::packedIntegers({0, 1, 2, 0, 2, 3}) +
         "] ,\n      }\n      material \"plate:blue:26:26:204\" {\n        surface \"vnt_advanced\" {\n"
         "          \"diffuse\" 0.1 0.1 0.8,\n          \"diffuse\" ! \"texture_rgb\" {\n            \"wrap\" on,\n"
         "            \"texture\" \"" +
         texture + "\",\n          }          ,\n        }\n      }\n    }\n  }\n}\n";
}

TEST(PictureCommand, TellsHowItEnded) {
  const rendara::testing::WorkingFolder folder;
  writeFile("pump.rpk", rpk_test::pumpPackage());
  const std::string pump = rpk_test::pumpPackage();
  writeFile("cut.rpk", pump.substr(0, pump.rfind("rotor.prt")));
  writeFile("empty.rpk", "//---vantor:dal:7---\ngroup \"a\" {\n}\n");
  writeFile("note.rpk", "a note");
  std::filesystem::create_directory("folder.png");
  const struct {
    std::vector<std::string> words;
    ExitCode code;
    const char* error;
  } cases[] = {
      {{"pump.rpk", "new.png", "--size", "40x30"}, ExitCode::kDone, ""},
      {{"pump.rpk", "back.PNG", "--size", "9x7", "--camera", "back", "--edges"}, ExitCode::kDone, ""},
      {{"pump.rpk", "own.png", "--size", "9x7", "--camera", "Current Creo camera"}, ExitCode::kDone, ""},
      {{"pump.rpk", "/dev/null", "--size", "1x1"}, ExitCode::kDone, ""},
      {{"cut.rpk", "cut.png", "--size", "9x7"}, ExitCode::kFound, "what could be read is drawn"},
      {{"none.rpk", "x.png"}, ExitCode::kUnreadable, "none.rpk"},
      {{"note.rpk", "x.png"}, ExitCode::kUnreadable, "not a package"},
      {{"pump.rpk", "x.png", "--camera", "Curent Creo camera"}, ExitCode::kUsage, "did you mean Current Creo camera?"},
      {{"pump.rpk", "x.png", "--camera", "sideways"},
       ExitCode::kUsage,
       "there are iso, front, back, left, right, top, "},
      {{"pump.rpk", "x.png", "--size", "40"}, ExitCode::kUsage, "1600x1000"},
      {{"pump.rpk", "x.png", "--size", "0x10"}, ExitCode::kUsage, "0x10"},
      {{"pump.rpk", "x.png", "--size", "-4x10"}, ExitCode::kUsage, "-4x10"},
      {{"pump.rpk", "x.png", "--size", "40x30x2"}, ExitCode::kUsage, "40x30x2"},
      {{"pump.rpk", "x.png", "--size", "99999999999x1"}, ExitCode::kUsage, "99999999999x1"},
      {{"pump.rpk", "x.png", "--size", "16384x16384"}, ExitCode::kUsage, "too large"},
      {{"pump.rpk", "x.png", "--time", "1", "--frames", "2"}, ExitCode::kUsage, "exclude"},
      {{"pump.rpk", "x.png", "--time", "nan"}, ExitCode::kUsage, "seconds"},
      {{"pump.rpk", "x.png", "--frames", "0"}, ExitCode::kUsage, "one picture"},
      {{"pump.rpk", "x.png", "--frames", "2000000000"}, ExitCode::kUsage, "too large"},
      {{"pump.rpk", "x.jpg"}, ExitCode::kUsage, "*.png"},
      {{"pump.rpk", "pump.rpk"}, ExitCode::kUsage, "pump.rpk"},
      {{"pump.rpk", "x.png", "--edge"}, ExitCode::kUsage, "--edges"},
      {{"pump.rpk"}, ExitCode::kUsage, "OUT"},
      {{"empty.rpk", "x.png"}, ExitCode::kOutput, "nothing to draw"},
      {{"pump.rpk", "folder.png", "--size", "9x7"}, ExitCode::kOutput, "folder.png"},
      {{"pump.rpk", "no/such/x.png", "--size", "9x7"}, ExitCode::kOutput, "no/such/x.png"},
      {{"pump.rpk", "/dev/full", "--size", "9x7"}, ExitCode::kOutput, "/dev/full"},
  };
  for (const auto& entry : cases) {
    SCOPED_TRACE(testing::PrintToString(entry.words));
    const Outcome outcome = run(entry.words);
    EXPECT_EQ(outcome.code, entry.code);
    EXPECT_NE(outcome.error.find(entry.error), std::string::npos) << outcome.error;
    EXPECT_LE(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1);
    EXPECT_EQ(outcome.said.empty(), outcome.code != ExitCode::kDone && outcome.code != ExitCode::kFound);
  }
  std::size_t files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(".")) ++files;
  EXPECT_EQ(files, 9U) << "nothing half-written stays";
  const auto image = rpk::decodeImage(readFile("new.png"));
  ASSERT_TRUE(image);
  EXPECT_EQ(image->width, 40U);
  EXPECT_EQ(image->height, 30U);
}

TEST(PictureCommand, FindsTexturesBesideThePackage) {
  const rendara::testing::WorkingFolder folder;
  std::filesystem::create_directory("models");
  writeFile("models/green.png", rpk::encodePng({1, 1, {0, 200, 0, 255}}));
  writeFile("models/bad.png", "no picture");
  const struct {
    const char* texture;
    bool found;
  } cases[] = {{"C:\\\\textures\\\\green.png", true},
               {"/no/such/green.png", true},
               {"models/green.png", true},
               {"missing.png", false},
               {"bad.png", false},
               {"/dev/zero", false}};
  for (const auto& entry : cases) {
    writeFile("models/plate.rpk", plate(entry.texture));
    const Outcome outcome = run({"models/plate.rpk", "plate.png", "--size", "20x20", "--camera", "front"});
    EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.error;
    EXPECT_EQ(outcome.error.empty(), entry.found) << outcome.error;
    const auto image = rpk::decodeImage(readFile("plate.png"));
    ASSERT_TRUE(image);
    const std::uint8_t* middle = image->at(10, 10);
    EXPECT_GT(middle[entry.found ? 1 : 2], 180) << entry.texture;
    EXPECT_LT(middle[entry.found ? 2 : 1], 60) << entry.texture;
  }
}

// The plate goes to the right; the camera looks on as at rest.
TEST(PictureCommand, DrawsAMovingModelAtATime) {
  const rendara::testing::WorkingFolder folder;
  const std::string rest = plate("none.png");
  const std::string object = "    object \"plate\"";
  std::string moving = rest;
  moving.insert(moving.find(object),
                "    animation \"fbx_animation\" \"plate\" {\n      \"matrices\" [\n"
                "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1,\n1 0 0 0 0 1 0 0 0 0 1 0 0.5 0 0 1 ],\n"
                "      \"timestamps\" [\n0, 1000 ],\n    }\n");
  writeFile("rest.rpk", rest);
  writeFile("moving.rpk", moving);
  const auto drawn = [](const std::string& package, const std::vector<std::string>& options) {
    std::vector<std::string> words = {package, "out.png", "--size", "40x40", "--camera", "front"};
    words.insert(words.end(), options.begin(), options.end());
    EXPECT_EQ(run(words).code, ExitCode::kDone);
    return rpk::decodeImage(readFile("out.png")).value_or(rpk::Image{});
  };
  const rpk::Image resting = drawn("rest.rpk", {});
  EXPECT_EQ(drawn("moving.rpk", {}).pixels, resting.pixels);
  EXPECT_EQ(drawn("moving.rpk", {"--time", "0"}).pixels, resting.pixels);
  const rpk::Image end = drawn("moving.rpk", {"--time", "1"});
  EXPECT_NE(end.pixels, resting.pixels);
  const Outcome still = run({"rest.rpk", "x.png", "--time", "1"});
  EXPECT_EQ(still.code, ExitCode::kUsage);
  EXPECT_NE(still.error.find("nothing moves"), std::string::npos) << still.error;
  const rpk::Image strip = drawn("moving.rpk", {"--frames", "2"});
  ASSERT_EQ(strip.width, 80U);
  ASSERT_EQ(strip.height, 40U);
  for (std::uint32_t y = 0; y < 40; ++y) {
    EXPECT_TRUE(std::equal(strip.at(0, y), strip.at(40, y), resting.at(0, y)));
    EXPECT_TRUE(std::equal(strip.at(40, y), strip.at(40, y) + 160, end.at(0, y)));
  }
}

}  // namespace

// The program's command, by its exit codes and the files it leaves.
#include <gtest/gtest.h>

#include "tests/rpk/package_text.h"
#include "tests/support/temporary_folder.h"
#include "tools/rpk/app/program.h"

namespace {

using rendara::testing::readFile;
using rendara::testing::writeFile;
using rpk::ExitCode;

ExitCode run(const char* file, const char* output) {
  const char* arguments[] = {"rpk", "gltf", file, output};
  return rpk::runProgram(4, arguments);
}

TEST(GltfCommand, TellsHowItEnded) {
  const rendara::testing::WorkingFolder folder;
  writeFile("pump.rpk", rpk_test::pumpPackage());
  writeFile("cut.rpk", rpk_test::pumpPackage().substr(0, 2000));
  writeFile("note.rpk", "a note");
  writeFile("old.glb", "what was there");
  std::filesystem::create_directory("folder");
  std::filesystem::create_symlink("old.glb", "link.glb");
  const struct {
    const char* file;
    const char* output;
    ExitCode code;
  } cases[] = {
      {"pump.rpk", "new.glb", ExitCode::kDone},        {"pump.rpk", "link.glb", ExitCode::kDone},
      {"cut.rpk", "cut.glb", ExitCode::kFound},        {"none.rpk", "none.glb", ExitCode::kUnreadable},
      {"note.rpk", "none.glb", ExitCode::kUnreadable}, {"pump.rpk", "pump.rpk", ExitCode::kUsage},
      {"pump.rpk", "folder", ExitCode::kOutput},       {"pump.rpk", "no/such/folder.glb", ExitCode::kOutput},
      {"pump.rpk", "/dev/full", ExitCode::kOutput},    {"pump.rpk", "/dev/null", ExitCode::kDone},
  };
  for (const auto& entry : cases) EXPECT_EQ(run(entry.file, entry.output), entry.code) << entry.file << entry.output;

  EXPECT_TRUE(std::filesystem::is_symlink("link.glb"));
  EXPECT_EQ(readFile("old.glb"), readFile("new.glb")) << "a link is followed";
  EXPECT_EQ(readFile("pump.rpk"), rpk_test::pumpPackage());
  std::size_t files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(".")) ++files;
  EXPECT_EQ(files, 8U) << "nothing half-written stays";
}

}  // namespace

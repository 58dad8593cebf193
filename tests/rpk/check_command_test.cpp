// rpk check as a user meets it: exit status, text, JSON.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/rpk/command_run.h"
#include "tests/rpk/whole_package.h"
#include "tests/support/temporary_folder.h"

namespace {

using rendara::testing::WorkingFolder;
using rpk::ExitCode;
using rpk_test::CommandRun;
using rpk_test::runCommand;

class CheckCommand : public testing::Test {
 protected:
  CheckCommand() {
    const std::string whole = rpk_test::wholePackage();
    rendara::testing::writeFile("whole.rpk", whole);
    std::string text = whole;
    rendara::testing::writeFile("faulty.rpk",
                                text.replace(text.find("\"plate.prt\",\n      }"), 11, "\"\x1b[31mx\xff\""));
    text = whole;
    rendara::testing::writeFile("doubtful.rpk", text.erase(text.find("  \"ext\" off,\n"), 13));
    rendara::testing::writeFile("other.rpk", "solid cube\n");
  }

 private:
  WorkingFolder folder_;
};

TEST_F(CheckCommand, EndsWithItsStatus) {
  EXPECT_EQ(runCommand("check", {"whole.rpk"}).code, ExitCode::kDone);
  EXPECT_EQ(runCommand("check", {"--strict", "whole.rpk"}).code, ExitCode::kDone);
  EXPECT_EQ(runCommand("check", {"doubtful.rpk"}).code, ExitCode::kDone);
  EXPECT_EQ(runCommand("check", {"--strict", "doubtful.rpk"}).code, ExitCode::kFound);
  EXPECT_EQ(runCommand("check", {"faulty.rpk"}).code, ExitCode::kFound);
  EXPECT_EQ(runCommand("check", {"other.rpk"}).code, ExitCode::kUnreadable);
  EXPECT_EQ(runCommand("check", {"missing.rpk"}).code, ExitCode::kUnreadable);
  EXPECT_EQ(runCommand("check", {}).code, ExitCode::kUsage);
}

TEST_F(CheckCommand, TellsOneLineForEachFinding) {
  const CommandRun quiet = runCommand("check", {"--quiet", "faulty.rpk"});
  EXPECT_EQ(quiet.output + quiet.errors, "");
  EXPECT_EQ(runCommand("check", {"whole.rpk"}).output,
            "whole.rpk: 0 faults, 0 warnings, 0 notes in 6 groups, 2 meshes, 4 triangles, 1 exact surface\n");
  const std::string place = std::to_string(rpk_test::wholePackage().find("load \"vntrtopt.so\""));
  EXPECT_EQ(runCommand("check", {"doubtful.rpk"})
                .output.find("doubtful.rpk:8 (offset " + place + ") load \"vntrtopt.so\": warning: "),
            0U);
  const std::string output = runCommand("check", {"faulty.rpk"}).output;
  EXPECT_EQ(output.find_first_of("\x1b\xff"), std::string::npos);  // nothing of the file reaches the terminal raw
}

TEST_F(CheckCommand, WritesJson) {
  const auto json = nlohmann::json::parse(runCommand("check", {"--json", "faulty.rpk"}).output);
  EXPECT_EQ(json["file"], "faulty.rpk");
  EXPECT_EQ(json["good"], false);
  EXPECT_EQ(json["faults"], json["counts"]["bad-name"]);
  EXPECT_EQ(json["findings"][0]["kind"], "bad-name");
  EXPECT_EQ(json["findings"][0]["severity"], "fault");
  EXPECT_GT(json["findings"][0]["offset"], 1000);
}

}  // namespace

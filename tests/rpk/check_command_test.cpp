// rpk check as a user meets it: exit status, text, JSON.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/rpk/whole_package.h"
#include "tests/support/temporary_folder.h"
#include "tools/rpk/app/program.h"

namespace {

using rendara::testing::WorkingFolder;
using rpk::ExitCode;

struct Result {
  ExitCode code;
  std::string output;
  std::string errors;
};

Result run(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), {"rpk", "check"});
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const ExitCode code = rpk::runProgram(static_cast<int>(arguments.size()), arguments.data());
  return {code, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

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
  EXPECT_EQ(run({"whole.rpk"}).code, ExitCode::kDone);
  EXPECT_EQ(run({"--strict", "whole.rpk"}).code, ExitCode::kDone);
  EXPECT_EQ(run({"doubtful.rpk"}).code, ExitCode::kDone);
  EXPECT_EQ(run({"--strict", "doubtful.rpk"}).code, ExitCode::kFound);
  EXPECT_EQ(run({"faulty.rpk"}).code, ExitCode::kFound);
  EXPECT_EQ(run({"other.rpk"}).code, ExitCode::kUnreadable);
  EXPECT_EQ(run({"missing.rpk"}).code, ExitCode::kUnreadable);
  EXPECT_EQ(run({}).code, ExitCode::kUsage);
}

TEST_F(CheckCommand, TellsOneLineForEachFinding) {
  const Result quiet = run({"--quiet", "faulty.rpk"});
  EXPECT_EQ(quiet.output + quiet.errors, "");
  EXPECT_EQ(run({"whole.rpk"}).output,
            "whole.rpk: 0 faults, 0 warnings, 0 notes in 6 groups, 2 meshes, 4 triangles, 1 exact surface\n");
  const std::string place = std::to_string(rpk_test::wholePackage().find("load \"vntrtopt.so\""));
  EXPECT_EQ(run({"doubtful.rpk"}).output.find("doubtful.rpk:8 (offset " + place + ") load \"vntrtopt.so\": warning: "),
            0U);
  const std::string output = run({"faulty.rpk"}).output;
  EXPECT_EQ(output.find_first_of("\x1b\xff"), std::string::npos);  // nothing of the file reaches the terminal raw
}

TEST_F(CheckCommand, WritesJson) {
  const auto json = nlohmann::json::parse(run({"--json", "faulty.rpk"}).output);
  EXPECT_EQ(json["file"], "faulty.rpk");
  EXPECT_EQ(json["good"], false);
  EXPECT_EQ(json["faults"], json["counts"]["bad-name"]);
  EXPECT_EQ(json["findings"][0]["kind"], "bad-name");
  EXPECT_EQ(json["findings"][0]["severity"], "fault");
  EXPECT_GT(json["findings"][0]["offset"], 1000);
}

}  // namespace

#include "standin/app/program_options.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

#include "standin/app/failure.h"

namespace standin {
namespace {

ProgramOptions parse(std::initializer_list<const char*> arguments) {
  std::vector<const char*> all = {"creo-standin"};
  all.insert(all.end(), arguments);
  return parseOptions(static_cast<int>(all.size()), all.data());
}

std::string failureOf(std::initializer_list<const char*> arguments) {
  try {
    parse(arguments);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.code(), ExitCode::kUsage);
    return failure.what();
  }
  return "";
}

TEST(ProgramOptionsTest, ReadsAnExport) {
  const ProgramOptions options = parse({"export", "run", "o.rpk", "--no-nurbs", "--up", "-x", "--quality=0.5",
                                        "--shared-materials", "--overlay", "o.json", "--code-page", "932"});
  EXPECT_EQ(options.common.codePage, 932U);
  const auto& exported = std::get<ExportOptions>(options.command);
  EXPECT_EQ(exported.upAxis, "-x");
  EXPECT_EQ(exported.quality, "0.5");
  EXPECT_TRUE(exported.noNurbs);
  EXPECT_TRUE(exported.sharedMaterials);
  EXPECT_EQ(exported.overlay, "o.json");
  const ProgramOptions plain = parse({"--plugin", "p.so", "export", "run", "[o].rpk"});
  EXPECT_EQ(plain.common.plugin, "p.so");
  const auto& defaults = std::get<ExportOptions>(plain.command);
  EXPECT_EQ(defaults.model, "run") << "a file may be called as a command is";
  EXPECT_EQ(defaults.output, "[o].rpk");
  EXPECT_FALSE(defaults.noNurbs);
  EXPECT_FALSE(defaults.sharedMaterials);
  EXPECT_EQ(defaults.overlay, std::nullopt);
  EXPECT_EQ(defaults.quality, std::nullopt);
}

TEST(ProgramOptionsTest, ReadsARender) {
  const ProgramOptions options =
      parse({"render", "pump.step", "--quality", "0.5", "--representation", "core", "--fra", "m.fra"});
  const auto& rendered = std::get<RenderOptions>(options.command);
  EXPECT_EQ(rendered.model, "pump.step");
  EXPECT_EQ(rendered.quality, "0.5");
  EXPECT_EQ(rendered.representation, "core");
  EXPECT_EQ(rendered.frameFile, "m.fra");
  EXPECT_EQ(failureOf({"render", "pump.step", "out.rpk"}), "unexpected argument \"out.rpk\"");
}

TEST(ProgramOptionsTest, ReadsASnapshot) {
  const ProgramOptions options =
      parse({"snapshot", "pump.step", "pump.snap", "--quality", "0.5", "--overlay", "o.json"});
  const auto& saved = std::get<SnapshotOptions>(options.command);
  EXPECT_EQ(saved.model, "pump.step");
  EXPECT_EQ(saved.output, "pump.snap");
  EXPECT_EQ(saved.quality, "0.5");
  EXPECT_EQ(saved.overlay, "o.json");
  EXPECT_EQ(options.common.codePage, std::nullopt) << "what is opened may then say it";
}

TEST(ProgramOptionsTest, ReadsScripts) {
  EXPECT_EQ(std::get<ScriptOptions>(parse({"run", "a.txt"}).command).script, "a.txt");
  EXPECT_EQ(std::get<ScriptOptions>(parse({"run", "-"}).command).script, std::nullopt);
  EXPECT_EQ(std::get<ScriptOptions>(parse({}).command).script, std::nullopt);
}

TEST(ProgramOptionsTest, ReadsTheWindow) {
  EXPECT_EQ(std::get<WindowOptions>(parse({"--window", "pump.step"}).command).model, "pump.step");
  EXPECT_EQ(std::get<WindowOptions>(parse({"--window"}).command).model, std::nullopt);
  EXPECT_EQ(std::get<WindowOptions>(parse({"--window", "--code-page", "932"}).command).model, std::nullopt);
  EXPECT_EQ(failureOf({"--window", "pump.step", "export", "a", "b"}), "--window goes without a command");
}

TEST(ProgramOptionsTest, SaysWhatMayHaveBeenMeant) {
  EXPECT_EQ(failureOf({"exprot", "a", "b"}), "unknown command \"exprot\"; did you mean export?");
  EXPECT_EQ(failureOf({"export", "a", "b", "--no-nurb"}), "unknown option --no-nurb; did you mean --no-nurbs?");
  EXPECT_EQ(failureOf({"export", "--qualty=1", "a"}), "unknown option --qualty; did you mean --quality?")
      << "told before the argument that is missing then";
  EXPECT_EQ(failureOf({"--plugn", "x", "run", "a"}), "unknown option --plugn; did you mean --plugin?");
  EXPECT_EQ(failureOf({"export", "a", "b", "c"}), "unexpected argument \"c\"");
  EXPECT_EQ(failureOf({"--code-page", "latin"}), "--code-page cannot be \"latin\": a number");
  EXPECT_NE(failureOf({"export", "a"}).find("OUT"), std::string::npos);
}

}  // namespace
}  // namespace standin

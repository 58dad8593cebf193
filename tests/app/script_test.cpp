#include "standin/app/script.h"

#include <gtest/gtest.h>

#include <sstream>

#include "standin/app/component_lookup.h"
#include "standin/app/settings_file.h"
#include "tests/app/session_fixture.h"

namespace standin {
namespace {

using standin::testing::FakePlugin;
using standin::testing::kCompletePackage;
using standin::testing::packageToWrite;
using standin::testing::PairModel;

class ScriptTest : public ::testing::Test {
 protected:
  ScriptTest() { packageToWrite = kCompletePackage; }

  // What the line prints.
  std::string run(const std::string& line) {
    output_.str("");
    script_.execute(line);
    return output_.str();
  }
  // How the line fails; empty when it does not.
  std::string failureOf(const std::string& line, ExitCode code = ExitCode::kUsage) {
    try {
      script_.execute(line);
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.code(), code) << line;
      return failure.what();
    }
    return "";
  }
  static LoadResult readPair(Session& session, const std::filesystem::path& file, const LoadProgress&) {
    if (file.filename() != "pair.step") return {nullptr, "not a STEP file"};
    PairModel model(session);
    return {&model.pair, ""};
  }
  std::string id(const Feature& feature) const { return std::to_string(feature.id); }
  std::filesystem::path path(const std::string& name) const { return folder_.path() / name; }

  rendara::testing::TemporaryFolder folder_;
  Session session_;
  FakePlugin plugin_;
  terminal::Progress progress_{nullptr};
  Workbench bench_{session_, plugin_, progress_, folder_.path(), readPair};
  std::ostringstream output_;
  std::ostringstream errors_;
  Script script_{bench_, folder_.path() / SettingsFile::kName, output_};
};

TEST_F(ScriptTest, UnknownCommandsAndWrongArgumentsAreUsageErrors) {
  EXPECT_EQ(failureOf("opne x"), "no command \"opne\"; did you mean open?");
  EXPECT_EQ(failureOf("open"), "usage: open FILE [OVERLAY]");
  EXPECT_EQ(failureOf("quit now"), "usage: quit ");
  EXPECT_EQ(failureOf("help treee"), "no command \"treee\"; did you mean tree?");
  EXPECT_EQ(run("# nothing"), "");
  // No component command works without a model.
  EXPECT_EQ(failureOf("tree"), "no model is open");
  EXPECT_EQ(failureOf("hide 1"), "no model is open");
  EXPECT_EQ(failureOf("close"), "no model is open");
}

TEST_F(ScriptTest, HelpNamesEveryCommandThatItRuns) {
  const std::string help = run("help");
  for (const char* name : {"open", "tree", "answer", "representation", "pick", "layer", "colour", "set", "run"}) {
    EXPECT_NE(("\n" + help).find(std::string("\n") + name + " "), std::string::npos) << name;
    EXPECT_EQ(run(std::string("help ") + name).find(name), 0U);
  }
}

TEST_F(ScriptTest, OpensAndClosesModels) {
  rendara::testing::writeFile(path("pair.step"), "x");
  rendara::testing::writeFile(path("text.step"), "x");
  EXPECT_EQ(run("open pair.step"), "opened PAIR.asm\n");
  Model* const opened = session_.current;
  EXPECT_EQ(failureOf("open absent.step", ExitCode::kModel),
            path("absent.step").string() + ": No such file or directory");
  EXPECT_EQ(failureOf("open .", ExitCode::kModel), path(".").string() + ": Is a directory");
  EXPECT_EQ(failureOf("open text.step", ExitCode::kModel), path("text.step").string() + ": not a STEP file");
  EXPECT_NE(failureOf("open pair.step absent.json", ExitCode::kModel), "");
  // The model of before is still open after each of them.
  EXPECT_EQ(session_.current, opened);
  EXPECT_EQ(session_.mode, PRO_MODE_ASSEMBLY);
  run("close");
  EXPECT_EQ(session_.current, nullptr);
  EXPECT_EQ(session_.mode, PRO_MODE_UNUSED);
}

TEST_F(ScriptTest, TreeShowsIdsNamesAndStatusToTheDepth) {
  PairModel model(session_);
  model.first.status = PRO_FEAT_SUPPRESSED;
  model.second.hidden = true;
  model.axleInPair.component = nullptr;
  run("layer FRONT add " + id(model.second));
  run("layer FRONT blank");
  EXPECT_EQ(run("tree"), "PAIR.asm\n  " + id(model.first) + "  BLOCK.prt  (suppressed)\n  " + id(model.second) +
                             "  BLOCK.prt  (hidden, layer FRONT blanked)\n  " + id(model.axleInPair) +
                             "  model not in session\n");
  model.axleInPair.component = &model.axle;
  const std::string deep = "    " + id(model.rodInAxle) + "  ROD.prt\n";
  EXPECT_NE(run("tree").find(deep), std::string::npos);
  EXPECT_EQ(run("tree 1").find(deep), std::string::npos);
  EXPECT_EQ(run("tree 0"), "PAIR.asm\n");
  EXPECT_EQ(failureOf("tree 1x"), "\"1x\" is not a depth");
}

TEST_F(ScriptTest, FindsComponentsByIdsAndNames) {
  PairModel model(session_);
  const std::vector<int> rodPath = {model.axleInPair.id, model.rodInAxle.id};
  EXPECT_EQ(findComponent(model.pair, id(model.axleInPair) + "/" + id(model.rodInAxle)).path, rodPath);
  EXPECT_EQ(findComponent(model.pair, "axle/Rod.PRT").path, rodPath);
  EXPECT_EQ(findComponent(model.pair, "AXLE.asm/rod").feature, &model.rodInAxle);
  EXPECT_EQ(findComponent(model.pair, "AXLE.asm/rod").owner, &model.axle);
  EXPECT_EQ(failureOf("hide AXEL"), "PAIR.asm has no component \"AXEL\"; did you mean AXLE?");
  EXPECT_EQ(failureOf("hide AXLE.prt"), "PAIR.asm has no component \"AXLE.prt\"");
  EXPECT_EQ(failureOf("hide BLOCK"), "PAIR.asm holds \"BLOCK\" 2 times: say which by its id, one of " +
                                         id(model.first) + ", " + id(model.second) + ", or by BLOCK:n");
  EXPECT_EQ(findComponent(model.pair, "block:2").feature, &model.second);
  EXPECT_EQ(failureOf("hide BLOCK:3"), "PAIR.asm has no component \"BLOCK:3\": it is placed 2 times");
  EXPECT_EQ(failureOf("hide BLOCK:0"), "PAIR.asm has no component \"BLOCK:0\": it is placed 2 times");
  EXPECT_EQ(failureOf("hide BLOCK:x"), "PAIR.asm has no component \"BLOCK:x\"; did you mean BLOCK?");
  EXPECT_EQ(failureOf("hide AXLE/ROD/1"), "ROD.prt has no component \"1\"");
  EXPECT_EQ(failureOf("hide /"), "a component path is expected, such as 3/5");
  EXPECT_EQ(failureOf("hide 999"), "PAIR.asm has no component \"999\"");
  session_.renameModel(model.rod, L"A/B:1");
  EXPECT_EQ(findComponent(model.pair, R"(AXLE/A\/B\:1)").feature, &model.rodInAxle);
}

TEST_F(ScriptTest, QueuesTheUsersAnswersInOrder) {
  PairModel model(session_);
  model.pair.addRepresentation(L"LIGHT");
  run("answer save 'out one.rpk'");
  run("answer cancel");
  run("answer save cancel");
  ASSERT_EQ(session_.fileAnswers.size(), 3U);
  EXPECT_EQ(session_.fileAnswers[0], path("out one.rpk"));
  EXPECT_EQ(session_.fileAnswers[1], std::nullopt);
  EXPECT_EQ(session_.fileAnswers[2], std::nullopt);
  run("answer open in.fra");
  run("answer open cancel");
  EXPECT_EQ(session_.openAnswers, (std::deque<FileAnswer>{path("in.fra"), std::nullopt}));
  EXPECT_EQ(session_.fileAnswers.size(), 3U);
  EXPECT_NE(failureOf("answer load x"), "");
  for (const char* line : {"dialog D", "dialog D set c", "dialog D press", "dialog D show c", "dialog D do c"}) {
    EXPECT_NE(failureOf(line), "") << line;
  }
  EXPECT_NE(failureOf("answer save"), "");

  run("pick AXLE/ROD top " + id(model.first));
  run("pick cancel");
  ASSERT_EQ(session_.selectionAnswers.size(), 2U);
  const std::vector<std::vector<int>> picks = {{model.axleInPair.id, model.rodInAxle.id}, {}, {model.first.id}};
  EXPECT_EQ(session_.selectionAnswers[0], picks);
  EXPECT_EQ(session_.selectionAnswers[1], std::nullopt);

  run("representation LIGHT");
  run("representation master");
  run("representation cancel");
  const std::deque<std::optional<std::wstring>> representations = {L"LIGHT", L"", std::nullopt};
  EXPECT_EQ(session_.representationAnswers, representations);
  EXPECT_EQ(failureOf("representation LIHGT"), "PAIR.asm has no representation \"LIHGT\"; did you mean LIGHT?");
}

TEST_F(ScriptTest, ChangesOfComponentsChangeTheirAssembliesStamp) {
  PairModel model(session_);
  auto stamp = [](const Model& changed) { return changed.versionStamp; };
  auto before = stamp(model.axle);
  const auto pairBefore = stamp(model.pair);
  run("move AXLE/ROD 1 2.5 -3");
  EXPECT_EQ(model.rodInAxle.placement[12], 1);
  EXPECT_EQ(model.rodInAxle.placement[13], 2.5);
  EXPECT_EQ(model.rodInAxle.placement[14], -3);
  EXPECT_GT(stamp(model.axle), before);
  EXPECT_EQ(stamp(model.pair), pairBefore);

  before = stamp(model.axle);
  EXPECT_EQ(failureOf("move AXLE/ROD 1 nan 3"), "\"nan\" is not a number");
  EXPECT_EQ(failureOf("move AXLE/ROD 1 2x 3"), "\"2x\" is not a number");
  EXPECT_EQ(model.rodInAxle.placement[12], 1) << "a move that fails moves nothing";
  EXPECT_EQ(stamp(model.axle), before);

  run("suppress AXLE/ROD");
  EXPECT_EQ(model.rodInAxle.status, PRO_FEAT_SUPPRESSED);
  EXPECT_GT(stamp(model.axle), before);
  run("resume AXLE/ROD");
  EXPECT_EQ(model.rodInAxle.status, PRO_FEAT_ACTIVE);
  run("hide AXLE");
  EXPECT_TRUE(model.axleInPair.hidden);
  run("unhide AXLE");
  EXPECT_FALSE(model.axleInPair.hidden);

  before = stamp(model.rod);
  run("touch rod.prt");
  EXPECT_GT(stamp(model.rod), before);
  EXPECT_EQ(failureOf("touch rodd"), "no model \"rodd\" in session; did you mean ROD?");
}

TEST_F(ScriptTest, LayersHoldComponentsOfTheirOwnAssembly) {
  PairModel model(session_);
  run("layer A add AXLE/ROD");
  run("layer A add AXLE/ROD");
  run("layer A add " + id(model.first));
  ASSERT_EQ(model.axle.layers.size(), 1U);
  const std::vector<std::pair<ProLayerType, int>> items = {{PRO_LAYER_FEAT, model.rodInAxle.id}};
  EXPECT_EQ(model.axle.layers[0].items, items);
  ASSERT_EQ(model.pair.layers.size(), 1U);
  run("layer A blank");
  EXPECT_EQ(model.axle.layers[0].display, PRO_LAYER_TYPE_BLANK);
  EXPECT_EQ(model.pair.layers[0].display, PRO_LAYER_TYPE_BLANK);
  run("layer A show");
  EXPECT_EQ(model.axle.layers[0].display, PRO_LAYER_TYPE_NORMAL);
  EXPECT_EQ(failureOf("layer B blank"), "PAIR.asm has no layer \"B\"; did you mean A?");
  EXPECT_EQ(failureOf("layer A add"), "usage: layer NAME blank | show | add PATH");
}

TEST_F(ScriptTest, ColoursComponentsAndParts) {
  PairModel model(session_);
  run("colour AXLE/ROD 1 0.5 0");
  ASSERT_TRUE(model.rodInAxle.appearance);
  EXPECT_EQ(model.rodInAxle.appearance->color, (Point{1, 0.5, 0}));
  EXPECT_FALSE(model.rod.appearance);
  run("colour BLOCK 0 0 1");
  ASSERT_TRUE(model.block.appearance);
  EXPECT_EQ(model.block.appearance->name, L"colour_0000ff");
  EXPECT_FALSE(model.first.appearance);
  run("colour " + id(model.first) + " 0 1 0");
  EXPECT_TRUE(model.first.appearance);
  run("colour block:2 0 1 0");
  EXPECT_TRUE(model.second.appearance);
  EXPECT_EQ(failureOf("colour BLOCK 0 0 1.5"), "a colour's numbers go from 0 to 1");
}

TEST_F(ScriptTest, RunsAreCheckedForThePackageThatWasAskedFor) {
  PairModel model(session_);
  run("answer save a.rpk");
  EXPECT_EQ(run("run \"Rendara Export\""),
            "wrote " + path("a.rpk").string() + ": 0 occurrences, 0 references, 0 triangles\n");
  // A cancelled dialog asks for no output.
  run("answer cancel");
  EXPECT_EQ(run("run Rendara Export"), "");
  EXPECT_EQ(failureOf("run 'Rendara Exprt'"),
            "the plug-in has no command \"Rendara Exprt\"; did you mean Rendara Export?");
  EXPECT_EQ(plugin_.timesLoaded, 1);

  packageToWrite = "";
  run("answer save a.rpk");
  EXPECT_EQ(failureOf("run Rendara Export", ExitCode::kOutput), path("a.rpk").string() + ": no package was written")
      << "the package of before is not taken for a new one";
  packageToWrite = "\ngroup \"pair\" {\n";
  run("answer save a.rpk");
  EXPECT_NE(failureOf("run Rendara Export", ExitCode::kOutput).find("not a complete package"), std::string::npos);
  packageToWrite = kCompletePackage;
  run("answer save absent/a.rpk");
  EXPECT_EQ(failureOf("run Rendara Export", ExitCode::kOutput),
            path("absent/a.rpk").string() + ": No such file or directory");
  run("answer save b.rpk");
  EXPECT_EQ(failureOf("run Rendara Export", ExitCode::kOutput), "") << "an old failure does not count again";
}

TEST_F(ScriptTest, ASettingStartsThePluginAnew) {
  run("set quality 0.75");
  EXPECT_EQ(plugin_.timesLoaded, 0);
  run("commands");
  EXPECT_NE(run("set nurbs off").find("starts anew"), std::string::npos);
  EXPECT_FALSE(plugin_.loaded());
  run("commands");
  EXPECT_EQ(plugin_.timesLoaded, 2);
  const SettingsFile settings(path(SettingsFile::kName));
  EXPECT_EQ(settings.text("quality"), "0.750000");
  EXPECT_EQ(settings.text("nurbs"), "false");
  EXPECT_EQ(failureOf("set nrubs off"), "no setting \"nrubs\"; did you mean nurbs?");
  EXPECT_TRUE(plugin_.loaded()) << "a setting that is refused changes nothing";
}

TEST_F(ScriptTest, TellsAndChangesTheMode) {
  PairModel model(session_);
  EXPECT_EQ(run("mode"), "assembly\n");
  run("mode drawing");
  EXPECT_EQ(session_.mode, PRO_MODE_DRAWING);
  EXPECT_EQ(failureOf("mode prat"), "no mode \"prat\"; did you mean part?");
}

TEST_F(ScriptTest, AScriptStopsAtTheFirstErrorAndSaysWhere) {
  PairModel model(session_);
  std::istringstream lines("hide AXLE\n\n# comment\nhdie AXLE\nunhide AXLE\n");
  EXPECT_EQ(script_.runAll(lines, "steps.txt", errors_), ExitCode::kUsage);
  EXPECT_EQ(errors_.str(), "steps.txt:4: no command \"hdie\"; did you mean hide?\n");
  EXPECT_TRUE(model.axleInPair.hidden);
}

TEST_F(ScriptTest, AScriptEndsAtQuitOrAtItsEnd) {
  PairModel model(session_);
  std::istringstream lines("mode part\r\nquit\nhdie AXLE\n");
  EXPECT_EQ(script_.runAll(lines, "steps.txt", errors_), ExitCode::kDone);
  EXPECT_EQ(errors_.str(), "");
  EXPECT_EQ(session_.mode, PRO_MODE_PART);
}

TEST_F(ScriptTest, ThePromptGoesOnAfterAnError) {
  PairModel model(session_);
  std::istringstream lines("hdie AXLE\nhide AXLE\n");
  script_.runPrompt(lines, errors_);
  EXPECT_EQ(errors_.str(), "no command \"hdie\"; did you mean hide?\n");
  EXPECT_EQ(output_.str(), "creo> creo> creo> \n");
  EXPECT_TRUE(model.axleInPair.hidden);
}

}  // namespace
}  // namespace standin

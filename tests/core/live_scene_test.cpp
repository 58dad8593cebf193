// Render and Update against a recording scene in the renderer's place.
#include <string>
#include <vector>

#include "tests/core/plugin_fixture.h"

namespace rendara {
namespace {

using standin::Model;
using standin::test::addAssembly;
using standin::test::addBoxPart;
using standin::test::openModel;

// top: unit (gear, gear), shaft
class LiveScene : public testing::PluginTest {
 protected:
  LiveScene() {
    unit.addComponent(gear, standin::kIdentity);
    unit.addComponent(gear, standin::kIdentity);
    unitComponent = top.addComponent(unit, standin::kIdentity).id;
    shaftComponent = top.addComponent(shaft, standin::kIdentity).id;
    openModel(session, top);
  }

  std::string header() {
    std::string text;
    for (const std::string& call : link->scene.calls()) {
      text += call + "\n";
      if (call == "endBlock") {
        break;
      }
    }
    return text;
  }
  std::string updatedTree() { return update(), tree(); }

  const std::string nothing = "top(unit.asm(gear.prt()gear.prt())shaft.prt())";
  const std::string everything = "top(unit.asm(gear.prt(*)gear.prt(@))shaft.prt(*))";

  Model& gear = addBoxPart(session, L"gear");
  Model& shaft = addBoxPart(session, L"shaft");
  Model& unit = addAssembly(session, L"unit");
  Model& top = addAssembly(session, L"top");
  int unitComponent = 0;
  int shaftComponent = 0;
};

std::string expectedHeader(const std::string& variant, const std::string& camera, const std::string& upAxis,
                           const std::string& scale) {
  return "writeFormatted \"//---vantor:dal:" + variant +
         "---\\n\"\n"
         "writeFormatted \"//---import:dal:1---\\n\"\n"
         "writeFormatted \"// This is a Rendara scene file\\n\\n\"\n"
         "beginLoad \"vntrtopt.so\"\n"
         "parameter \"import_mode\" 7 on\n"
         "parameter \"import_merge_groups\" 7 off\n"
         "parameter \"import_merge_objects\" 7 off\n"
         "parameter \"import_adjust_environment\" 7 on\n" +
         camera + "parameter \"import_keep_original\" 7 on\nparameter \"import_up_vector\" 6 " + upAxis +
         "\nparameter \"meter_scale\" 3 " + scale + "\nparameter \"ext\" 7 off\nendBlock\n";
}

TEST_F(LiveScene, RenderHasItsOwnHeaderAndOptions) {
  top.lengthUnit = L"in";
  plugin().settings.upAxis = 9;
  render();
  EXPECT_EQ(header(), expectedHeader("4", "", "9", "39.37008"));
  EXPECT_EQ(link->scene.calls()[13], "beginGroup \"top\" noDefine");
  EXPECT_EQ(link->scene.calls()[14], "flags 0x8000");
  EXPECT_EQ(link->scene.calls().back(), "endScene");
  EXPECT_EQ(link->modes, std::vector<LinkMode>{LinkMode::kLaunch});
  plugin().settings.includeNURBS = true;
  EXPECT_EQ(render().calls().front(), "writeFormatted \"//---vantor:dal:7---\\n\"");
}

TEST_F(LiveScene, UpdateHasItsOwnHeaderAndOptions) {
  update();
  EXPECT_EQ(header(), expectedHeader("7", "parameter \"import_adjust_camera\" 7 off\n", "1", "1000"));
  EXPECT_EQ(link->scene.calls()[14], "beginGroup \"top\" noDefine");
  EXPECT_EQ(link->scene.calls()[15], "flags 0x8000");
  EXPECT_EQ(link->modes, std::vector<LinkMode>{LinkMode::kUpdate});
}

TEST_F(LiveScene, UnreachableRendererFailsAloudInRenderAndSilentlyInUpdate) {
  link->reachable = false;
  ::testing::internal::CaptureStdout();
  render();
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Failed");
  ::testing::internal::CaptureStdout();
  update();
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_FALSE(plugin().updateInProgress);
}

TEST_F(LiveScene, LinkIsReleasedAfterEveryCommand) {
  render();
  update();
  link->reachable = false;
  ::testing::internal::CaptureStdout();
  render();
  ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(link->releases, 3);
  EXPECT_EQ(plugin().sceneOutput.scene, nullptr);
}

TEST_F(LiveScene, UpdateSendsWhatChangedSinceItWasSent) {
  render();
  EXPECT_EQ(tree(), everything);
  EXPECT_EQ(updatedTree(), nothing);
  session.touch(gear);
  EXPECT_EQ(updatedTree(), "top(unit.asm(gear.prt(*)gear.prt(@))shaft.prt())");
  EXPECT_EQ(updatedTree(), nothing);
  top.addComponent(gear, standin::kIdentity);
  EXPECT_EQ(updatedTree(), "top(unit.asm(gear.prt()gear.prt())shaft.prt()gear.prt(*))") << "a new path";
}

// A renderer knows a component by its group's name and number only.
TEST_F(LiveScene, AComponentWhoseGroupBecomesAnotherIsSentAnew) {
  Model& pair = addAssembly(session, L"pair");
  pair.addComponent(unit, standin::kIdentity);
  pair.addComponent(unit, standin::kIdentity);
  openModel(session, pair);
  render();
  EXPECT_EQ(tree(), "pair(unit.asm(gear.prt(*)gear.prt(@))unit.asm(gear.prt(@)gear.prt(@)))");
  unit.features.front().status = PRO_FEAT_SUPPRESSED;
  EXPECT_EQ(updatedTree(), "pair(unit.asm(gear.prt(*))unit.asm(gear.prt(@)))") << "the second gears are now the first";
  EXPECT_EQ(updatedTree(), "pair(unit.asm(gear.prt())unit.asm(gear.prt()))");
  unit.features.front().status = PRO_FEAT_ACTIVE;
  EXPECT_EQ(updatedTree(), "pair(unit.asm(gear.prt(*)gear.prt(@))unit.asm(gear.prt(@)gear.prt(@)))");
  pair.features.front().status = PRO_FEAT_SUPPRESSED;
  EXPECT_EQ(updatedTree(), "pair(unit.asm(gear.prt(*)gear.prt(@)))") << "all below a moved group";
  session.renameModel(gear, L"wheel");
  EXPECT_EQ(updatedTree(), "pair(unit.asm(wheel.prt(*)wheel.prt(@)))");
  session.renameModel(pair, L"couple");
  EXPECT_EQ(updatedTree(), "couple(unit.asm(wheel.prt(*)wheel.prt(@)))");
}

// Without a group in the scene the renderer drops what it had.
TEST_F(LiveScene, APartThatHadNoGroupIsSentAnew) {
  render();
  for (standin::Surface& surface : shaft.surfaces) {
    surface.inactive = true;
  }
  EXPECT_EQ(updatedTree(), "top(unit.asm(gear.prt()gear.prt()))");
  for (standin::Surface& surface : shaft.surfaces) {
    surface.inactive = false;
  }
  EXPECT_EQ(updatedTree(), "top(unit.asm(gear.prt()gear.prt())shaft.prt(*))");
  EXPECT_EQ(updatedTree(), nothing);
}

TEST_F(LiveScene, SettingsThatChangeTheMeshMakeEverythingChanged) {
  render();
  plugin().settings.tessellationQuality = 0.5;
  EXPECT_EQ(updatedTree(), everything);
  EXPECT_EQ(updatedTree(), nothing);
  plugin().settings.separateMaterials = false;
  EXPECT_EQ(updatedTree(), everything);
  plugin().settings.upAxis = 2;
  EXPECT_EQ(updatedTree(), nothing) << "the up axis is an option of the import";
}

TEST_F(LiveScene, AnotherInstanceGetsEverything) {
  render();
  link->port = 20001;
  EXPECT_EQ(updatedTree(), everything);
  EXPECT_EQ(updatedTree(), nothing);
  link->newInstance = true;
  EXPECT_EQ(updatedTree(), everything);
}

TEST_F(LiveScene, ASceneThatDidNotArriveIsNotTakenAsSent) {
  link->scene.setAnswers(true, false);
  render();
  link->scene.setAnswers(true, true);
  EXPECT_EQ(updatedTree(), everything);
  session.touch(shaft);
  link->scene.setAnswers(true, false);
  update();
  link->scene.setAnswers(true, true);
  EXPECT_EQ(updatedTree(), "top(unit.asm(gear.prt()gear.prt())shaft.prt(*))");
}

TEST_F(LiveScene, RunningOutOfMemoryInTheWalkEndsTheCommandAndLeavesThePluginReady) {
  link->scene.geometriesLeft = 2;
  render();
  EXPECT_EQ(link->scene.count("endScene"), 0);
  EXPECT_EQ(link->releases, 1);
  EXPECT_EQ(plugin().sceneOutput.scene, nullptr);
  EXPECT_TRUE(plugin().writtenNames.empty());
  EXPECT_EQ(updatedTree(), everything) << "nothing counts as sent";
  session.touch(gear);
  link->scene.geometriesLeft = 1;
  update();
  EXPECT_FALSE(plugin().updateInProgress);
  EXPECT_EQ(updatedTree(), "top(unit.asm(gear.prt(*)gear.prt(@))shaft.prt())");
}

TEST_F(LiveScene, AFailedMeshIsTriedAgain) {
  standin::test::mesherOf(shaft).fails = [](std::size_t, double) { return true; };
  render();
  EXPECT_EQ(tree(), "top(unit.asm(gear.prt(*)gear.prt(@))shaft.prt())");
  standin::test::mesherOf(shaft).fails = nullptr;
  EXPECT_EQ(updatedTree(), "top(unit.asm(gear.prt()gear.prt())shaft.prt(*))");
}

TEST_F(LiveScene, APackageInBetweenChangesNothingOfTheLink) {
  render();
  session.touch(gear);
  session.fileAnswers.emplace_back(folder.path() / "between.rpk");
  run("Rendara Export");
  EXPECT_EQ(updatedTree(), "top(unit.asm(gear.prt(*)gear.prt(@))shaft.prt())");
}

TEST_F(LiveScene, NewlyExcludedComponentsAreWrittenLikeUnchangedOnes) {
  render();
  standin::SimplifiedRep& representation = top.addRepresentation(L"without");
  representation.items = {{{shaftComponent}, PRO_SIMPREP_EXCLUDE}};
  session.touch(shaft);
  EXPECT_EQ(updatedTree(), nothing);
  representation.items.clear();
  EXPECT_EQ(updatedTree(), "top(unit.asm(gear.prt()gear.prt())shaft.prt(*))") << "the change was never sent";
}

TEST_F(LiveScene, ManualUpdateSendsPicksAndWhatLiesBelowThem) {
  render();
  plugin().settings.selectionMode = kManualSelection;
  using Picks = std::vector<std::vector<int>>;
  session.selectionAnswers = {Picks{{shaftComponent}}, Picks{{unitComponent}}, Picks{{}}, Picks{}, std::nullopt};
  EXPECT_EQ(updatedTree(), "top(unit.asm(gear.prt()gear.prt())shaft.prt(*))");
  EXPECT_EQ(updatedTree(), "top(unit.asm(gear.prt(*)gear.prt(@))shaft.prt())");
  EXPECT_EQ(updatedTree(), everything) << "the top assembly itself";
  EXPECT_EQ(updatedTree(), nothing) << "no picks";
  const std::size_t updates = link->modes.size();
  update();
  EXPECT_EQ(link->modes.size(), updates) << "a cancelled selection ends the command";
  EXPECT_FALSE(plugin().updateInProgress);
  EXPECT_EQ(session.selectionsAsked, 5);
}

TEST_F(LiveScene, OnlyAssembliesInManualModeAskForASelection) {
  update();
  openModel(session, gear);
  plugin().settings.selectionMode = kManualSelection;
  EXPECT_EQ(updatedTree(), "gear(gear(*))");
  EXPECT_EQ(session.selectionsAsked, 0);
}

TEST_F(LiveScene, RenderWritesAPackageWhenItIsToldTo) {
  plugin().exportToFile = true;
  plugin().settings.exportPath = (folder.path() / "render.rpk").wstring();
  render();
  EXPECT_TRUE(link->modes.empty());
  EXPECT_TRUE(std::filesystem::exists(folder.path() / "render.rpk"));
}

}  // namespace
}  // namespace rendara

#include "core/traversal.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/core/plugin_fixture.h"

namespace rendara {
namespace {

using standin::Feature;
using standin::Model;
using standin::test::addAssembly;
using standin::test::addBoxPart;
using standin::test::openModel;
using standin::test::rotationZ;
using standin::test::translation;

// top: unit, unit (each: bolt, bolt), bolt, cover
class TraversalTest : public testing::PluginTest {
 protected:
  TraversalTest() {
    unit.addComponent(bolt, translation(1, 0, 0));
    unit.addComponent(bolt, translation(2, 0, 0));
    first = &top.addComponent(unit, translation(0, 10, 0));
    second = &top.addComponent(unit, rotationZ(90));
    loose = &top.addComponent(bolt, translation(0, 0, 5));
    covering = &top.addComponent(cover, standin::kIdentity);
    openModel(session, top);
  }

  // The placements in their order, the camera's left out.
  std::vector<standin::Matrix> placements() {
    std::vector<standin::Matrix> found;
    for (const std::string& call : link->scene.calls()) {
      if (call.starts_with("transform ")) {
        std::istringstream numbers(call.substr(10));
        standin::Matrix& matrix = found.emplace_back();
        for (double& element : matrix) {
          numbers >> element;
        }
      }
    }
    found.erase(found.begin());
    return found;
  }
  static standin::SimplifiedRep::Item item(std::vector<int> path, int action) {
    return {std::move(path), static_cast<ProSimprepActionType>(action)};
  }

  Model& bolt = addBoxPart(session, L"bolt", 2);
  Model& cover = addBoxPart(session, L"cover", 20);
  Model& unit = addAssembly(session, L"unit");
  Model& top = addAssembly(session, L"top");
  Feature* first = nullptr;
  Feature* second = nullptr;
  Feature* loose = nullptr;
  Feature* covering = nullptr;
};

TEST_F(TraversalTest, PartsAreDefinedOnceAndReferencedAfterwards) {
  render();
  EXPECT_EQ(tree(), "top(unit.asm(bolt.prt(*)bolt.prt(@))unit.asm(bolt.prt(@)bolt.prt(@))bolt.prt(@)cover.prt(*))");
}

TEST_F(TraversalTest, ReferenceNamesItsSourceAndCarriesItsOwnMaterialAndPlacement) {
  loose->appearance = standin::Appearance{L"brass", {1, 0.8, 0.4}, L""};
  first->status = second->status = PRO_FEAT_SUPPRESSED;
  Feature& again = top.addComponent(bolt, translation(3, 0, 0));
  again.appearance = standin::Appearance{L"steel", {0.5, 0.5, 0.5}, L""};
  top.addComponent(bolt, translation(4, 0, 0));
  const std::string text = render().text();
  const auto reference = [](const char* material, const char* color, int capture, int x) {
    const std::string number = std::to_string(capture);
    return "beginGroup \"bolt.prt\" noDefine\n"
           "beginObject \"bolt\" noDefine\n"
           "beginGeometry \"instance\"\n"
           "parameter \"source\" 10 \"bolt.prt\"\n"
           "endGeometry\n"
           "beginMaterial \"bolt:" +
           std::string(material) +
           "\" noDefine\n"
           "beginShader null \"vnt_diffuse\"\n"
           "parameter \"diffuse\" 1 " +
           color + "\ncurrentCapture capture " + number + "\nendShader 0\nshader 0 capture " + number +
           "\nendBlock\nendObject\ntransform 1 0 0 0 0 1 0 0 0 0 1 0 " + std::to_string(x) +
           " 0 0 1 multiply\nendGroup\n";
  };
  EXPECT_NE(text.find(reference("steel:128:128:128", "0.5 0.5 0.5", 4, 3)), std::string::npos) << text;
  EXPECT_NE(text.find(reference("brass:255:204:102", "1 0.8 0.4", 5, 4)), std::string::npos)
      << "without an appearance of its own: the material written first\n"
      << text;
}

TEST_F(TraversalTest, PlacementsAreRelativeToTheEnclosingGroup) {
  render();
  const std::vector<standin::Matrix> expected = {
      translation(1, 0, 0), translation(2, 0, 0), translation(0, 10, 0),  // the first unit's bolts, and itself
      translation(1, 0, 0), translation(2, 0, 0), rotationZ(90),          // the second one's
      translation(0, 0, 5), standin::kIdentity};
  const auto written = placements();
  ASSERT_EQ(written.size(), expected.size());
  for (std::size_t placed = 0; placed < expected.size(); ++placed) {
    for (std::size_t element = 0; element < 16; ++element) {
      EXPECT_NEAR(written[placed][element], expected[placed][element], 1e-12) << placed << ", " << element;
    }
  }
}

TEST_F(TraversalTest, WritesTheAssemblysOwnSurfacesAfterItsComponents) {
  standin::test::addMeshedSurface(unit, standin::test::mesherOf(bolt).meshes.front(), unit.addFeature(917).id);
  standin::test::addMeshedSurface(top, standin::test::mesherOf(bolt).meshes.front(), top.addFeature(917).id);
  render();
  EXPECT_EQ(tree(),
            "top(unit.asm(bolt.prt(*)bolt.prt(@))unit.asm(*)unit.asm(bolt.prt(@)bolt.prt(@))unit.asm(@)bolt.prt(@)"
            "cover.prt(*)top(*))");
}

TEST_F(TraversalTest, SuppressedBlankedAndMissingComponentsStayOutHiddenOnesStay) {
  first->status = PRO_FEAT_SUPPRESSED;
  second->component = nullptr;
  loose->hidden = true;
  standin::Layer& layer = top.addLayer(L"covers");
  layer.items.emplace_back(PRO_LAYER_FEAT, covering->id);
  layer.display = PRO_LAYER_TYPE_BLANK;
  top.addFeature(917);
  render();
  EXPECT_EQ(tree(), "top(bolt.prt(*))");
  // Whatever a layer's status makes of its items, only two ways of display leave a component visible.
  for (const ProLayerDisplay display : {PRO_LAYER_TYPE_DISPLAY, PRO_LAYER_TYPE_HIDDEN}) {
    layer.display = display;
    EXPECT_EQ((render(), tree()), "top(bolt.prt(*))") << display;
  }
  for (const ProLayerDisplay display : {PRO_LAYER_TYPE_NORMAL, PRO_LAYER_TYPE_NONE}) {
    layer.display = display;
    EXPECT_EQ((render(), tree()), "top(bolt.prt(*)cover.prt(*))") << display;
  }
}

TEST_F(TraversalTest, SubassembliesAreMarkedByTheirFlags) {
  const std::vector<std::string>& calls = render().calls();
  const auto group = std::find(calls.begin(), calls.end(), "beginGroup \"unit.asm\" noDefine");
  ASSERT_NE(group, calls.end());
  EXPECT_EQ(group[1], "flags 0x8000");
}

TEST_F(TraversalTest, ModesDecideWhatIsWalked) {
  session.mode = PRO_MODE_DRAWING;
  render();
  EXPECT_EQ(tree(), "top()");
  EXPECT_EQ(link->scene.count("beginCamera"), 1);
  session.mode = static_cast<ProMode>(6);
  EXPECT_EQ((render(), tree()), "top()");
  openModel(session, bolt);
  EXPECT_EQ((render(), tree()), "bolt(bolt(*))");
  session.mode = PRO_MODE_SECTION;
  EXPECT_EQ((render(), tree()), "bolt(bolt(*))");
}

TEST_F(TraversalTest, NamesThatLostCharactersAreNeverReferred) {
  session.renameModel(bolt, L"\u65e5");
  session.renameModel(cover, L"\u672c");
  render();
  EXPECT_EQ(tree(), "top(unit.asm(?.prt(*)?.prt(*))unit.asm(?.prt(*)?.prt(*))?.prt(*)?.prt(*))");
}

TEST_F(TraversalTest, PartsWhoseMeshFailsAreNotReferredTo) {
  standin::test::mesherOf(bolt).fails = [](std::size_t, double) { return true; };
  render();
  EXPECT_EQ(tree(), "top(unit.asm(bolt.prt()bolt.prt())unit.asm(bolt.prt()bolt.prt())bolt.prt()cover.prt(*))");
}

TEST_F(TraversalTest, RepresentationDecidesWhatIsIncluded) {
  standin::SimplifiedRep& representation = top.addRepresentation(L"some");
  representation.defaultAction = PRO_SIMPREP_EXCLUDE;
  representation.items = {item({second->id}, 2), item({second->id, unit.features[1].id}, 3), item({covering->id}, 1)};
  render();
  EXPECT_EQ(session.representationsAsked, 0) << "a single one is taken";
  EXPECT_EQ(tree(), "top(unit.asm(bolt.prt()bolt.prt())unit.asm(bolt.prt(*)bolt.prt())bolt.prt()cover.prt())");
  representation.defaultAction = PRO_SIMPREP_INCLUDE;
  representation.items = {item({first->id}, 3), item({first->id, unit.features[0].id}, 5)};
  render();
  EXPECT_EQ(tree(), "top(unit.asm(bolt.prt(*)bolt.prt())unit.asm(bolt.prt(@)bolt.prt(@))bolt.prt(@)cover.prt(*))")
      << "what lies below an excluded sub-assembly stays out unless it is asked for by itself";
}

TEST_F(TraversalTest, SeveralRepresentationsAreAskedForAndACancelEndsTheCommand) {
  top.addRepresentation(L"all");
  top.addRepresentation(L"none").defaultAction = PRO_SIMPREP_EXCLUDE;
  session.representationAnswers = {std::nullopt, L"none", L"all", L"not there"};
  render();
  EXPECT_TRUE(link->modes.empty()) << "the renderer is not even contacted";
  render();
  EXPECT_EQ(tree(), "top(unit.asm(bolt.prt()bolt.prt())unit.asm(bolt.prt()bolt.prt())bolt.prt()cover.prt())");
  render();
  EXPECT_EQ(link->scene.count("beginGeometry \"triangles\""), 2);
  render();
  EXPECT_EQ(link->scene.count("beginGeometry \"triangles\""), 2) << "a choice that fails counts as the master one";
}

TEST_F(TraversalTest, LevelsBelowTwentyFiveAreLeftOut) {
  Model* inner = &bolt;
  for (int level = 0; level < 27; ++level) {
    Model& outer = addAssembly(session, L"level" + std::to_wstring(level));
    outer.addComponent(*inner, standin::kIdentity);
    inner = &outer;
  }
  openModel(session, *inner);
  render();
  EXPECT_EQ(link->scene.count("beginGroup"), 26) << "the top-level group and 25 sub-assemblies";
  EXPECT_EQ(link->scene.count("endGroup"), 26);
}

}  // namespace
}  // namespace rendara

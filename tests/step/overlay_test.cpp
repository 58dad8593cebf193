#include <gtest/gtest.h>

#include <cmath>

#include "standin/step/step_loader.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/test_session.h"

namespace standin::test {

namespace {

// car: unit twice, cover. unit: piston, bolt, bolt.
class OverlayFile : public ::testing::Test {
 protected:
  OverlayFile()
      : piston_(addBoxPart(session_, L"piston")),
        bolt_(addBoxPart(session_, L"bo/lt")),
        cover_(addBoxPart(session_, L"Cover")),
        unit_(session_.addModel(PRO_MDL_ASSEMBLY, L"unit")),
        car_(session_.addModel(PRO_MDL_ASSEMBLY, L"car")) {
    for (Model* model : {&piston_, &bolt_, &bolt_}) unit_.addComponent(*model, kIdentity);
    for (Model* model : {&unit_, &unit_, &cover_}) car_.addComponent(*model, kIdentity);
    Quilt& quilt = cover_.addQuilt(cover_.features.front().id);
    cover_.addSurface(cover_.features.front().id, &quilt);
    cover_.surfaces[1].appearance = Appearance{L"color 00ff00", {0.0, 1.0, 0.0}, L""};
    cover_.surfaces[2].appearance = cover_.surfaces[1].appearance;
    std::filesystem::create_directories(folder_.path() / "textures");
    rendara::testing::writeFile(folder_.path() / "textures" / "wood.png", "png");
  }

  std::string apply(const std::string& text) {
    const std::filesystem::path file = folder_.path() / "overlay.json";
    rendara::testing::writeFile(file, text);
    return applyOverlay(session_, car_, file);
  }
  // With the version in front.
  std::string applyKeys(const std::string& keys) { return apply("{\"version\": 1, " + keys + "}"); }

  rendara::testing::TemporaryFolder folder_;
  Session session_;
  Model& piston_;
  Model& bolt_;
  Model& cover_;
  Model& unit_;
  Model& car_;
};

TEST_F(OverlayFile, ComponentsAreFoundByTheirPaths) {
  EXPECT_EQ(applyKeys(R"("components": {
      "unit:1/PISTON": {"suppressed": true},
      "unit:2/bo\\/lt:2": {"hidden": true}, // names may hold a slash
      "cover": {"layer": "SPARE"}})"),
            "");
  EXPECT_EQ(unit_.features[0].status, PRO_FEAT_SUPPRESSED);
  EXPECT_FALSE(unit_.features[1].hidden);
  EXPECT_TRUE(unit_.features[2].hidden);
  ASSERT_EQ(car_.layers.size(), 1U);
  EXPECT_EQ(car_.layers[0].items, (std::vector<std::pair<ProLayerType, int>>{{PRO_LAYER_FEAT, car_.features[2].id}}));
  EXPECT_EQ(
      applyKeys(R"("components": {"unit:1/piston": {"suppressed": false}, "unit:*/bo\\/lt:*": {"hidden": false}})"),
      "");
  EXPECT_EQ(unit_.features[0].status, PRO_FEAT_ACTIVE);
  EXPECT_FALSE(unit_.features[2].hidden);
}

TEST_F(OverlayFile, LayersHoldWhatTheirModelsHave) {
  cover_.addLayer(L"OLD");
  EXPECT_EQ(applyKeys(R"("layers": [
      {"name": "A", "status": "blanked", "items": [
        {"component": "unit:1/piston"}, {"component": "cover"}, {"part": "cover", "quilt": 1},
        {"model": "cover", "feature": 1}]},
      {"name": "OLD", "status": "hidden"}], "components": {"unit:1": {"layer": "A"}})"),
            "");
  ASSERT_EQ(unit_.layers.size(), 1U);
  EXPECT_EQ(unit_.layers[0].display, PRO_LAYER_TYPE_BLANK);
  EXPECT_EQ(unit_.layers[0].items[0].second, unit_.features[0].id);
  ASSERT_EQ(car_.layers.size(), 1U);
  EXPECT_EQ(car_.layers[0].items.size(), 2U);
  EXPECT_EQ(car_.layers[0].display, PRO_LAYER_TYPE_BLANK);
  ASSERT_EQ(cover_.layers.size(), 2U);
  EXPECT_EQ(cover_.layers[0].display, PRO_LAYER_TYPE_HIDDEN);
  EXPECT_EQ(cover_.layers[1].items,
            (std::vector<std::pair<ProLayerType, int>>{{PRO_LAYER_QUILT, cover_.quilts[0].id},
                                                       {PRO_LAYER_FEAT, cover_.features[0].id}}));
}

TEST_F(OverlayFile, RepresentationsNamePlacesNotComponents) {
  const std::string text = R"("representations": [
      {"name": "Light", "default": "exclude", "items": {"unit:2/piston": "include", "cover": "graphics"}},
      {"name": "All", "master": true}])";
  // A second time changes nothing more.
  for (int time = 0; time < 2; ++time) {
    EXPECT_EQ(applyKeys(text), "");
    ASSERT_EQ(car_.representations.size(), 2U);
    const SimplifiedRep& light = car_.representations[0];
    EXPECT_EQ(light.defaultAction, PRO_SIMPREP_EXCLUDE);
    ASSERT_EQ(light.items.size(), 2U);
    // Keys of an object come in the order of the alphabet.
    EXPECT_EQ(light.items[0].path, (std::vector<int>{car_.features[2].id}));
    EXPECT_EQ(light.items[0].action, PRO_SIMPREP_GRAPHICS);
    EXPECT_EQ(light.items[1].path, (std::vector<int>{car_.features[1].id, unit_.features[0].id}));
    EXPECT_EQ(car_.representations[1].id, PRO_SIMPREP_MASTER_REP);
    EXPECT_EQ(car_.representations[1].defaultAction, PRO_SIMPREP_INCLUDE);
  }
}

// Where a point of the model is seen: to the right, up, towards the viewer.
void expectSeen(const Matrix& view, const Point& point, const Point& seen) {
  const Point found = transformPoint(point, view);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(found[i], seen[i], 1e-12);
}

TEST_F(OverlayFile, ViewsLookWhereTheySay) {
  EXPECT_EQ(applyKeys(R"("views": [
      {"name": "F", "standard": "front"}, {"name": "T", "standard": "top"}, {"name": "R", "standard": "right"},
      {"name": "I", "standard": "iso"}, {"name": "D", "direction": [0, 5, 0], "up": [0, 1, 3]},
      {"name": "M", "matrix": [0, 2, 0, 0, -2, 0, 0, 0, 0, 0, 2, 0, 7, 8, 9, 1]}], "currentView": "D")"),
            "");
  ASSERT_EQ(car_.views.size(), 6U);
  EXPECT_EQ(car_.views[0].matrix, kIdentity);
  expectSeen(car_.views[1].matrix, {1, 2, 3}, {1, -3, 2});
  expectSeen(car_.views[2].matrix, {1, 2, 3}, {-3, 2, 1});
  expectSeen(car_.views[3].matrix, {1, 1, 1}, {0, 0, std::sqrt(3.0)});
  expectSeen(car_.views[4].matrix, {1, 2, 3}, {1, 3, -2});
  EXPECT_EQ(car_.currentView, car_.views[4].matrix);
  expectSeen(car_.views[5].matrix, {1, 0, 0}, {7, 10, 9});
  EXPECT_EQ(applyKeys(R"("currentView": {"standard": "top"})"), "");
  EXPECT_EQ(car_.currentView, car_.views[1].matrix);
}

TEST_F(OverlayFile, AppearancesReachPartsSurfacesAndComponents) {
  const std::uint64_t before = cover_.versionStamp;
  EXPECT_EQ(applyKeys(R"("appearances": [
      {"part": "cover", "color": "#d8a01f"},
      {"part": "cover", "surface": 1, "name": "oak", "color": [1, 0.5, 0], "texture": "textures/wood.png"},
      {"part": "cover", "surfaceColor": "#00ff00", "texture": "textures/wood.png"},
      {"component": "unit:1/piston", "color": "#000000"}],
      "quilts": [{"part": "cover", "quilt": 1, "hidden": true, "backup": true}])"),
            "");
  ASSERT_TRUE(cover_.appearance && cover_.surfaces[0].appearance && unit_.features[0].appearance);
  EXPECT_EQ(cover_.appearance->name, L"color d8a01f");
  EXPECT_NEAR(cover_.appearance->color[0], 216.0 / 255.0, 1e-12);
  EXPECT_EQ(cover_.surfaces[0].appearance->name, L"oak");
  EXPECT_EQ(cover_.surfaces[0].appearance->texture, L"wood.png");
  EXPECT_EQ(cover_.surfaces[1].appearance->name, L"wood");
  EXPECT_EQ(cover_.surfaces[2].appearance->color, (Point{0.0, 1.0, 0.0}));
  EXPECT_FALSE(cover_.surfaces[3].appearance);
  EXPECT_EQ(unit_.features[0].appearance->name, L"color 000000");
  EXPECT_EQ(session_.textureFolders, (std::vector<std::filesystem::path>{folder_.path() / "textures"}));
  EXPECT_TRUE(cover_.quilts[0].hidden);
  EXPECT_TRUE(cover_.quilts[0].backup);
  EXPECT_GT(cover_.versionStamp, before);
}

struct Complaint {
  const char* keys;
  const char* error;
};

TEST_F(OverlayFile, EveryMistakeIsNamedWithItsPlaceAndNothingIsApplied) {
  const Complaint complaints[] = {
      {R"("layer": [])", "layer: unknown key"},
      {R"("components": {"unit:2/piston": {"hiden": true}})", R"(components["unit:2/piston"].hiden: unknown key)"},
      {R"("components": {"unit:2/piston": {"hidden": 1}})",
       R"(components["unit:2/piston"].hidden: must be true or false)"},
      {R"("components": {"unit/piston": {}})",
       R"(components["unit/piston"]: there are 2 components "unit": say which one by ":1" to ":2", or ":*" for all)"},
      {R"("components": {"unit:3": {}})", R"(components["unit:3"]: "unit:3": there are 2 components of this name)"},
      {R"("components": {"unit:1/wheel": {}})",
       R"(components["unit:1/wheel"]: there is no component "wheel" in "unit")"},
      {R"("components": {"cover/": {}})", R"(components["cover/"]: a name of the path "cover/" is empty)"},
      {R"("layers": [{"name": "A", "status": "off"}])",
       "layers[0].status: must be normal, displayed, blanked or hidden"},
      {R"("layers": [{"name": "A", "items": [{"part": "cover", "quilt": 2}]}])",
       "layers[0].items[0].quilt: must be from 1 to 1"},
      {R"("layers": [{"name": "A", "items": [{"part": "piston", "quilt": 1}]}])",
       "layers[0].items[0].quilt: there is none to count"},
      {R"("representations": [{"name": "A", "items": {"cover": "omit"}}])",
       "representations[0].items.cover: must be none, reverse, include, exclude, substitute, geometry or graphics"},
      {R"("views": [{"name": "A", "direction": [0, 1, 0]}])",
       "views[0]: the direction is zero or parallel to the up direction"},
      {R"("views": [{"name": "A", "matrix": [1,0,0,0, 0,1,0,0, 0,0,-1,0, 0,0,0,1]}])",
       "views[0].matrix: is no rotation with a uniform scale"},
      {R"("views": [{"name": "A", "matrix": [1, 2]}])", "views[0].matrix: must hold 16 numbers"},
      {R"("views": [{"name": "A"}])", R"(views[0]: needs one of "standard", "matrix" or "direction" with "up")"},
      {R"("currentView": "Nowhere")", R"(currentView: there is no view "Nowhere")"},
      {R"("appearances": [{"part": "wheel", "color": "#000000"}])", R"(appearances[0].part: there is no part "wheel")"},
      {R"("appearances": [{"part": "cover", "color": "red"}])",
       R"(appearances[0].color: must be "#rrggbb" or three numbers)"},
      {R"("appearances": [{"part": "cover"}])", R"(appearances[0]: needs a "color" or a "texture")"},
      {R"("appearances": [{"part": "cover", "texture": "nothing.png"}])",
       R"(appearances[0].texture: there is no file "nothing.png")"},
      {R"("appearances": [{"part": "cover", "surface": 0, "color": "#000000"}])",
       "appearances[0].surface: must be from 1 to 7"},
      {R"("exactSurfaces": [{"part": "cover", "foreignIds": 2}])",
       "exactSurfaces[0].part: the part has no exact surfaces"},
      {R"("exactSurfaces": [{"part": "cover", "foreignIds": 8}])", "exactSurfaces[0].foreignIds: must be from 0 to 7"},
      {R"("quilts": [{"part": "cover"}])", R"(quilts[0]: "quilt" is missing)"},
  };
  for (const Complaint& complaint : complaints) {
    // What stands before the mistake must not be applied either.
    EXPECT_EQ(applyKeys(std::string(R"("textureFolders": ["textures"], )") + complaint.keys), complaint.error);
    EXPECT_TRUE(session_.textureFolders.empty()) << complaint.keys;
    EXPECT_TRUE(car_.layers.empty() && unit_.layers.empty() && cover_.layers.empty()) << complaint.keys;
  }
}

TEST_F(OverlayFile, WhatIsNoOverlayIsSaid) {
  EXPECT_EQ(applyOverlay(session_, car_, folder_.path() / "none.json"), "cannot be read");
  EXPECT_EQ(applyOverlay(session_, car_, folder_.path()), "is a folder, not a file");
  EXPECT_EQ(apply("{}"), "the file: \"version\" is missing");
  EXPECT_EQ(apply(R"({"version": 2})"), "version: must be from 1 to 1");
  EXPECT_EQ(apply("[]"), "the file: must be an object");
  EXPECT_EQ(apply(R"({"version": 1, "views": [], "views": []})"), "the key \"views\" stands twice in one object");
  for (const char* broken : {"", "{", "{\"version\": 1,}", "\xff\xfe", "{\"version\": \"\xc3\"}"}) {
    const std::string error = apply(broken);
    EXPECT_NE(error, "") << broken;
    EXPECT_EQ(error.find('\n'), std::string::npos);
  }
}

}  // namespace

}  // namespace standin::test

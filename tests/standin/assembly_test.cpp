#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "tests/support/test_session.h"

namespace standin {
namespace {

using test::addAssembly;
using test::addBoxPart;
using test::rotationZ;
using test::solid;
using test::translation;

// What a visit saw, and what its callbacks shall answer.
struct Visit {
  std::vector<int> filtered, visited;
  int skippedId = 0, stoppingId = 0;
};

ProError filterFeature(ProFeature* feature, ProAppData data) {
  auto& visit = *static_cast<Visit*>(data);
  visit.filtered.push_back(feature->id);
  return feature->id == visit.skippedId ? PRO_TK_CONTINUE : PRO_TK_NO_ERROR;
}

ProError visitFeature(ProFeature* feature, ProError /*status*/, ProAppData data) {
  auto& visit = *static_cast<Visit*>(data);
  visit.visited.push_back(feature->id);
  return feature->id == visit.stoppingId ? PRO_TK_USER_ABORT : PRO_TK_NO_ERROR;
}

TEST(Visits, FilterSkipsAndActionStops) {
  Session session;
  Model& part = session.addModel(PRO_MDL_PART, L"part");
  Visit empty;
  EXPECT_EQ(ProSolidFeatVisit(solid(part), visitFeature, filterFeature, &empty), PRO_TK_E_NOT_FOUND);
  const std::vector<int> ids = {part.addFeature(917).id, part.addFeature(917).id, part.addFeature(917).id,
                                part.addFeature(917).id};
  Visit skipping;
  skipping.skippedId = ids[1];
  EXPECT_EQ(ProSolidFeatVisit(solid(part), visitFeature, filterFeature, &skipping), PRO_TK_NO_ERROR);
  EXPECT_EQ(skipping.filtered, ids);
  EXPECT_EQ(skipping.visited, (std::vector<int>{ids[0], ids[2], ids[3]}));
  Visit stopping;
  stopping.stoppingId = ids[2];
  EXPECT_EQ(ProSolidFeatVisit(solid(part), visitFeature, nullptr, &stopping), PRO_TK_USER_ABORT);
  EXPECT_EQ(stopping.visited, (std::vector<int>{ids[0], ids[1], ids[2]}));
  part.features.resize(1);
  Visit nothing;
  nothing.skippedId = ids[0];
  EXPECT_EQ(ProSolidFeatVisit(solid(part), visitFeature, filterFeature, &nothing), PRO_TK_E_NOT_FOUND);
}

ProAsmcomppath pathOf(Model& top, std::vector<int> ids) {
  ProAsmcomppath path;
  EXPECT_EQ(ProAsmcomppathInit(solid(top), ids.data(), static_cast<int>(ids.size()), &path), PRO_TK_NO_ERROR);
  return path;
}

Point moved(const Point& point, const ProMatrix& matrix) {
  Matrix flat{};
  for (std::size_t at = 0; at < 16; ++at) {
    flat[at] = matrix[at / 4][at % 4];
  }
  return transformPoint(point, flat);
}

void expectNear(const Point& actual, const Point& expected) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    EXPECT_NEAR(actual[axis], expected[axis], 1e-12) << "axis " << axis;
  }
}

TEST(ComponentPaths, PlacementsAreComposedFromTheComponentUp) {
  Session session;
  Model& part = addBoxPart(session, L"part");
  Model& middle = addAssembly(session, L"middle", {{&part, translation(1, 0, 0)}, {&part, translation(2, 0, 0)}});
  Model& top = addAssembly(session, L"top", {{&middle, multiply(rotationZ(90), translation(0, 0, 5))}});
  ProAsmcomppath path = pathOf(top, {top.features[0].id, middle.features[1].id});

  ProMatrix up;
  ASSERT_EQ(ProAsmcomppathTrfGet(&path, PRO_B_TRUE, up), PRO_TK_NO_ERROR);
  // (3, 0, 0) is (5, 0, 0) in the middle assembly, which is turned to the y axis and lifted.
  expectNear(moved({3, 0, 0}, up), {0, 5, 5});
  ProMatrix down;
  ASSERT_EQ(ProAsmcomppathTrfGet(&path, PRO_B_FALSE, down), PRO_TK_NO_ERROR);
  expectNear(moved({0, 5, 5}, down), {3, 0, 0});

  ProAsmcomppath root = pathOf(top, {});
  ASSERT_EQ(ProAsmcomppathTrfGet(&root, PRO_B_TRUE, up), PRO_TK_NO_ERROR);
  expectNear(moved({1, 2, 3}, up), {1, 2, 3});
  ProAsmcomppath wrong = pathOf(top, {top.features[0].id, 777});
  EXPECT_EQ(ProAsmcomppathTrfGet(&wrong, PRO_B_TRUE, up), PRO_TK_E_NOT_FOUND);
  ProIdTable ids = {};
  EXPECT_EQ(ProAsmcomppathInit(solid(top), ids, 26, &wrong), PRO_TK_BAD_INPUTS);
}

TEST(ComponentPaths, FeaturesAreFoundAfterTheyWereAddedRenumberedOrRemoved) {
  Session session;
  Model& part = addBoxPart(session, L"part");
  Model& top = addAssembly(session, L"top");
  for (int count = 0; count < 100; ++count) {
    Feature& added = top.addComponent(part, kIdentity);
    EXPECT_EQ(top.feature(added.id), &added);
  }
  Feature& renumbered = top.features[40];
  const int oldId = renumbered.id;
  renumbered.id = 5000;
  EXPECT_EQ(top.feature(5000), &renumbered);
  EXPECT_EQ(top.feature(oldId), nullptr);
  const int second = top.features[1].id;
  top.features.pop_front();
  EXPECT_EQ(top.feature(second), &top.features[0]);
}

TEST(Outlines, HoldTheActiveComponents) {
  Session session;
  Model& part = addBoxPart(session, L"part", Point{1, 2, 3});
  Model& middle = addAssembly(session, L"middle", {{&part, rotationZ(90)}});
  Model& top = addAssembly(session, L"top", {{&middle, translation(10, 0, 0)}, {&part, translation(100, 0, 0)}});
  top.features[1].status = PRO_FEAT_SUPPRESSED;
  top.addFeature(PRO_FEAT_COMPONENT);  // a component that is not in session
  Pro3dPnt outline[2];
  ASSERT_EQ(ProSolidOutlineGet(solid(top), outline), PRO_TK_NO_ERROR);
  expectNear({outline[0][0], outline[0][1], outline[0][2]}, {8, 0, 0});
  expectNear({outline[1][0], outline[1][1], outline[1][2]}, {10, 1, 3});
  Model& hollow = addAssembly(session, L"hollow");
  EXPECT_EQ(ProSolidOutlineGet(solid(hollow), outline), PRO_TK_GENERAL_ERROR);
}

TEST(Outlines, ShareWhatIsPlacedOften) {
  Session session;
  // Each level holds the one below it twice: 2^40 occurrences of the part.
  Model* below = &addBoxPart(session, L"part", 1.0);
  for (int level = 0; level < 40; ++level) {
    below = &addAssembly(session, L"level", {{below, kIdentity}, {below, translation(1, 0, 0)}});
  }
  const auto box = boundingBox(*below);
  ASSERT_TRUE(box);
  EXPECT_DOUBLE_EQ((*box)[1][0], 41.0);
}

ProError keepItems(ProSimprepdataitem* item, ProError /*status*/, ProAppData data) {
  static_cast<std::vector<ProSimprepdataitem>*>(data)->push_back(*item);
  return PRO_TK_NO_ERROR;
}

TEST(Representations, AreChosenByTheUserAndRead) {
  Session session;
  Model& part = addBoxPart(session, L"part");
  Model& top = addAssembly(session, L"top", {{&part, kIdentity}});
  SimplifiedRep& listed = top.addRepresentation(L"light");
  listed.defaultAction = PRO_SIMPREP_EXCLUDE;
  listed.items.push_back({{7, 8}, PRO_SIMPREP_INCLUDE});
  session.representationAnswers = {L"light", L"", std::nullopt, L"unheard of"};

  ProSimprep chosen;
  ASSERT_EQ(ProSimprepSelect(solid(top), &chosen), PRO_TK_NO_ERROR);
  EXPECT_EQ(chosen.id, listed.id);
  ProSimprepdata* data = nullptr;
  ASSERT_EQ(ProSimprepdataGet(&chosen, &data), PRO_TK_NO_ERROR);
  ProSimprepActionType action = PRO_SIMPREP_NONE;
  EXPECT_EQ(ProSimprepdataDefaultGet(data, &action), PRO_TK_NO_ERROR);
  EXPECT_EQ(action, PRO_SIMPREP_EXCLUDE);
  std::vector<ProSimprepdataitem> items;
  EXPECT_EQ(ProSimprepdataitemsVisit(data, nullptr, keepItems, &items), PRO_TK_NO_ERROR);
  ASSERT_EQ(items.size(), 1U);
  EXPECT_EQ(items[0].memb_num, 2);
  EXPECT_EQ(items[0].memb_id_tab[1], 8);
  EXPECT_EQ(items[0].action.type, PRO_SIMPREP_INCLUDE);
  EXPECT_EQ(ProSimprepdataFree(&data), PRO_TK_NO_ERROR);

  ASSERT_EQ(ProSimprepSelect(solid(top), &chosen), PRO_TK_NO_ERROR);
  EXPECT_EQ(chosen.id, PRO_SIMPREP_MASTER_REP);
  ASSERT_EQ(ProSimprepdataGet(&chosen, &data), PRO_TK_NO_ERROR);
  EXPECT_EQ(ProSimprepdataDefaultGet(data, &action), PRO_TK_NO_ERROR);
  EXPECT_EQ(action, PRO_SIMPREP_INCLUDE);
  EXPECT_EQ(ProSimprepdataFree(&data), PRO_TK_NO_ERROR);
  EXPECT_EQ(ProSimprepSelect(solid(top), &chosen), PRO_TK_USER_ABORT);
  EXPECT_EQ(ProSimprepSelect(solid(top), &chosen), PRO_TK_E_NOT_FOUND);
  EXPECT_EQ(ProSimprepSelect(solid(top), &chosen), PRO_TK_USER_ABORT) << "no answer is left";
  session.onRepresentation = [](const Model& model) { return std::optional(model.representations[0].name); };
  EXPECT_EQ(ProSimprepSelect(solid(top), &chosen), PRO_TK_NO_ERROR);
  EXPECT_EQ(chosen.id, listed.id);
  EXPECT_EQ(session.representationsAsked, 6);
}

}  // namespace
}  // namespace standin

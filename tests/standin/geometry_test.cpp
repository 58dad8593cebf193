#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/test_session.h"

namespace standin {
namespace {

using test::addBoxPart;
using test::handle;
using test::mesherOf;
using test::solid;

ProError keepSurface(ProSurface surface, ProError /*status*/, ProAppData data) {
  int id = 0;
  EXPECT_EQ(ProSurfaceIdGet(surface, &id), PRO_TK_NO_ERROR);
  static_cast<std::vector<int>*>(data)->push_back(id);
  return PRO_TK_NO_ERROR;
}

ProError keepQuilt(ProQuilt quilt, ProError /*status*/, ProAppData data) {
  static_cast<std::vector<ProQuilt>*>(data)->push_back(quilt);
  return PRO_TK_NO_ERROR;
}

TEST(Surfaces, OfTheSolidAndOfQuiltsAreVisitedApart) {
  Session session;
  Model& part = addBoxPart(session, L"box");
  const Feature& sheet = part.addFeature(949);
  Quilt& quilt = part.addQuilt(sheet.id);
  quilt.backup = true;
  Surface& own = part.addSurface(sheet.id, &quilt);
  own.inactive = true;

  std::vector<int> ids;
  EXPECT_EQ(ProSolidSurfaceVisit(solid(part), keepSurface, nullptr, &ids), PRO_TK_NO_ERROR);
  EXPECT_EQ(ids.size(), 6U);
  std::vector<ProQuilt> quilts;
  EXPECT_EQ(ProSolidQuiltVisit(solid(part), keepQuilt, nullptr, &quilts), PRO_TK_NO_ERROR);
  ASSERT_EQ(quilts.size(), 1U);
  ids.clear();
  EXPECT_EQ(ProQuiltSurfaceVisit(quilts[0], keepSurface, nullptr, &ids), PRO_TK_NO_ERROR);
  EXPECT_EQ(ids, std::vector<int>{own.id});

  ProGeomitem item;
  ProFeature feature;
  ProBoolean answer = PRO_B_FALSE;
  ASSERT_EQ(ProSurfaceToGeomitem(solid(part), handle(own), &item), PRO_TK_NO_ERROR);
  EXPECT_EQ(ProGeomitemFeatureGet(&item, &feature), PRO_TK_NO_ERROR);
  EXPECT_EQ(feature.id, sheet.id);
  EXPECT_EQ(ProGeomitemIsInactive(&item, &answer), PRO_TK_NO_ERROR);
  EXPECT_EQ(answer, PRO_B_TRUE);
  ASSERT_EQ(ProQuiltToGeomitem(solid(part), quilts[0], &item), PRO_TK_NO_ERROR);
  EXPECT_EQ(ProGeomitemIsInactive(&item, &answer), PRO_TK_NO_ERROR);
  EXPECT_EQ(answer, PRO_B_FALSE);
  quilt.hidden = true;
  EXPECT_EQ(ProModelitemIsHidden(&item, &answer), PRO_TK_NO_ERROR);
  EXPECT_EQ(answer, PRO_B_TRUE);
  answer = PRO_B_FALSE;
  EXPECT_EQ(ProQuiltIsBackupgeometry(solid(part), quilts[0], &answer), PRO_TK_NO_ERROR);
  EXPECT_EQ(answer, PRO_B_TRUE);

  Model& other = addBoxPart(session, L"other");
  EXPECT_EQ(ProSurfaceToGeomitem(solid(other), handle(own), &item), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(session.misuse(), std::vector<std::string>{"ProSurfaceToGeomitem: the item belongs to another model"});
}

template <typename Element>
int sizeAndFree(Element* elements) {
  int size = -1;
  EXPECT_EQ(ProArraySizeGet(elements, &size), PRO_TK_NO_ERROR);
  ProArray array = elements;
  EXPECT_EQ(ProArrayFree(&array), PRO_TK_NO_ERROR);
  return size;
}

TEST(Tessellation, HandsOutTheMeshInArrays) {
  for (const bool guarded : {true, false}) {
    Session session;
    session.guardArrays = guarded;
    Model& part = addBoxPart(session, L"box", Point{1, 2, 3});
    mesherOf(part).meshes[0].normals.clear();
    ProTessellation tessellation = nullptr;
    ASSERT_EQ(ProSurfaceTessellationGet(&part, handle(part.surfaces[5]), nullptr, &tessellation), PRO_TK_NO_ERROR);
    ProVector* vertices = nullptr;
    ProTriangle* facets = nullptr;
    ProUvParam* params = nullptr;
    ASSERT_EQ(ProTessellationVerticesGet(tessellation, &vertices), PRO_TK_NO_ERROR);
    ASSERT_EQ(ProTessellationFacetsGet(tessellation, &facets), PRO_TK_NO_ERROR);
    ASSERT_EQ(ProTessellationParamsGet(tessellation, &params), PRO_TK_NO_ERROR);
    EXPECT_EQ(ProTessellationFree(&tessellation), PRO_TK_NO_ERROR) << "the arrays are the caller's and stay";
    EXPECT_EQ(vertices[2][0], 1.0);
    EXPECT_EQ(vertices[2][1], 2.0);
    EXPECT_EQ(vertices[2][2], 3.0);
    EXPECT_EQ(facets[1][2], 3);
    EXPECT_EQ(params[3][1], 1.0);
    EXPECT_EQ(sizeAndFree(vertices), 4);
    EXPECT_EQ(sizeAndFree(facets), 2);
    EXPECT_EQ(sizeAndFree(params), 4);

    ASSERT_EQ(ProSurfaceTessellationGet(&part, handle(part.surfaces[0]), nullptr, &tessellation), PRO_TK_NO_ERROR);
    ProVector* normals = vertices;
    EXPECT_EQ(ProTessellationNormalsGet(tessellation, &normals), PRO_TK_E_NOT_FOUND);
    EXPECT_EQ(normals, nullptr);
    EXPECT_EQ(ProTessellationFree(&tessellation), PRO_TK_NO_ERROR);
    EXPECT_EQ(session.counts.surfacesTessellated, 2U);
    EXPECT_EQ(session.counts.trianglesHandedOut, 2U);
    session.finish();
    EXPECT_TRUE(session.misuse().empty());
  }
}

TEST(Tessellation, FailuresAreKeptUntilALaterAttemptSucceeds) {
  Session session;
  Model& part = addBoxPart(session, L"box");
  mesherOf(part).fails = [](std::size_t, double chordHeight) { return chordHeight < 0.1; };
  std::vector<std::size_t> progress;
  session.onTessellated = [&](std::size_t count) { progress.push_back(count); };
  ProSurfaceTessellationInput input = nullptr;
  ASSERT_EQ(ProSurfacetessellationinputAlloc(&input), PRO_TK_NO_ERROR);
  EXPECT_EQ(ProSurfacetessellationinputUvprojectionSet(input, PRO_SRFTESS_DEFAULT_PROJECTION, nullptr),
            PRO_TK_NO_ERROR);
  EXPECT_EQ(ProSurfacetessellationinputChordheightSet(input, 0.05), PRO_TK_NO_ERROR);
  ProTessellation tessellation = nullptr;
  EXPECT_EQ(ProSurfaceTessellationGet(&part, handle(part.surfaces[2]), input, &tessellation), PRO_TK_GENERAL_ERROR);
  EXPECT_EQ(tessellation, nullptr);
  ASSERT_EQ(session.counts.failedSurfaces.size(), 1U);
  EXPECT_EQ(session.counts.failedSurfaces.begin()->first.second, part.surfaces[2].id);
  EXPECT_EQ(session.counts.failedSurfaces.begin()->second, "set to fail");
  EXPECT_EQ(ProSurfacetessellationinputChordheightSet(input, 0.2), PRO_TK_NO_ERROR);
  EXPECT_EQ(ProSurfaceTessellationGet(&part, handle(part.surfaces[2]), input, &tessellation), PRO_TK_NO_ERROR);
  EXPECT_EQ(mesherOf(part).requests.back().chordHeight, 0.2);
  EXPECT_TRUE(session.counts.failedSurfaces.empty());
  EXPECT_EQ(progress, std::vector<std::size_t>{1});
  EXPECT_EQ(ProTessellationFree(&tessellation), PRO_TK_NO_ERROR);

  mesherOf(part).fails = [](std::size_t, double) -> bool { throw std::runtime_error("torn"); };
  EXPECT_EQ(ProSurfaceTessellationGet(&part, handle(part.surfaces[1]), input, &tessellation), PRO_TK_GENERAL_ERROR);
  EXPECT_EQ(session.counts.failedSurfaces.begin()->second, "torn");
  EXPECT_TRUE(session.misuse().empty());
  EXPECT_EQ(ProSurfacetessellationinputChordheightSet(input, std::nan("")), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(session.misuse().size(), 1U);
  EXPECT_EQ(ProSurfacetessellationinputFree(&input), PRO_TK_NO_ERROR);
}

}  // namespace
}  // namespace standin

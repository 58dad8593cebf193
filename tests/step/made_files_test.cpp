// Kinds of STEP files that the tests write themselves.
#include <gtest/gtest.h>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRep_Builder.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Shell.hxx>
#include <gp_Pnt.hxx>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "standin/step/exact_measure.h"
#include "standin/step/step_loader.h"
#include "tests/step/made_step.h"
#include "tests/step/mesh_checks.h"
#include "tests/support/temporary_folder.h"

namespace standin::test {

namespace {

TopoDS_Compound compound(const std::vector<TopoDS_Shape>& shapes) {
  BRep_Builder builder;
  TopoDS_Compound made;
  builder.MakeCompound(made);
  for (const TopoDS_Shape& shape : shapes) builder.Add(made, shape);
  return made;
}

// The faces of a box but the first `left` ones.
TopoDS_Shell openBox(double size, int left) {
  BRep_Builder builder;
  TopoDS_Shell shell;
  builder.MakeShell(shell);
  const TopoDS_Shape box = BRepPrimAPI_MakeBox(size, size, size).Shape();
  for (TopExp_Explorer faces(box, TopAbs_FACE); faces.More(); faces.Next()) {
    if (left-- <= 0) builder.Add(shell, faces.Current());
  }
  return shell;
}

class MadeFiles : public ::testing::Test {
 protected:
  Model* load(const std::vector<MadeShape>& shapes, const std::string& unit = "MM") {
    const std::filesystem::path file = folder_.path() / "made.step";
    writeStep(file, shapes, unit);
    const LoadResult result = loadStep(session_, file);
    EXPECT_EQ(result.error, "");
    return result.model;
  }

  rendara::testing::TemporaryFolder folder_;
  Session session_;
};

TEST_F(MadeFiles, SolidsAndQuiltsAreToldApart) {
  const TopoDS_Shape solid = BRepPrimAPI_MakeBox(gp_Pnt(50, 0, 0), 1, 2, 3).Shape();
  Model* part = load({{compound({openBox(10, 1), solid, openBox(20, 0)}), "mixed"}});
  ASSERT_NE(part, nullptr);
  // The file may hold the compound as one product or as several.
  std::size_t solids = 0, quilts = 0, quiltFaces = 0;
  for (const auto& model : session_.models()) {
    solids += model->solidSurfaces.size();
    quilts += model->quilts.size();
    for (const Quilt& quilt : model->quilts) quiltFaces += quilt.surfaces.size();
  }
  EXPECT_EQ(solids, 6U);
  EXPECT_EQ(quilts, 2U);
  EXPECT_EQ(quiltFaces, 11U);
}

TEST_F(MadeFiles, IdentifiersAreUniqueAndSurfacesBelongToAFeature) {
  Model* part = load({{openBox(10, 2), "open"}});
  ASSERT_NE(part, nullptr);
  ASSERT_EQ(part->quilts.size(), 1U);
  ASSERT_EQ(part->surfaces.size(), 4U);
  std::vector<int> ids = {part->quilts.front().id};
  for (const Feature& feature : part->features) ids.push_back(feature.id);
  for (const Surface& surface : part->surfaces) {
    ids.push_back(surface.id);
    ASSERT_NE(part->feature(surface.featureId), nullptr);
    EXPECT_NE(part->feature(surface.featureId)->type, PRO_FEAT_COMPONENT);
  }
  std::sort(ids.begin(), ids.end());
  EXPECT_EQ(std::adjacent_find(ids.begin(), ids.end()), ids.end());
}

TEST_F(MadeFiles, MirroredAndReversedShapesFaceOutward) {
  for (const TopoDS_Shape& shape :
       {lopsidedSolid(), mirrored(lopsidedSolid()), mirrored(BRepPrimAPI_MakeCylinder(3.0, 8.0).Shape()),
        mirrored(BRepPrimAPI_MakeSphere(4.0).Shape())}) {
    Model* part = load({{shape, "shape"}});
    ASSERT_NE(part, nullptr);
    ASSERT_TRUE(part->mesher);
    const MeshFacts facts = meshFacts(*part, 0.01);
    const PartMeasure exact = measurePart(*part).value();
    ASSERT_TRUE(facts.failures.empty());
    EXPECT_GT(exact.volume, 0.0);
    EXPECT_NEAR(facts.volume, exact.volume, 0.01 * exact.volume);
    EXPECT_EQ(facts.facetsAgainstNormals, 0U);
    EXPECT_EQ(facts.openEdges, 0U);
  }
}

TEST_F(MadeFiles, CurvesAloneMakeAPartWithoutSurfaces) {
  const TopoDS_Shape edge = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(1, 2, 3)).Shape();
  Model* top = load({{compound({edge}), "curves"}, {BRepPrimAPI_MakeBox(1, 1, 1).Shape(), "box"}});
  ASSERT_NE(top, nullptr);
  Model* curves = session_.findModel(L"curves", PRO_MDL_PART);
  ASSERT_NE(curves, nullptr);
  EXPECT_TRUE(curves->surfaces.empty());
  EXPECT_FALSE(curves->outline);
  EXPECT_EQ(curves->mesher, nullptr);
}

TEST_F(MadeFiles, SeveralRootsGetAnAssemblyNamedAfterTheFile) {
  const TopoDS_Shape box = BRepPrimAPI_MakeBox(1, 1, 1).Shape();
  Model* top = load({{box, "first"}, {BRepPrimAPI_MakeBox(2, 2, 2).Shape(), "second"}});
  ASSERT_NE(top, nullptr);
  EXPECT_EQ(top->type, PRO_MDL_ASSEMBLY);
  EXPECT_EQ(top->name, L"made");
  EXPECT_EQ(session_.mode, PRO_MODE_ASSEMBLY);
  ASSERT_EQ(top->features.size(), 2U);
  EXPECT_EQ(top->features[0].component->name, L"first");
  EXPECT_EQ(top->features[1].component->name, L"second");
}

TEST_F(MadeFiles, UnitsGiveTheFilesOwnNumbers) {
  struct Case {
    const char* written;
    const wchar_t* name;
    double millimetres;
  };
  for (const Case& tested : {Case{"FT", L"ft", 304.8}, Case{"MIL", L"mil", 0.0254}, Case{"UM", L"micron", 0.001},
                             Case{"CM", L"cm", 10.0}, Case{"KM", L"kilometre", 1e6}}) {
    Model* part = load({{BRepPrimAPI_MakeBox(10.0, 20.0, 30.0).Shape(), "box"}}, tested.written);
    ASSERT_NE(part, nullptr);
    EXPECT_EQ(part->lengthUnit, tested.name);
    ASSERT_TRUE(part->outline);
    EXPECT_NEAR((*part->outline)[1][2], 30.0 / tested.millimetres, 1e-9 * 30.0 / tested.millimetres);
    const MeshFacts facts = meshFacts(*part, 1.0);
    EXPECT_NEAR(facts.volume * std::pow(tested.millimetres, 3), 6000.0, 1e-6);
  }
}

TEST_F(MadeFiles, ColoursOfSolidsReachTheirFacesAndThoseOfPartsDoNot) {
  const TopoDS_Shape two =
      compound({BRepPrimAPI_MakeBox(1, 1, 1).Shape(), BRepPrimAPI_MakeBox(gp_Pnt(5, 0, 0), 1, 1, 1).Shape()});
  ASSERT_NE(load({{two, "two", {}, std::array<double, 3>{1.0, 0.0, 0.0}},
                  {BRepPrimAPI_MakeBox(2, 2, 2).Shape(), "one", std::array<double, 3>{0.2, 0.4, 0.6}}}),
            nullptr);
  Model* part = session_.findModel(L"two", PRO_MDL_PART);
  ASSERT_NE(part, nullptr);
  EXPECT_FALSE(part->appearance);
  ASSERT_EQ(part->surfaces.size(), 12U);
  for (std::size_t i = 0; i < 12; ++i) {
    EXPECT_EQ(part->surfaces[i].appearance.has_value(), i < 6) << i;
    if (i < 6 && part->surfaces[i].appearance) {
      EXPECT_EQ(part->surfaces[i].appearance->name, L"color ff0000");
    }
  }
  part = session_.findModel(L"one", PRO_MDL_PART);
  ASSERT_NE(part, nullptr);
  ASSERT_TRUE(part->appearance);
  EXPECT_EQ(part->appearance->name, L"color 336699");
  EXPECT_EQ(part->appearance->color, (Point{0.2, 0.4, 0.6}));
  for (const Surface& surface : part->surfaces) EXPECT_FALSE(surface.appearance);
}

TEST_F(MadeFiles, LayersOfWholePartsHoldTheirComponents) {
  Model* top = load({{BRepPrimAPI_MakeBox(1, 1, 1).Shape(), "first", {}, {}, "SPARE"},
                     {BRepPrimAPI_MakeBox(2, 2, 2).Shape(), "second"}});
  ASSERT_NE(top, nullptr);
  ASSERT_EQ(top->layers.size(), 1U);
  EXPECT_EQ(top->layers[0].name, L"SPARE");
  EXPECT_EQ(top->layers[0].display, PRO_LAYER_TYPE_NORMAL);
  EXPECT_EQ(top->layers[0].items, (std::vector<std::pair<ProLayerType, int>>{{PRO_LAYER_FEAT, top->features[0].id}}));
}

TEST_F(MadeFiles, ProgressRisesAndCanStopTheLoad) {
  const std::filesystem::path file = folder_.path() / "made.step";
  writeStep(file, {{BRepPrimAPI_MakeBox(1, 1, 1).Shape(), "box"}});
  double last = -1.0;
  bool rising = true;
  ASSERT_NE(loadStep(session_, file,
                     [&](double share) {
                       rising = rising && share >= last && share <= 1.0;
                       last = share;
                       return true;
                     })
                .model,
            nullptr);
  EXPECT_TRUE(rising);
  EXPECT_EQ(last, 1.0);
  const std::size_t models = session_.models().size();
  const LoadResult stopped = loadStep(session_, file, [](double share) { return share < 0.3; });
  EXPECT_EQ(stopped.model, nullptr);
  EXPECT_EQ(stopped.error, "stopped");
  EXPECT_EQ(session_.models().size(), models);
}

}  // namespace

}  // namespace standin::test

// The mesher on shapes of Open CASCADE's own, without a file between.
#include "standin/step/step_mesher.h"

#include <gtest/gtest.h>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <TopLoc_Location.hxx>
#include <gp_Ax2.hxx>
#include <gp_Trsf.hxx>

#include <cmath>
#include <limits>
#include <numbers>

#include "standin/step/exact_measure.h"
#include "standin/step/revolved_surface.h"
#include "tests/step/made_step.h"
#include "tests/step/mesh_checks.h"

namespace standin::test {

namespace {

void addFaces(Model& part, PartShape shape) {
  for (std::size_t i = 0; i < shape.faces.size(); ++i) part.addSurface(0);
  part.outline = outlineOf(shape);
  part.mesher = std::make_shared<StepMesher>(std::make_shared<const PartShape>(std::move(shape)));
}

TopoDS_Shape atMirroredPlace(const TopoDS_Shape& shape) {
  gp_Trsf mirror;
  mirror.SetMirror(gp_Ax2(gp_Pnt(1.0, 2.0, 3.0), gp_Dir(0.3, 1.0, 0.2)));
  return shape.Located(TopLoc_Location(mirror), false);
}

void expectSoundMesh(const TopoDS_Shape& shape, double volume) {
  Model part;
  addFaces(part, collectFaces(shape, 1.0));
  const MeshFacts facts = meshFacts(part, 0.005);
  ASSERT_TRUE(facts.failures.empty()) << facts.failures.front();
  EXPECT_NEAR(facts.volume, volume, 0.01 * std::abs(volume));
  EXPECT_EQ(facts.badNormals, 0U);
  EXPECT_EQ(facts.facetsAgainstNormals, 0U);
  EXPECT_EQ(facts.openEdges, 0U);
}

TEST(StepMesher, PolesApexesSeamsAndMirroredPlacesAreSound) {
  const TopoDS_Shape sphere = BRepPrimAPI_MakeSphere(5.0).Shape();
  const TopoDS_Shape cone = BRepPrimAPI_MakeCone(4.0, 0.0, 6.0).Shape();
  const TopoDS_Shape torus = BRepPrimAPI_MakeTorus(6.0, 2.0).Shape();
  for (const TopoDS_Shape& shape : {sphere, atMirroredPlace(sphere)})
    expectSoundMesh(shape, 4.0 / 3.0 * std::numbers::pi * 125.0);
  for (const TopoDS_Shape& shape : {cone, atMirroredPlace(cone)})
    expectSoundMesh(shape, std::numbers::pi * 16.0 * 6.0 / 3.0);
  for (const TopoDS_Shape& shape : {torus, atMirroredPlace(torus)})
    expectSoundMesh(shape, 2.0 * std::numbers::pi * std::numbers::pi * 6.0 * 4.0);
  // Turned inside out, everything faces inward.
  expectSoundMesh(cone.Reversed(), -std::numbers::pi * 16.0 * 6.0 / 3.0);
}

TEST(StepMesher, AnswersInTheModelsUnitAndWithinTheChordHeight) {
  Model inches;
  addFaces(inches, collectFaces(BRepPrimAPI_MakeSphere(25.4).Shape(), 25.4));
  std::string failure;
  const double chord = 0.002;
  const auto mesh = inches.mesher->mesh(0, chord, failure);
  ASSERT_NE(mesh, nullptr) << failure;
  ASSERT_EQ(mesh->params.size(), mesh->vertices.size());
  for (std::size_t i = 0; i < mesh->vertices.size(); ++i) {
    const auto [x, y, z] = mesh->vertices[i];
    EXPECT_NEAR(std::hypot(x, y, z), 1.0, 1e-9);
    // On a sphere the parameters are longitude and latitude.
    EXPECT_NEAR(std::sin(mesh->params[i][1]), z, 1e-6);
  }
  for (const auto& facet : mesh->facets) {
    Point middle{};
    for (const int corner : facet) {
      for (std::size_t k = 0; k < 3; ++k) middle[k] += mesh->vertices[static_cast<std::size_t>(corner)][k] / 3.0;
    }
    EXPECT_GT(std::hypot(middle[0], middle[1], middle[2]), 1.0 - 1.5 * chord);
  }
}

TEST(StepMesher, EqualRequestsGiveEqualMeshes) {
  const TopoDS_Shape shape = BRepPrimAPI_MakeTorus(6.0, 2.0).Shape();
  Model first, second;
  addFaces(first, collectFaces(shape, 1.0));
  addFaces(second, collectFaces(shape, 1.0));
  std::string failure;
  const auto fine = first.mesher->mesh(0, 0.01, failure);
  const auto coarse = first.mesher->mesh(0, 0.1, failure);
  first.mesher->forget();
  const auto again = first.mesher->mesh(0, 0.01, failure);
  const auto other = second.mesher->mesh(0, 0.01, failure);
  ASSERT_TRUE(fine && coarse && again && other);
  EXPECT_GT(fine->facets.size(), coarse->facets.size());
  for (const auto& mesh : {again, other}) {
    EXPECT_EQ(mesh->vertices, fine->vertices);
    EXPECT_EQ(mesh->normals, fine->normals);
    EXPECT_EQ(mesh->params, fine->params);
    EXPECT_EQ(mesh->facets, fine->facets);
  }
}

TEST(StepMesher, BadRequestsFailWithAReason) {
  Model part;
  addFaces(part, collectFaces(BRepPrimAPI_MakeBox(1, 1, 1).Shape(), 1.0));
  for (const double chord : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
    std::string failure;
    EXPECT_EQ(part.mesher->mesh(0, chord, failure), nullptr);
    EXPECT_FALSE(failure.empty());
  }
  std::string failure;
  EXPECT_EQ(part.mesher->mesh(6, 0.1, failure), nullptr);
  EXPECT_FALSE(failure.empty());
}

// A face without edges cannot be meshed by any means; its neighbours must not suffer, at whatever chord height one
// tries again.
TEST(StepMesher, AFailedFaceLeavesTheOthers) {
  PartShape shape = collectFaces(BRepPrimAPI_MakeBox(1, 2, 3).Shape(), 1.0);
  shape.faces.push_back(TopoDS_Face());
  Model part;
  for (std::size_t i = 0; i < shape.faces.size(); ++i) part.addSurface(0);
  shape.faces.back() = [] {
    const PartShape cone = collectFaces(BRepPrimAPI_MakeCone(4.0, 1.0, 6.0).Shape(), 1.0);
    TopoDS_Face face = cone.faces.front();
    face.EmptyCopy();
    return face;
  }();
  part.mesher = std::make_shared<StepMesher>(std::make_shared<const PartShape>(std::move(shape)));
  for (const double chord : {0.1, 0.05, 0.1}) {
    const MeshFacts facts = meshFacts(part, chord);
    EXPECT_EQ(facts.failures.size(), 1U);
    EXPECT_NEAR(facts.area, 22.0, 1e-9);
    EXPECT_NEAR(facts.volume, 6.0, 1e-9);
  }
}

// Every surface of revolution becomes a B-spline surface with the same points at the same parameters.
TEST(RevolvedSurface, KeepsPointsAndParameters) {
  for (const TopoDS_Shape& shape :
       {BRepPrimAPI_MakeSphere(5.0).Shape(), BRepPrimAPI_MakeCone(4.0, 1.0, 6.0).Shape(),
        BRepPrimAPI_MakeTorus(6.0, 2.0).Shape(), mirrored(BRepPrimAPI_MakeTorus(6.0, 2.0, 1.0, 4.0, 2.5).Shape())}) {
    int converted = 0;
    for (const TopoDS_Face& face : collectFaces(shape, 1.0).faces) {
      const Handle(Geom_BSplineSurface) bspline = revolvedBSpline(face);
      if (bspline.IsNull()) continue;
      ++converted;
      Model part;
      PartShape one;
      one.faces = {face};
      addFaces(part, one);
      std::string failure;
      const auto mesh = part.mesher->mesh(0, 0.01, failure);
      ASSERT_NE(mesh, nullptr) << failure;
      for (std::size_t i = 0; i < mesh->vertices.size(); ++i) {
        const gp_Pnt at = bspline->Value(mesh->params[i][0], mesh->params[i][1]);
        const Point& vertex = mesh->vertices[i];
        ASSERT_LT(at.Distance(gp_Pnt(vertex[0], vertex[1], vertex[2])), 1e-6);
      }
      PartShape replaced;
      replaced.faces = {faceOnSurface(face, bspline)};
      Model other;
      addFaces(other, replaced);
      EXPECT_NEAR(meshFacts(other, 0.01).area, meshFacts(part, 0.01).area, 0.005 * meshFacts(part, 0.01).area);
    }
    EXPECT_GT(converted, 0);
  }
}

}  // namespace

}  // namespace standin::test

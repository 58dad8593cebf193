// Exact surfaces: of faces made for the purpose, and of every model at hand.
#include "standin/step/exact_part.h"

#include "standin/step/part_shape.h"

#include <gtest/gtest.h>
#include <BRepLib.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <Geom2d_Circle.hxx>
#include <Geom2d_Curve.hxx>
#include <Geom2d_Line.hxx>
#include <Geom2d_TrimmedCurve.hxx>
#include <GeomConvert.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Geom_BezierSurface.hxx>
#include <Geom_CylindricalSurface.hxx>
#include <Geom_Ellipse.hxx>
#include <Geom_Hyperbola.hxx>
#include <Geom_OffsetSurface.hxx>
#include <Geom_Plane.hxx>
#include <Geom_SphericalSurface.hxx>
#include <Geom_SurfaceOfLinearExtrusion.hxx>
#include <Geom_SurfaceOfRevolution.hxx>
#include <Geom_ToroidalSurface.hxx>
#include <Precision.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColStd_Array2OfReal.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TColgp_Array2OfPnt.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Vertex.hxx>
#include <TopoDS_Wire.hxx>
#include <gp_Ax2.hxx>
#include <gp_Circ2d.hxx>
#include <gp_Trsf.hxx>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <numbers>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "standin/step/exact_measure.h"
#include "standin/step/step_loader.h"
#include "standin/step/step_mesher.h"
#include "tests/step/exact_checks.h"
#include "tests/step/made_step.h"
#include "tests/step/mesh_checks.h"
#include "tests/support/large_models.h"
#include "tests/support/temporary_folder.h"

namespace standin::test {

namespace {

void fill(Model& part, const PartShape& faces) {
  const auto shape = std::make_shared<const PartShape>(faces);
  std::vector<int> ids;
  for (std::size_t i = 0; i < faces.faces.size(); ++i) ids.push_back(part.addSurface(0).id);
  part.outline = {{{-10.0, -10.0, -10.0}, {10.0, 10.0, 10.0}}};
  part.mesher = std::make_shared<StepMesher>(shape);
  part.converter = std::make_shared<StepConverter>(shape, ids);
}

void expectSound(const TopoDS_Shape& shape, double unit = 1.0) {
  Model part;
  fill(part, collectFaces(shape, unit));
  const ExactFacts facts = exactFacts(part, 0.03 / unit);
  EXPECT_GT(facts.surfaces, 0U);
  EXPECT_EQ(facts.passed, facts.surfaces);
  for (const std::string& fault : facts.faults) ADD_FAILURE() << fault;
  // Both sides of an edge run the same way, and meet at its ends.
  const auto exact = part.converter->convert();
  std::map<int, const ExactSurface*> surfaces;
  for (const ExactSurface* surface : surfacesOf(*exact)) surfaces[surface->recordId] = surface;
  for (const ExactEdge& edge : exact->edges) {
    if (edge.sides[1].surfaceId == PRO_VALUE_UNUSED) continue;
    for (const bool atStart : {true, false}) {
      std::vector<Point> points;
      for (const ExactEdge::Side& side : edge.sides) {
        const Point& at = atStart ? side.curve.poles.front() : side.curve.poles.back();
        points.push_back(pointAt(*surfaces.at(side.surfaceId), at[0], at[1]));
      }
      for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(points[0][k], points[1][k], 1e-6) << "edge " << edge.id;
    }
  }
}

using Loop = std::vector<Handle(Geom2d_Curve)>;

Handle(Geom2d_Curve) segment(const gp_Pnt2d& from, const gp_Pnt2d& to) {
  return new Geom2d_TrimmedCurve(new Geom2d_Line(from, gp_Dir2d(gp_Vec2d(from, to))), 0.0, from.Distance(to));
}

Loop polygon(const std::vector<gp_Pnt2d>& corners) {
  Loop loop;
  for (std::size_t i = 0; i < corners.size(); ++i)
    loop.push_back(segment(corners[i], corners[(i + 1) % corners.size()]));
  return loop;
}

Loop rectangle(double uFirst, double uLast, double vFirst, double vLast) {
  return polygon({{uFirst, vFirst}, {uLast, vFirst}, {uLast, vLast}, {uFirst, vLast}});
}

// Clockwise, as holes run.
Loop circleHole(double u, double v, double radius) {
  const gp_Circ2d circle(gp_Ax22d(gp_Pnt2d(u, v), gp_Dir2d(1.0, 0.0), gp_Dir2d(0.0, -1.0)), radius);
  const Handle(Geom2d_Circle) whole = new Geom2d_Circle(circle);
  return {new Geom2d_TrimmedCurve(whole, 0.3, 2.0), new Geom2d_TrimmedCurve(whole, 2.0, 0.3 + 2.0 * std::numbers::pi)};
}

// A face with these curves in its parameter plane as they are, also where they do not meet.
TopoDS_Face patch(const Handle(Geom_Surface) & surface, const std::vector<Loop>& loops) {
  constexpr double kTolerance = 1e-3;
  BRep_Builder builder;
  TopoDS_Face face;
  builder.MakeFace(face, surface, Precision::Confusion());
  for (const Loop& loop : loops) {
    std::vector<TopoDS_Vertex> corners(loop.size());
    for (std::size_t i = 0; i < loop.size(); ++i) {
      const gp_Pnt2d at = loop[i]->Value(loop[i]->FirstParameter());
      builder.MakeVertex(corners[i], surface->Value(at.X(), at.Y()), kTolerance);
    }
    TopoDS_Wire wire;
    builder.MakeWire(wire);
    for (std::size_t i = 0; i < loop.size(); ++i) {
      TopoDS_Edge edge;
      builder.MakeEdge(edge);
      builder.UpdateEdge(edge, loop[i], surface, TopLoc_Location(), Precision::Confusion());
      builder.Range(edge, surface, TopLoc_Location(), loop[i]->FirstParameter(), loop[i]->LastParameter());
      builder.Add(edge, corners[i].Oriented(TopAbs_FORWARD));
      builder.Add(edge, corners[(i + 1) % loop.size()].Oriented(TopAbs_REVERSED));
      builder.Add(wire, edge);
    }
    builder.Add(face, wire);
  }
  BRepLib::BuildCurves3d(face);
  return face;
}

Handle(Geom_BezierSurface) bezier() {
  TColgp_Array2OfPnt poles(1, 4, 1, 3);
  TColStd_Array2OfReal weights(1, 4, 1, 3);
  for (int i = 1; i <= 4; ++i) {
    for (int j = 1; j <= 3; ++j) {
      poles.SetValue(i, j, gp_Pnt(3.0 * i + 0.3 * j, 4.0 * j - 0.2 * i * i, (i - 2) * (j - 2) + 0.4 * i));
      weights.SetValue(i, j, 1.0 + 0.2 * i * (j == 2 ? 1 : 0));
    }
  }
  return new Geom_BezierSurface(poles, weights);
}

Handle(Geom_BSplineCurve) profile() {
  TColgp_Array1OfPnt poles(1, 6);
  for (int i = 1; i <= 6; ++i) poles.SetValue(i, gp_Pnt(5.0 + std::sin(1.3 * i), 0.0, 2.0 * i));
  TColStd_Array1OfReal knots(1, 4);
  TColStd_Array1OfInteger counts(1, 4);
  for (int i = 1; i <= 4; ++i) {
    knots.SetValue(i, i * i * 0.5);
    counts.SetValue(i, i == 1 || i == 4 ? 4 : 1);
  }
  return new Geom_BSplineCurve(poles, knots, counts, 3);
}

std::vector<TopoDS_Shape> variants(const TopoDS_Shape& shape) {
  gp_Trsf mirror;
  mirror.SetMirror(gp_Ax2(gp_Pnt(1.0, 2.0, 3.0), gp_Dir(0.3, 1.0, 0.2)));
  return {shape, shape.Reversed(), mirrored(shape), shape.Located(TopLoc_Location(mirror), false)};
}

TEST(ExactPart, ConvertsSolidsWithSeamsPolesAndApexesTurnedAndMirrored) {
  for (const TopoDS_Shape& solid :
       {BRepPrimAPI_MakeBox(1.0, 2.0, 3.0).Shape(), BRepPrimAPI_MakeSphere(5.0).Shape(),
        BRepPrimAPI_MakeSphere(5.0, -0.4, 1.1, 2.0).Shape(), BRepPrimAPI_MakeCone(4.0, 0.0, 6.0).Shape(),
        BRepPrimAPI_MakeCone(4.0, 1.0, 6.0, 4.0).Shape(), BRepPrimAPI_MakeCylinder(2.0, 7.0).Shape(),
        BRepPrimAPI_MakeTorus(6.0, 2.0).Shape(), BRepPrimAPI_MakeTorus(6.0, 2.0, 2.5).Shape()}) {
    for (const TopoDS_Shape& shape : variants(solid)) expectSound(shape);
  }
  expectSound(BRepPrimAPI_MakeTorus(152.4, 25.4).Shape(), 25.4);
}

TEST(ExactPart, ConvertsPatchesOfEverySurface) {
  const gp_Ax3 place(gp_Pnt(1.0, 2.0, 3.0), gp_Dir(0.2, 0.3, 1.0));
  gp_Ax3 leftHanded = place;
  leftHanded.YReverse();
  const Handle(Geom_Surface) torus = new Geom_ToroidalSurface(place, 6.0, 2.0);
  const Handle(Geom_BSplineSurface) closed = GeomConvert::SurfaceToBSplineSurface(torus);
  closed->SetUPeriodic();
  closed->SetVPeriodic();
  ASSERT_TRUE(closed->IsUPeriodic() && closed->IsVPeriodic());
  const Handle(Geom_Ellipse) ellipse = new Geom_Ellipse(place.Ax2(), 5.0, 2.0);
  const gp_Ax1 axis(gp_Pnt(0.0, 0.0, 0.0), gp_Dir(0.0, 0.0, 1.0));
  const Handle(Geom_Hyperbola) hyperbola =
      new Geom_Hyperbola(gp_Ax2(gp_Pnt(1.0, 0.0, 0.0), gp_Dir(0.0, 1.0, 0.0), gp_Dir(1.0, 0.0, 0.0)), 2.0, 3.0);
  const std::pair<const char*, TopoDS_Face> faces[] = {
      {"plane",
       patch(new Geom_Plane(leftHanded), {rectangle(-3, 9, 2, 5), circleHole(0, 3.5, 1), circleHole(5, 3.5, 1)})},
      {"hole across the seam of a cylinder",
       patch(new Geom_CylindricalSurface(leftHanded, 3.0), {rectangle(5, 8, 0, 9), circleHole(6.28, 4, 1)})},
      {"helix of several turns",
       patch(new Geom_CylindricalSurface(place, 3.0), {polygon({{0, 0}, {20, 10}, {20, 12}, {0, 2}})})},
      {"hole across the seam of a sphere",
       patch(new Geom_SphericalSurface(leftHanded, 3.0), {rectangle(5, 8, -1, 1.2), circleHole(6.28, 0, 0.7)})},
      {"across both seams of a torus", patch(torus, {rectangle(5, 8, 5, 8), circleHole(6.28, 6.28, 1)})},
      {"across both seams of a B-spline", patch(closed, {rectangle(5, 8, 5, 8), circleHole(6.28, 6.28, 1)})},
      {"beyond the end of a B-spline",
       patch(new Geom_SurfaceOfLinearExtrusion(profile(), gp_Dir(0.1, 1, 0)), {rectangle(0.49, 4, 1, 3)})},
      {"Bezier", patch(bezier(), {rectangle(0.0, 1.0, 0.1, 1.0), circleHole(0.5, 0.5, 0.3)})},
      {"beyond the end of a Bezier", patch(bezier(), {rectangle(0.1, 1.005, -0.005, 0.9)})},
      {"extruded ellipse", patch(new Geom_SurfaceOfLinearExtrusion(ellipse, gp_Dir(0, 1, 1)),
                                 {rectangle(5, 8, 0, 4), circleHole(6, 2, 1)})},
      {"offset", patch(new Geom_OffsetSurface(bezier(), 0.7), {rectangle(0.2, 0.9, 0.1, 0.8)})},
      {"offset of a sphere",
       patch(new Geom_OffsetSurface(new Geom_SphericalSurface(place, 3.0), 0.5), {rectangle(5, 8, -1, 1)})},
      {"revolved B-spline", patch(new Geom_SurfaceOfRevolution(profile(), axis), {rectangle(4, 9, 1, 5)})},
      {"revolved hyperbola", patch(new Geom_SurfaceOfRevolution(hyperbola, axis), {rectangle(0, 4, -1, 1.3)})},
  };
  for (const auto& [name, face] : faces) {
    SCOPED_TRACE(name);
    for (const TopoDS_Shape& shape : variants(face)) expectSound(shape);
  }
}

TEST(ExactPart, ClosesAndOrdersTheContoursOfFaultyFaces) {
  const Handle(Geom_Surface) plane = new Geom_Plane(gp_Ax3());
  SCOPED_TRACE("a gap");
  Loop gaping = rectangle(0, 10, 0, 5);
  gaping[2] = segment({9.9995, 5.0}, {0.0, 5.0003});
  expectSound(patch(plane, {gaping}));
  Model part;
  fill(part, collectFaces(patch(plane, {gaping}), 1.0));
  EXPECT_EQ(part.converter->convert()->edges.size(), 6U);
  SCOPED_TRACE("edges out of order");
  Loop shuffled = rectangle(0, 10, 0, 5);
  std::swap(shuffled[1], shuffled[2]);
  expectSound(patch(plane, {shuffled}));
  SCOPED_TRACE("loops that run the wrong way");
  Loop backward = polygon({{0, 0}, {0, 5}, {10, 5}, {10, 0}});
  expectSound(patch(plane, {polygon({{2, 2}, {4, 2}, {4, 4}, {2, 4}}), backward}));
}

TEST(ExactPart, SharesEdgesBetweenTwoSurfaces) {
  Model box;
  fill(box, collectFaces(BRepPrimAPI_MakeBox(1.0, 2.0, 3.0).Shape(), 1.0));
  const auto whole = box.converter->convert();
  EXPECT_EQ(whole->edges.size(), 12U);
  for (const ExactEdge& edge : whole->edges) {
    EXPECT_GT(edge.id, 0);
    EXPECT_NE(edge.sides[1].surfaceId, PRO_VALUE_UNUSED);
    EXPECT_NE(edge.sides[0].surfaceId, edge.sides[1].surfaceId);
  }
  // A seam, a pole at either end.
  Model ball;
  fill(ball, collectFaces(BRepPrimAPI_MakeSphere(2.0).Shape(), 1.0));
  const auto sphere = ball.converter->convert();
  ASSERT_EQ(sphere->edges.size(), 3U);
  const std::vector<int>& ids = sphere->solid.at(0).contours.at(0).edgeIds;
  ASSERT_EQ(ids.size(), 4U);
  for (const ExactEdge& edge : sphere->edges) {
    const bool seam = std::count(ids.begin(), ids.end(), edge.id) == 2;
    EXPECT_EQ(edge.sides[1].surfaceId, seam ? ball.surfaces[0].id : PRO_VALUE_UNUSED);
    if (seam) {
      EXPECT_EQ(edge.sides[0].direction + edge.sides[1].direction, 0);
    }
  }
  // The same face thrice: the third finds no room at the edges of the first two.
  PartShape thrice = collectFaces(BRepPrimAPI_MakeBox(1.0, 1.0, 1.0).Shape(), 1.0);
  thrice.faces.resize(1);
  thrice.faces.resize(3, thrice.faces.front());
  thrice.solidFaces = 3;
  Model heap;
  fill(heap, thrice);
  EXPECT_EQ(heap.converter->convert()->edges.size(), 8U);
  EXPECT_EQ(exactFacts(heap, 0.01).passed, 3U);
}

TEST(ExactPart, LeavesOutWhatCannotBeConvertedAndKeepsTheRest) {
  PartShape shape = collectFaces(BRepPrimAPI_MakeCone(4.0, 1.0, 6.0).Shape(), 1.0);
  TopoDS_Face unbounded = shape.faces.front();
  unbounded.EmptyCopy();
  shape.faces.insert(shape.faces.begin() + 1, {unbounded, TopoDS_Face()});
  shape.solidFaces = shape.faces.size();
  std::vector<int> ids(shape.faces.size());
  for (std::size_t i = 0; i < ids.size(); ++i) ids[i] = static_cast<int>(i) + 40;
  const auto exact = StepConverter(std::make_shared<const PartShape>(shape), ids).convert();
  ASSERT_EQ(exact->failures.size(), 2U);
  EXPECT_EQ(exact->failures[0], (std::pair<std::size_t, std::string>{1, "the face has no bounds"}));
  EXPECT_EQ(exact->failures[1], (std::pair<std::size_t, std::string>{2, "the face has no surface"}));
  ASSERT_EQ(exact->solid.size(), 3U);
  EXPECT_EQ(exact->solid[1].index, 3U);
  EXPECT_EQ(exact->solid[1].recordId, 43);
}

TEST(ExactPart, GivesEqualAnswersUntilToldOtherwise) {
  Model part;
  fill(part, collectFaces(BRepPrimAPI_MakeCone(4.0, 1.0, 6.0).Shape(), 1.0));
  const auto first = part.converter->convert();
  EXPECT_EQ(part.converter->convert(), first);
  part.converter->forget();
  const auto again = part.converter->convert();
  EXPECT_NE(again, first);
  ASSERT_EQ(again->solid.size(), first->solid.size());
  for (std::size_t i = 0; i < first->solid.size(); ++i) {
    EXPECT_EQ(again->solid[i].poles, first->solid[i].poles);
    EXPECT_EQ(again->solid[i].uKnots, first->solid[i].uKnots);
    EXPECT_EQ(again->solid[i].contours.at(0).edgeIds, first->solid[i].contours.at(0).edgeIds);
  }
}

TEST(ExactPart, CarriesForeignIdsWhenTheOverlayAsks) {
  const rendara::testing::TemporaryFolder folder;
  writeStep(folder.path() / "box.step", {{BRepPrimAPI_MakeBox(1.0, 2.0, 3.0).Shape(), "box"}});
  Session session;
  const LoadResult result = loadStep(session, folder.path() / "box.step");
  ASSERT_NE(result.model, nullptr) << result.error;
  const auto foreign = [&](const std::string& entry) {
    rendara::testing::writeFile(folder.path() / "box.json",
                                R"({"version": 1, "exactSurfaces": [{"part": "box", )" + entry + "}]}");
    EXPECT_EQ(applyOverlay(session, *result.model, folder.path() / "box.json"), "");
    std::set<int> strangers;
    const auto exact = result.model->converter->convert();
    for (const ExactSurface* surface : surfacesOf(*exact)) {
      if (result.model->surface(surface->recordId) == nullptr) strangers.insert(surface->recordId);
    }
    // The edges still name the surface itself.
    const auto edges = edgesById(*exact);
    for (const ExactSurface* surface : surfacesOf(*exact)) {
      std::vector<std::string> faults;
      const SurfaceTrims trims(*surface, result.model->surfaces[surface->index].id, edges, faults);
      EXPECT_TRUE(faults.empty());
      EXPECT_GT(trims.area(), 0.0);
    }
    return strangers.size();
  };
  EXPECT_EQ(foreign(R"("foreignIds": 2)"), 3U);
  EXPECT_EQ(foreign(R"("foreignIds": 6)"), 1U);
  EXPECT_EQ(foreign(R"("foreignIds": 0)"), 0U);
}

std::vector<std::filesystem::path> modelFiles() {
  std::vector<std::filesystem::path> files;
  std::error_code error;
  for (const char* root : {RENDARA_MODEL_DIR, RENDARA_SOURCE_DIR "/samples"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root, error)) {
      const auto extension = entry.path().extension();
      if (extension == ".stp" || extension == ".step") files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

class ExactModelFile : public ::testing::TestWithParam<std::filesystem::path> {};

TEST_P(ExactModelFile, HasSoundExactSurfaces) {
  if (rendara::testing::leftOutUnderSanitizers(GetParam().filename().string()))
    GTEST_SKIP() << "left out under sanitizers";
  Session session;
  const LoadResult result = loadStep(session, GetParam());
  ASSERT_NE(result.model, nullptr) << result.error;
  std::size_t surfaces = 0;
  std::size_t passed = 0;
  std::size_t misleading = 0;
  for (const auto& model : session.models()) {
    if (!model->converter) continue;
    const ExactFacts facts = exactFacts(*model, defaultChordHeight(*model));
    surfaces += facts.surfaces;
    passed += facts.passed;
    misleading += facts.misleading;
    for (const std::string& fault : facts.faults) ADD_FAILURE() << fault;
  }
  RecordProperty("surfaces", static_cast<int>(surfaces));
  RecordProperty("passed", static_cast<int>(passed));
  RecordProperty("misleading", static_cast<int>(misleading));
  std::cout << GetParam().filename() << ' ' << passed << " of " << surfaces << ", misleading " << misleading << '\n';
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ExactModelFile);
INSTANTIATE_TEST_SUITE_P(Files, ExactModelFile, ::testing::ValuesIn(modelFiles()), [](const auto& tested) {
  std::string name = tested.param.filename().string();
  for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
  return name;
});

}  // namespace

}  // namespace standin::test

// The exact surfaces of a part, from the CAD system's records to the scene.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "geometry/part_geometry.h"
#include "scene/matrix.h"
#include "tests/support/recording_scene.h"
#include "tests/support/test_session.h"

namespace rendara {
namespace {

using standin::ExactEdge;
using standin::ExactPart;
using standin::ExactSurface;
using standin::PlaneCurve;
using standin::test::addMeshedSurface;
using standin::test::mesherOf;
using standin::test::quadMesh;
using standin::test::solid;
using testing::RecordingScene;

class FixedConverter : public standin::PartConverter {
 public:
  ExactPart part;
  bool gives = true;
  std::shared_ptr<const ExactPart> convert() override { return gives ? std::make_shared<ExactPart>(part) : nullptr; }
};

PlaneCurve line(double u0, double v0, double u1, double v1) {
  return {PRO_ENT_B_SPLINE, 1, {0, 0, 1, 1}, {}, {{u0, v0, 0}, {u1, v1, 0}}};
}
// A closed ring through four corners, counter-clockwise about a centre.
PlaneCurve ring(double center, double radius) {
  const double low = center - radius;
  const double high = center + radius;
  return {PRO_ENT_B_SPLINE,
          1,
          {0, 0, 1, 2, 3, 4, 4},
          {},
          {{low, low, 0}, {high, low, 0}, {high, high, 0}, {low, high, 0}, {low, low, 0}}};
}

class ExactSurfaces : public ::testing::Test {
 protected:
  ExactSurfaces() : part(session.addModel(PRO_MDL_PART, L"Cover")) {
    feature = part.addFeature(917).id;
    part.converter = converter;
  }
  ~ExactSurfaces() override {
    session.finish();
    EXPECT_TRUE(session.misuse().empty()) << session.misuse().front();
  }

  // A surface of the part with its mesh and its record: 2 by 3 poles, whose first coordinate is `number`.
  ExactSurface& add(int number) {
    standin::Surface& surface =
        addMeshedSurface(part, quadMesh({{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}}, {0, 0, 1}), feature);
    ExactSurface exact;
    exact.index = surface.index;
    exact.recordId = surface.id;
    exact.uKnots = {0, 0, 1, 1};
    exact.vDegree = 2;
    exact.vKnots = {-1, -1, -1, 2, 2, 2};
    for (int i = 0; i < 2; ++i) {
      for (int j = 0; j < 3; ++j) exact.poles.push_back({double(number), double(i), double(j)});
    }
    converter->part.solid.push_back(exact);
    return converter->part.solid.back();
  }
  int idOf(std::size_t index) const { return part.surfaces[index].id; }

  // An edge of a surface with one curve; its id is returned.
  int addEdge(int surfaceId, const PlaneCurve& curve, int direction = -1) {
    ExactEdge edge;
    edge.id = 1000 + static_cast<int>(converter->part.edges.size());
    edge.sides[0] = {surfaceId, direction, curve};
    converter->part.edges.push_back(edge);
    return edge.id;
  }

  bool write() {
    scene.clear();
    const PartOccurrence occurrence{solid(part), {}, "cover.prt", kIdentityMatrix.data(), true};
    return exportPartGeometry(scene, occurrence, options, {meshBuffers, exactBuffers}, [] {}).material.has_value();
  }
  std::vector<std::string> calls(const std::string& start) const {
    std::vector<std::string> found;
    for (const std::string& call : scene.calls()) {
      if (call.starts_with(start)) found.push_back(call.substr(start.size()));
    }
    return found;
  }
  std::string value(const std::string& name) const {
    const std::vector<std::string> found = calls("parameter \"" + name + "\" ");
    return found.empty() ? "" : found.back();
  }

  standin::Session session;
  standin::Model& part;
  int feature = 0;
  std::shared_ptr<FixedConverter> converter = std::make_shared<FixedConverter>();
  GeometryOptions options;
  MeshBuffers meshBuffers;
  ExactSurfaceBuffers exactBuffers;
  RecordingScene scene;
};

TEST_F(ExactSurfaces, StandBeforeTheMeshInTheGroupOfTheirMaterial) {
  ExactSurface& surface = add(7);
  surface.weights = {1, 2, 3, 4, 5, 6};
  surface.contours = {{PRO_CONTOUR_TRAV_EXTERNAL, {addEdge(idOf(0), ring(0.5, 0.5))}}};
  EXPECT_TRUE(write());
  const std::string expected =
      "beginGroup \"Cover\" noDefine\nflags 0x10400\nbeginObject \"Cover\" noDefine\nbeginGeometry \"nurbs\"\n"
      "parameter \"umin\" 4 0\nparameter \"umax\" 4 1\nparameter \"vmin\" 4 -1\nparameter \"vmax\" 4 2\n"
      "parameter \"uorder\" 6 2\nparameter \"vorder\" 6 3\n"
      "parameter \"uknot\" 0x8004 [0, 0, 1, 1]\nparameter \"vknot\" 0x8004 [-1, -1, -1, 2, 2, 2]\n"
      "parameter \"Pw\" 0x8004 [7, 0, 0, 1, 7, 1, 0, 4, 7, 0, 1, 2, 7, 1, 1, 5, 7, 0, 2, 3, 7, 1, 2, 6]\n"
      "parameter \"trim_nedges\" 0x8006 [1]\nparameter \"trim_inside\" 0x8006 [1]\n"
      "parameter \"edge_order\" 0x8006 [2]\nparameter \"edge_nknots\" 0x8006 [7]\n"
      "parameter \"edge_min\" 0x8004 [0]\nparameter \"edge_max\" 0x8004 [4]\n"
      "parameter \"edge_knot\" 0x8004 [0, 0, 1, 2, 3, 4, 4]\n"
      "parameter \"edge_uvw\" 0x8004 [0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1, 0, 0, 1]\n"
      "endGeometry\nbeginMaterial \"cover:color:153:153:153\" noDefine\n";
  EXPECT_NE(scene.text().find(expected), std::string::npos) << scene.text();
  EXPECT_EQ(calls("beginGeometry "), (std::vector<std::string>{"\"nurbs\"", "\"triangles\""}));
  EXPECT_EQ(calls("beginMaterial ").size(), 2U);
  options.includeNURBS = false;
  EXPECT_TRUE(write());
  EXPECT_EQ(calls("beginGeometry "), std::vector<std::string>{"\"triangles\""});
  EXPECT_EQ(scene.count("beginGroup"), 1);
}

TEST_F(ExactSurfaces, ContoursRunAsTheirTraversalSays) {
  ExactSurface& surface = add(7);
  PlaneCurve clockwise = ring(0.5, 0.5);
  std::reverse(clockwise.poles.begin(), clockwise.poles.end());
  clockwise.weights = {1, 2, 3, 4, 5};
  const int outer = addEdge(idOf(0), clockwise);
  const int hole = addEdge(idOf(0), ring(0.5, 0.25));
  const int other = addEdge(idOf(0), ring(0.5, 0.125));
  surface.contours = {
      {PRO_CONTOUR_TRAV_EXTERNAL, {outer}}, {PRO_CONTOUR_TRAV_INTERNAL, {hole}}, {PRO_CONTOUR_TRAV_NONE, {other}}};
  write();
  EXPECT_EQ(value("trim_inside"), "0x8006 [1, 0, 1]");
  EXPECT_EQ(value("trim_nedges"), "0x8006 [1, 1, 1]");
  EXPECT_EQ(value("edge_uvw"),
            "0x8004 [0, 0, 5, 1, 0, 4, 1, 1, 3, 0, 1, 2, 0, 0, 1, "
            "0.25, 0.25, 1, 0.25, 0.75, 1, 0.75, 0.75, 1, 0.75, 0.25, 1, 0.25, 0.25, 1, "
            "0.375, 0.375, 1, 0.625, 0.375, 1, 0.625, 0.625, 1, 0.375, 0.625, 1, 0.375, 0.375, 1]");
  // The direction of the surface's own side turns a curve round first.
  converter->part.edges[2].sides[0].direction = 1;
  write();
  EXPECT_TRUE(value("edge_uvw")
                  .ends_with("0.375, 0.375, 1, 0.375, 0.625, 1, 0.625, 0.625, 1, 0.625, 0.375, 1, "
                             "0.375, 0.375, 1]"));
}

TEST_F(ExactSurfaces, EdgesGiveTheCurveOfTheirSideOnTheSurface) {
  add(7);
  add(8);
  ExactSurface& first = converter->part.solid[0];
  ExactSurface& second = converter->part.solid[1];
  const int shared = addEdge(idOf(0), line(0, 0, 1, 0));
  converter->part.edges.back().sides[1] = {idOf(1), -1, line(5, 5, 6, 5)};
  // A seam: both sides on the second surface.
  const int seam = addEdge(idOf(1), line(0, 0, 0, 1));
  converter->part.edges.back().sides[1] = {idOf(1), 1, line(9, 0, 9, 1)};
  const int foreign = addEdge(4444, line(3, 3, 4, 4));
  const int arc = addEdge(idOf(1), line(2, 2, 3, 3));
  converter->part.edges.back().sides[0].curve.type = PRO_ENT_ARC;
  const int missing = 9999;
  first.contours = {{PRO_CONTOUR_TRAV_NONE, {shared}}};
  second.contours = {{PRO_CONTOUR_TRAV_NONE, {seam, foreign, arc, missing, shared, seam}}};
  write();
  const std::vector<std::string> points = calls("parameter \"edge_uvw\" ");
  ASSERT_EQ(points.size(), 2U);
  EXPECT_EQ(points[0], "0x8004 [0, 0, 1, 1, 0, 1]");
  EXPECT_EQ(points[1], "0x8004 [0, 0, 1, 0, 1, 1, 5, 5, 1, 6, 5, 1, 9, 1, 1, 9, 0, 1]");
  EXPECT_EQ(value("trim_nedges"), "0x8006 [3]");
}

TEST_F(ExactSurfaces, ACurveThatCannotBeReadEndsItsContourOnly) {
  ExactSurface& surface = add(7);
  const int good = addEdge(idOf(0), line(0, 0, 1, 0));
  const int bad = addEdge(idOf(0), line(1, 0, 1, 1));
  converter->part.edges.back().sides[0].curve.knots.pop_back();
  const int behind = addEdge(idOf(0), line(1, 1, 0, 0));
  const int hole = addEdge(idOf(0), ring(0.5, 0.25));
  surface.contours = {{PRO_CONTOUR_TRAV_NONE, {good, bad, behind}}, {PRO_CONTOUR_TRAV_INTERNAL, {hole}}};
  write();
  EXPECT_EQ(value("trim_nedges"), "0x8006 [1, 1]");
  EXPECT_EQ(value("trim_inside"), "0x8006 [0]");
  EXPECT_EQ(value("edge_nknots"), "0x8006 [4, 7]");
  // Without any entry in one of the integer arrays none is written.
  surface.contours.pop_back();
  write();
  EXPECT_EQ(scene.count("parameter \"trim_"), 0);
  EXPECT_EQ(scene.count("parameter \"edge_"), 0);
  EXPECT_EQ(scene.count("parameter \"Pw\""), 1);
}

TEST_F(ExactSurfaces, RecordsThatAreNoSplinesLeaveTheirGeometryEmpty) {
  add(7).poles.clear();
  add(8).poles.pop_back();
  add(9).uKnots = {0, 0, 1};
  add(10);
  write();
  EXPECT_EQ(scene.count("beginGeometry \"nurbs\""), 4);
  EXPECT_EQ(calls("parameter \"Pw\" ").size(), 1U);
  EXPECT_NE(scene.text().find("beginGeometry \"nurbs\"\nendGeometry\n"), std::string::npos);
  converter->gives = false;
  write();
  EXPECT_EQ(scene.count("beginGeometry \"nurbs\""), 0);
  EXPECT_EQ(scene.count("beginGroup \"Cover\""), 1);
}

TEST_F(ExactSurfaces, RecordsOfUnknownIdsGoToTheFirstSurfaceWhoseContourHoldsTheirs) {
  for (int number : {1, 2, 3}) add(number);
  std::vector<ExactSurface>& surfaces = converter->part.solid;
  const int a = addEdge(idOf(0), ring(0.5, 0.5));
  const int b = addEdge(idOf(1), ring(0.5, 0.5));
  surfaces[0].contours = {{PRO_CONTOUR_TRAV_EXTERNAL, {a}}};
  surfaces[1].contours = {{PRO_CONTOUR_TRAV_EXTERNAL, {b}}};
  surfaces[2].contours = {{PRO_CONTOUR_TRAV_EXTERNAL, {7777}}, {PRO_CONTOUR_TRAV_INTERNAL, {b}}};
  surfaces[2].recordId = 8000;
  const auto owners = [&] {
    // The first coordinate of each record's poles tells which it is.
    std::vector<char> order;
    for (const std::string& points : calls("parameter \"Pw\" ")) order.push_back(points.at(8));
    return std::string(order.begin(), order.end());
  };
  write();
  EXPECT_EQ(owners(), "123");
  EXPECT_EQ(calls("parameter \"trim_nedges\" ").size(), 3U) << "the trims are those of the surface that took it";

  // A record of several contours needs one of them only; one without an edge matches everything.
  surfaces[2].contours = {{PRO_CONTOUR_TRAV_EXTERNAL, {}}};
  write();
  EXPECT_EQ(owners(), "132");
  // Without any contour there is no pair to match: it is dropped.
  surfaces[2].contours.clear();
  write();
  EXPECT_EQ(owners(), "12");
}

TEST_F(ExactSurfaces, QuiltsHaveRecordsAndFailedMeshesHaveNone) {
  add(1);
  standin::Quilt& quilt = part.addQuilt(feature);
  const standin::Surface& sheet =
      addMeshedSurface(part, quadMesh({{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}}, {0, 0, 1}), feature, &quilt);
  ExactSurface exact = converter->part.solid.front();
  exact.index = sheet.index;
  exact.recordId = sheet.id;
  converter->part.quilts = {{exact, exact}};
  write();
  EXPECT_EQ(scene.count("beginGeometry \"nurbs\""), 3) << "two records of one id";
  mesherOf(part).fails = [](std::size_t surface, double) { return surface == 0; };
  write();
  EXPECT_EQ(scene.count("beginGeometry \"nurbs\""), 2);
}

}  // namespace
}  // namespace rendara

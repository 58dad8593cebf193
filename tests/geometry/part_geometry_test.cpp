#include "geometry/part_geometry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "scene/matrix.h"
#include "tests/support/recording_scene.h"
#include "tests/support/test_session.h"

namespace rendara {
namespace {

using standin::Appearance;
using standin::Model;
using standin::SurfaceMesh;
using standin::test::addMeshedSurface;
using standin::test::mesherOf;
using standin::test::solid;
using testing::RecordingScene;

const Appearance kRed = {L"Red", {1, 0, 0}, L""};
const Appearance kBlue = {L"blue", {0, 0, 1}, L""};

// A triangle whose corners carry a number, so that it can be told apart in the output.
SurfaceMesh triangle(double number) {
  return {{{number, 0, 0}, {number, 1, 0}, {number, 0, 1}},
          {{1, 0, 0}, {1, 0, 0}, {1, 0, 0}},
          {{0, 0}, {1, 0}, {0, 1}},
          {{0, 1, 2}}};
}

class PartGeometry : public ::testing::Test {
 protected:
  PartGeometry() : part(session.addModel(PRO_MDL_PART, L"Cover")) {
    feature = part.addFeature(917).id;
    options.includeNURBS = false;
  }
  ~PartGeometry() override {
    session.finish();
    EXPECT_TRUE(session.misuse().empty()) << session.misuse().front();
  }

  standin::Surface& add(SurfaceMesh mesh) { return addMeshedSurface(part, std::move(mesh), feature); }

  std::optional<MaterialRecord> write(bool define = true, ProAsmcomppath path = {}) {
    scene.clear();
    const PartOccurrence occurrence{solid(part), path, "cover.prt", kIdentityMatrix.data(), define};
    return exportPartGeometry(scene, occurrence, options, {buffers, exactBuffers}, [this] { scene.id(4711); }).material;
  }
  // The calls that begin with a text, without it.
  std::vector<std::string> values(const std::string& start) const {
    std::vector<std::string> found;
    for (const std::string& call : scene.calls()) {
      if (call.starts_with(start)) {
        found.push_back(call.substr(start.size()));
      }
    }
    return found;
  }

  standin::Session session;
  Model& part;
  int feature = 0;
  GeometryOptions options;
  MeshBuffers buffers;
  ExactSurfaceBuffers exactBuffers;
  RecordingScene scene;
};

TEST_F(PartGeometry, WritesOneObjectInItsGroup) {
  add(triangle(5));
  EXPECT_TRUE(write().has_value());
  EXPECT_EQ(scene.text(),
            "beginGroup \"cover.prt\" noDefine\n"
            "flags 0x400\n"
            "beginObject \"Cover\" noDefine\n"
            "beginGeometry \"triangles\"\n"
            "parameter \"vertices\" 0x8001 [5 0 0, 5 1 0, 5 0 1]\n"
            "parameter \"normals\" 0x8001 [1 0 0, 1 0 0, 1 0 0]\n"
            "parameter \"uv_tex\" 0x8003 [0, 0, 1, 0, 0, 1]\n"
            "parameter \"triangles\" 0x8006 [0, 1, 2]\n"
            "endGeometry\n"
            "beginMaterial \"cover:color:153:153:153\" noDefine\n"
            "beginShader null \"vnt_diffuse\"\n"
            "parameter \"diffuse\" 1 0.6 0.6 0.6\n"
            "currentCapture capture 1\n"
            "endShader 0\n"
            "shader 0 capture 1\n"
            "endBlock\n"
            "endObject\n"
            "id 4711\n"
            "transform 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 multiply\n"
            "endGroup\n");
}

TEST_F(PartGeometry, WithoutSurfacesNothingIsWritten) {
  EXPECT_FALSE(write().has_value());
  EXPECT_EQ(scene.text(), "");
}

TEST_F(PartGeometry, LaterOccurrencesAreGroupAnimationAndPlacement) {
  add(triangle(5));
  EXPECT_FALSE(write(false).has_value());
  EXPECT_EQ(scene.text(),
            "beginGroup \"cover.prt\" noDefine\nid 4711\n"
            "transform 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 multiply\nendGroup\n");
  EXPECT_TRUE(mesherOf(part).requests.empty());
}

TEST_F(PartGeometry, GroupsByMaterialInTheOrderOfTheNames) {
  add(triangle(1)).appearance = kRed;
  add(triangle(2)).appearance = kBlue;
  add(triangle(3)).appearance = Appearance{L"RED", {0.9999, 0, 0.001}, L""};  // the same name in lower case
  add(triangle(4));
  write();
  EXPECT_EQ(values("beginMaterial "),
            (std::vector<std::string>{"\"cover:blue:0:0:255\" noDefine", "\"cover:color:153:153:153\" noDefine",
                                      "\"cover:red:255:0:0\" noDefine"}));
  EXPECT_EQ(values("parameter \"vertices\" "),
            (std::vector<std::string>{"0x8001 [2 0 0, 2 1 0, 2 0 1]", "0x8001 [4 0 0, 4 1 0, 4 0 1]",
                                      "0x8001 [1 0 0, 1 1 0, 1 0 1, 3 0 0, 3 1 0, 3 0 1]"}));
  EXPECT_EQ(values("parameter \"triangles\" ").back(), "0x8006 [0, 1, 2, 3, 4, 5]");
  options.separateMaterials = false;
  EXPECT_EQ(write()->displayName, L"blue");
  EXPECT_EQ(values("beginMaterial ").front(), "\"blue:0:0:255\" noDefine");
}

TEST_F(PartGeometry, AppearanceIsTheSurfacesTheComponentsOrTheParts) {
  add(triangle(1));
  part.appearance = kRed;
  write();
  EXPECT_EQ(values("beginMaterial ").front(), "\"cover:red:255:0:0\" noDefine");
  Model& assembly = session.addModel(PRO_MDL_ASSEMBLY, L"top");
  standin::Feature& component = assembly.addComponent(part, standin::kIdentity);
  component.appearance = kBlue;
  ProAsmcomppath path{solid(assembly), {component.id}, 1};
  write(true, path);
  EXPECT_EQ(values("beginMaterial ").front(), "\"cover:blue:0:0:255\" noDefine");
  part.surfaces.front().appearance = Appearance{L"", {0, 1, 0}, L""};
  write(true, path);
  EXPECT_EQ(values("beginMaterial ").front(), "\"cover:blue:0:0:255\" noDefine") << "a name is needed";
  part.surfaces.front().appearance = Appearance{L"own", {0, 1, 0}, L""};
  write(true, path);
  EXPECT_EQ(values("beginMaterial ").front(), "\"cover:own:0:255:0\" noDefine");
}

TEST_F(PartGeometry, SurfacesWithoutFacetsStillMoveTheIndices) {
  add(triangle(1));
  SurfaceMesh bare = triangle(2);
  bare.facets.clear();
  add(bare);
  add(triangle(3));
  write();
  EXPECT_EQ(values("parameter \"vertices\" ").front(), "0x8001 [1 0 0, 1 1 0, 1 0 1, 3 0 0, 3 1 0, 3 0 1]");
  EXPECT_EQ(values("parameter \"triangles\" ").front(), "0x8006 [0, 1, 2, 6, 7, 8]");
}

TEST_F(PartGeometry, AbsentNormalsAndParametersLeaveTheirArraysShort) {
  SurfaceMesh bare = triangle(1);
  bare.normals.clear();
  bare.params.clear();
  add(bare);
  write();
  EXPECT_EQ(scene.count("parameter \"normals\""), 0);
  EXPECT_EQ(scene.count("parameter \"uv_tex\""), 0);
  add(triangle(2));
  write();
  EXPECT_EQ(values("parameter \"normals\" ").front(), "0x8001 [1 0 0, 1 0 0, 1 0 0]");
  EXPECT_EQ(values("parameter \"uv_tex\" ").front(), "0x8003 [0, 0, 1, 0, 0, 1]");
}

TEST_F(PartGeometry, FailedSurfacesAreLeftOutWithoutMovingTheIndices) {
  add(triangle(1));
  add(triangle(2));
  mesherOf(part).fails = [](std::size_t surface, double) { return surface == 0; };
  EXPECT_TRUE(write().has_value());
  EXPECT_EQ(values("parameter \"triangles\" ").front(), "0x8006 [0, 1, 2]");
  mesherOf(part).fails = [](std::size_t, double) { return true; };
  EXPECT_FALSE(write().has_value());
  EXPECT_EQ(scene.count("beginObject"), 0);
  EXPECT_EQ(scene.count("beginGroup"), 1);
}

TEST_F(PartGeometry, ExactSurfacesWrapEveryMaterialInAGroup) {
  options.includeNURBS = true;
  add(triangle(1)).appearance = kRed;
  add(triangle(2));
  mesherOf(part).fails = [](std::size_t surface, double) { return surface == 0; };
  write();
  std::vector<std::string> structure;
  for (const std::string& call : scene.calls()) {
    if (call.starts_with("beginGroup") || call.starts_with("endGroup") || call.starts_with("flags") ||
        call.starts_with("beginObject")) {
      structure.push_back(call);
    }
  }
  EXPECT_EQ(structure, (std::vector<std::string>{
                           "beginGroup \"cover.prt\" noDefine", "flags 0x400", "beginGroup \"Cover\" noDefine",
                           "flags 0x10400", "beginObject \"Cover\" noDefine", "endGroup",
                           "beginGroup \"Cover\" noDefine", "flags 0x10400", "endGroup", "endGroup"}));
}

TEST_F(PartGeometry, BuffersKeepTheirCapacity) {
  SurfaceMesh large = triangle(1);
  large.facets.assign(100000, {0, 1, 2});
  add(large);
  write();
  const int* data = buffers.meshTriangles.data();
  write();
  EXPECT_EQ(buffers.meshTriangles.data(), data);
  EXPECT_EQ(buffers.meshTriangles.size(), 300000U);
}

}  // namespace
}  // namespace rendara

#include "tools/rpk/gltf/gltf_writer.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>

#include "tests/gltf/written_package.h"
#include "tests/support/temporary_folder.h"
#include "tools/rpk/gltf/binary_data.h"
#include "tools/rpk/mapped_file.h"
#include "tools/rpk/utf8_text.h"

namespace {

using namespace gltf_test;

double determinant(const Matrix& m) {
  return m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8]) + m[2] * (m[4] * m[9] - m[5] * m[8]);
}

TEST(GltfWriter, TurnsEveryUpAxisToYInMetres) {
  const struct {
    const char* value;
    Vector up;
  } axes[] = {{"0", {1, 0, 0}},  {"1", {0, 1, 0}}, {"2", {0, 0, 1}},  {"3", {-1, 0, 0}}, {"4", {0, -1, 0}},
              {"5", {0, 0, -1}}, {"7", {0, 1, 0}}, {"-1", {0, 1, 0}}, {"", {0, 1, 0}},   {"\"z\"", {0, 1, 0}}};
  for (const auto& axis : axes) {
    SCOPED_TRACE(axis.value);
    const std::string option = *axis.value ? fmt::format("\"import_up_vector\" {},\n", axis.value) : "";
    const Written written = write(package(group("top", object()), option + "\"meter_scale\" 39.370079,\n"));
    const Matrix world = placedNode(written.model, "top").world;
    const Vector up = rpk::transformPoint(axis.up, world);
    EXPECT_NEAR(up[0], 0, 1e-12);
    EXPECT_NEAR(up[1], 0.0254, 1e-8);
    EXPECT_NEAR(up[2], 0, 1e-12);
    EXPECT_NEAR(determinant(world), 0.0254 * 0.0254 * 0.0254, 1e-10) << "mirrored";
  }
  // Z up is the turn that all CAD programs make: what was in front stays in front.
  const Written z = write(package(group("top", object()), "\"import_up_vector\" 2,\n\"meter_scale\" 1,\n"));
  const Vector point = rpk::transformPoint({1, 2, 3}, placedNode(z.model, "top").world);
  EXPECT_NEAR(point[0], 1, 1e-12);
  EXPECT_NEAR(point[1], 3, 1e-12);
  EXPECT_NEAR(point[2], -2, 1e-12);
}

TEST(GltfWriter, SharesMeshesBetweenDefinitionAndReferences) {
  const std::string red = plainMaterial("red", "1 0 0");
  const std::string blue = plainMaterial("blue", "0 0 1");
  const Written written = write(package(
      group("top",
            group("a.prt", object({}, red) + transform("1 0 0 0 0 1 0 0 0 0 1 0 100 0 0 1")) +
                group("a.prt", reference("a.prt", red) + transform("1 0 0 0 0 1 0 0 0 0 1 0 0 200 0 1")) +
                group("a.prt", reference("a.prt", blue)) +
                group("inner.asm", group("a.prt", reference("a.prt")) + transform("0 1 0 0 -1 0 0 0 0 0 1 0 5 0 0 1")) +
                group("two.prt", object({}, red) + object({}, blue)) + group("two.prt", reference("two.prt", blue)) +
                group("lost.prt", reference("nothing.prt", red)))));
  const tinygltf::Model& model = written.model;
  const int mesh = placedNode(model, "a.prt", 0).node->mesh;
  EXPECT_EQ(placedNode(model, "a.prt", 1).node->mesh, mesh);
  EXPECT_EQ(placedNode(model, "a.prt", 3).node->mesh, mesh) << "a reference without a material keeps the source's";
  EXPECT_NEAR(placedNode(model, "a.prt", 1).world[12], 0, 1e-12) << "the source's transform does not apply";
  EXPECT_NEAR(placedNode(model, "a.prt", 1).world[13], 0.2, 1e-12);
  EXPECT_NEAR(placedNode(model, "a.prt", 3).world[12], 0.005, 1e-12);

  // The same numbers in another colour.
  const int other = placedNode(model, "a.prt", 2).node->mesh;
  ASSERT_NE(other, mesh);
  const tinygltf::Primitive& first = model.meshes.at(static_cast<std::size_t>(mesh)).primitives.at(0);
  const tinygltf::Primitive& second = model.meshes.at(static_cast<std::size_t>(other)).primitives.at(0);
  EXPECT_EQ(first.attributes, second.attributes);
  EXPECT_EQ(first.indices, second.indices);
  EXPECT_EQ(model.materials.at(static_cast<std::size_t>(first.material)).name, "red");
  EXPECT_EQ(model.materials.at(static_cast<std::size_t>(second.material)).name, "blue");

  // A source of two materials keeps them.
  EXPECT_EQ(placedNode(model, "two.prt", 1).node->mesh, placedNode(model, "two.prt", 0).node->mesh);
  EXPECT_EQ(placedNode(model, "lost.prt").node->mesh, -1);
  EXPECT_EQ(model.meshes.size(), 3U);
  EXPECT_EQ(written.summary.placedMeshes, 6U);
}

TEST(GltfWriter, FoldsGroupsOfOneMaterialIntoTheirPart) {
  const std::string red = object({}, plainMaterial("red", "1 0 0"));
  const std::string blue = object({}, plainMaterial("blue", "0 0 1"));
  const std::string surfaces = "object \"part\" {\ngeometry \"nurbs\" {\n\"uorder\" 2,\n}\n}\n";
  const Written plain = write(package(group("top", group("p", "flags 1024\n" + red + blue))));
  const Written exact =
      write(package(group("top", group("p", "flags 1024\n" + group("part", "flags 66560\n" + surfaces + red) +
                                                group("part", "flags 66560\n" + surfaces + blue)))));
  EXPECT_TRUE(plain.bytes == exact.bytes) << "exact surfaces make a difference";
  ASSERT_EQ(plain.model.meshes.size(), 1U);
  EXPECT_EQ(plain.model.meshes[0].primitives.size(), 2U);
}

TEST(GltfWriter, NamesAreValidUtf8) {
  using namespace std::string_view_literals;
  const std::pair<std::string_view, std::string_view> names[] = {
      {"pump"sv, "pump"sv},
      {"Gr\xf6\xdf"
       "e"sv,
       "Gr\xc3\xb6\xc3\x9f"
       "e"sv},
      {"Gr\xc3\xb6\xc3\x9f"
       "e"sv,
       "Gr\xc3\xb6\xc3\x9f"
       "e"sv},
      {"\x80 \x9f"sv, "\xe2\x82\xac \xc5\xb8"sv},
      {"\x81"sv, "\xef\xbf\xbd"sv},
      {"\xe3\x83\x97"sv, "\xe3\x83\x97"sv},
      {"\xf0\x9f\x94\xa7"sv, "\xf0\x9f\x94\xa7"sv},
      {"\xc0\xaf"sv, "\xc3\x80\xc2\xaf"sv},                  // no short form of a slash
      {"\xed\xa0\x80"sv, "\xc3\xad\xc2\xa0\xe2\x82\xac"sv},  // a surrogate
      {"\xf4\x90\x80\x80"sv, "\xc3\xb4\xef\xbf\xbd\xe2\x82\xac\xe2\x82\xac"sv},
      {"cut \xe3\x83"sv, "cut \xc3\xa3\xc6\x92"sv},
      {"a\x01\x1f\x7f\0b"sv,
       "a\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"
       "b"sv},
      {"\xc2\x85"sv, "\xef\xbf\xbd"sv},
  };
  for (const auto& [bytes, text] : names) EXPECT_EQ(rpk::toUtf8(bytes), text);

  std::string groups;
  for (const auto& entry : names) {
    if (entry.first.find('\0') == std::string_view::npos) groups += group(std::string(entry.first), object());
  }
  const Written written = write(package(group("top", groups)));
  const std::string size = "Gr\xc3\xb6\xc3\x9f" + std::string("e");
  EXPECT_EQ(placedNode(written.model, size, 0).node->mesh, 1);
  EXPECT_EQ(placedNode(written.model, size, 1).node->mesh, 2);
}

TEST(GltfWriter, LeavesOutWhatIsNoTriangle) {
  const float none = std::numeric_limits<float>::quiet_NaN();
  MeshText mesh;
  mesh.vertices = {none, 0, 0, 0, 0, 0, 7, 7, 7, 10, 0, 0, 0, 10, 0, 0, 10, 0};
  mesh.triangles = {1, 3, 4, 0, 1, 3, 1, 1, 3, 1, 3, 99, -1, 1, 3, 3, 4, 5, 1, 3};
  mesh.normals = {0, 0, 1, 0, 0, 4, 0, 0, 1, 0, 0, 0, 0, 0, 0.5F, 0, 0, 1};
  MeshText fewNormals;
  fewNormals.normals = {0, 0, 1, 0, 0, 1};
  MeshText flat;
  flat.triangles = {0, 0, 1};
  const Written written =
      write(package(group("top", group("mixed", object(mesh)) + group("few", object(fewNormals)) +
                                     group("flat", object(flat)) + group("empty", object({{}, {}})))));
  const tinygltf::Model& model = written.model;
  ASSERT_EQ(model.meshes.size(), 2U);
  EXPECT_EQ(placedNode(model, "flat").node->mesh, -1);
  EXPECT_EQ(placedNode(model, "empty").node->mesh, -1);
  const tinygltf::Primitive& primitive = model.meshes[0].primitives.at(0);
  EXPECT_EQ(values(model, primitive.attributes.at("POSITION")), (std::vector<double>{0, 0, 0, 10, 0, 0, 0, 10, 0}));
  EXPECT_EQ(values(model, primitive.indices), (std::vector<double>{0, 1, 2}));
  EXPECT_EQ(values(model, primitive.attributes.at("NORMAL")), (std::vector<double>{0, 0, 1, 0, 0, 1, 0, 0, 1}));
  const tinygltf::Accessor& positions =
      model.accessors.at(static_cast<std::size_t>(primitive.attributes.at("POSITION")));
  EXPECT_EQ(positions.minValues, (std::vector<double>{0, 0, 0}));
  EXPECT_EQ(positions.maxValues, (std::vector<double>{10, 10, 0}));
  EXPECT_FALSE(model.meshes[1].primitives.at(0).attributes.contains("NORMAL"));
  ASSERT_EQ(written.summary.warnings.size(), 1U);
  EXPECT_NE(written.summary.warnings[0].find("3 triangles"), std::string::npos) << written.summary.warnings[0];
}

TEST(GltfWriter, WidensIndicesWhenTheyNoLongerFit) {
  for (const std::size_t count : {0xffffU, 0x10000U}) {
    MeshText mesh;
    mesh.vertices.clear();
    for (std::size_t i = 0; i < count; ++i) {
      const auto at = static_cast<float>(i);
      mesh.vertices.insert(mesh.vertices.end(), {at, static_cast<float>(i % 2), 0});
    }
    mesh.triangles.clear();
    for (std::int32_t i = 0; i + 2 < static_cast<std::int32_t>(count); ++i) {
      mesh.triangles.insert(mesh.triangles.end(), {i, i + 1, i + 2});
    }
    const Written written = write(package(group("top", object(mesh))));
    const int accessor = written.model.meshes.at(0).primitives.at(0).indices;
    EXPECT_EQ(written.model.accessors.at(static_cast<std::size_t>(accessor)).componentType,
              count == 0xffff ? TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT : TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT);
    const std::vector<double> indices = values(written.model, accessor);
    EXPECT_TRUE(std::equal(indices.begin(), indices.end(), mesh.triangles.begin(), mesh.triangles.end()));
  }
}

TEST(GltfWriter, SaysEveryPlacementInNodes) {
  const struct {
    const char* numbers;
    std::size_t nodes;  // that it takes
  } placements[] = {
      {"1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", 1},       {"0.866025 0.5 0 0 -0.5 0.866025 0 0 0 0 1 0 1.5 -2 1e6 1", 1},
      {"-1 0 0 0 0 -1 0 0 0 0 1 0 1 2 3 1", 1},     {"-1 0 0 0 0 1 0 0 0 0 1 0 1 2 3 1", 1},  // mirrors
      {"0 1 0 0 1 0 0 0 0 0 1 0 0 0 0 1", 1},                                                 // mirrors
      {"2 0 0 0 0 3 0 0 0 0 4 0 1 2 3 1", 1},       {"0.0001 0 0 0 0 0.0001 0 0 0 0 0.0001 0 1 2 3 1", 1},
      {"1e6 0 0 0 0 1e6 0 0 0 0 1e6 0 1 2 3 1", 1}, {"1 0.5 0 0 0 1 0 0 0 0 1 0 1 2 3 1", 2},  // shears
      {"1 2 3 0 4 5 6 0 7 8 10 0 -1 -2 -3 1", 2},   {"1 2 3 0 4 5 6 0 7 8 9 0 0 0 0 1", 2},    // flattens
      {"1 1 0 0 1 1 0 0 0 0 1 0 0 0 0 1", 2},                                                  // flattens
      {"0 0 0 0 0 0 0 0 0 0 0 0 1 2 3 1", 1},       {"1 0 0 0 0 0 0 0 0 0 0 0 1 2 3 1", 1},
  };
  for (const auto& placement : placements) {
    SCOPED_TRACE(placement.numbers);
    const std::string text =
        package(group("top", group("p", object() + transform(placement.numbers))), "\"meter_scale\" 1,\n");
    const Written written = write(text);
    const std::size_t nodes = written.model.nodes.size() - 2;
    EXPECT_EQ(nodes, placement.nodes);
    const rpk::Scene scene = rpk::readScene(text);
    const Matrix& expected = *scene.find("p")->placement;
    expectNear(placedNode(written.model, "p", nodes - 1).world, expected, 2e-6 * std::abs(expected[0] + 1));
    EXPECT_EQ(placedNode(written.model, "p", nodes - 1).node->mesh, 0);
    EXPECT_TRUE(written.summary.warnings.empty());
  }
  for (const char* broken : {"nan 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", "1 0 0 0 0 1 0 0 0 0 1 0 1e300 0 0 1"}) {
    const Written written = write(package(group("top", group("p", object() + transform(broken)))));
    EXPECT_NEAR(placedNode(written.model, "p").world[12], 0, 1e-12) << broken;
  }
}

TEST(GltfWriter, RandomShearsComeBack) {
  std::mt19937 random(7);
  std::normal_distribution<double> number;
  for (int round = 0; round < 50; ++round) {
    std::string numbers;
    for (int i = 0; i < 16; ++i) {
      const bool column = i % 4 == 3;
      numbers += fmt::format("{} ", column ? (i == 15 ? 1.0 : 0.0) : number(random) * std::pow(10, round % 7 - 3));
    }
    const std::string text = package(group("p", object() + transform(numbers)), "\"meter_scale\" 1,\n");
    const Written written = write(text);
    const rpk::Scene scene = rpk::readScene(text);
    expectNear(placedNode(written.model, "p", 1).world, *scene.find("p")->placement,
               1e-9 * std::pow(10, round % 7 - 3));
  }
}

TEST(GltfWriter, CamerasSeeTheWholeModel) {
  const std::string views[] = {
      "transform 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n",
      "transform 0 0 -4 0 0 4 0 0 4 0 0 0 0 0 0 1\n",  // looks along -x
      "transform 1 0 0 0 0 0 1 0 0 -1 0 0 0 0 0 1\n",  // looks along y
      "direction 0 0 0\nup 0 0 0\n",
      "transform 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 1\n",
  };
  const Vector forwards[] = {{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}, {0, 0, -1}, {0, 0, -1}};
  for (const char* adjust : {"on", "off"}) {
    for (const char* projection : {"orthographic", "perspective"}) {
      std::string cameras;
      for (std::size_t i = 0; i < std::size(views); ++i) {
        cameras += fmt::format("camera \"view {}\" {{\nposition 0 0 2000\nfov 40\n{}projection \"{}\"\n}}\n", i,
                               views[i], projection);
      }
      const Written written =
          write(package(group("top", cameras + object() + transform("90 0 0 0 0 60 0 0 0 0 1 0 5000 100 0 1")),
                        fmt::format("\"import_adjust_camera\" {},\n\"meter_scale\" 1000,\n", adjust)));
      const Box box = measure(written.model).box;
      ASSERT_EQ(written.model.cameras.size(), std::size(views));
      for (std::size_t i = 0; i < std::size(views); ++i) {
        SCOPED_TRACE(fmt::format("{} {} {}", adjust, projection, i));
        const PlacedNode node = placedNode(written.model, fmt::format("view {}", i));
        const Matrix& m = node.world;
        EXPECT_NEAR(determinant(m), 1, 1e-9) << "cameras do not scale";
        for (std::size_t axis = 0; axis < 3; ++axis) EXPECT_NEAR(-m[8 + axis], forwards[i][axis], 1e-9);
        const tinygltf::Camera& camera = written.model.cameras.at(static_cast<std::size_t>(node.node->camera));
        const bool flat = camera.type == "orthographic";
        ASSERT_EQ(camera.type, projection);
        if (!flat && std::string(adjust) == "off") continue;  // a view from inside sees what it sees
        for (unsigned corner = 0; corner < 8; ++corner) {
          Vector seen{};
          for (std::size_t axis = 0; axis < 3; ++axis) {
            for (std::size_t k = 0; k < 3; ++k) {
              const double at = (corner >> k & 1U) != 0 ? box.high[k] : box.low[k];
              seen[axis] += (at - m[12 + k]) * m[axis * 4 + k];
            }
          }
          const double depth = -seen[2];
          const double across = flat ? camera.orthographic.ymag : depth * std::tan(camera.perspective.yfov / 2);
          EXPECT_LE(std::abs(seen[0]), across);
          EXPECT_LE(std::abs(seen[1]), across);
          EXPECT_GT(depth, flat ? camera.orthographic.znear : camera.perspective.znear);
          EXPECT_LT(depth, flat ? camera.orthographic.zfar : camera.perspective.zfar);
        }
      }
    }
  }
  write(package(group("top", "camera \"of nothing\" {\nprojection \"orthographic\"\n}\n")));
}

TEST(GltfWriter, RefusesWhatPassesTheFormat) {
  const rendara::testing::TemporaryFolder folder;
  const std::string path = (folder.path() / "large").string();
  rendara::testing::writeFile(path, "");
  std::filesystem::resize_file(path, 1500000000);
  const auto large = rpk::MappedFile::open(path);
  ASSERT_TRUE(large.has_value());
  struct Nowhere : std::streambuf {
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
  } nowhere;
  std::ostream stream(&nowhere);
  tinygltf::Model model;
  rpk::BinaryData data(model, stream);
  data.addView(large->bytes(), 0);
  data.addView(large->bytes(), 0);
  EXPECT_THROW(data.addView(large->bytes(), 0), rpk::GltfError);

  std::ostream broken(nullptr);
  rpk::BinaryData lost(model, broken);
  EXPECT_THROW(lost.addView("abc", 0), rpk::GltfError);
}

TEST(GltfWriter, WritesScenesOfNothing) {
  EXPECT_EQ(write("//---vantor:dal:7---\n").model.nodes.size(), 1U);
  EXPECT_EQ(write(package(group("top", ""), "\"meter_scale\" 1e-300,\n")).summary.warnings.size(), 1U);
}

}  // namespace

// Packages put together from pieces, and what the writer makes of them.
#pragma once

#include <fmt/format.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/gltf/gltf_probe.h"
#include "tests/rpk/package_text.h"
#include "tools/rpk/gltf/gltf_writer.h"

namespace gltf_test {

// Three corners of a square, and its whole.
inline const std::vector<float> kCorners = {0, 0, 0, 10, 0, 0, 0, 10, 0, 10, 10, 0};
inline const std::vector<float> kCornerUvs = {0, 0, 1, 0, 0, 1, 1, 0.75F};
inline const std::vector<std::int32_t> kSquare = {0, 1, 2, 2, 1, 3};

struct MeshText {
  std::vector<float> vertices = kCorners;
  std::vector<std::int32_t> triangles = kSquare;
  std::vector<float> normals = {};
  std::vector<float> uvs = {};
};

inline std::string plainMaterial(const std::string& name, const std::string& colour) {
  return fmt::format("material \"{}\" {{\nsurface \"vnt_diffuse\" {{\n\"diffuse\" {},\n}}\n}}\n", name, colour);
}

inline std::string texturedMaterial(const std::string& name, const std::string& file, const std::string& wrap = "on") {
  return fmt::format(
      "material \"{}\" {{\nsurface \"vnt_advanced\" {{\n\"diffuse\" 0.5 0.5 0.5,\n\"diffuse\" ! \"texture_rgb\" {{\n"
      "\"project\" 3,\n\"wrap\" {},\n\"texture\" \"{}\",\n}},\n}}\n}}\n",
      name, wrap, file);
}

inline std::string object(const MeshText& mesh = {}, const std::string& material = "") {
  std::string text = "object \"part\" {\ngeometry \"triangles\" {\n";
  const auto array = [&](const char* name, const std::string& packed) {
    text += fmt::format("\"{}\" [ ", name) + packed + "] ,\n";
  };
  array("vertices", rpk_test::packedFloats('c', mesh.vertices));
  if (!mesh.normals.empty()) array("normals", rpk_test::packedFloats('c', mesh.normals));
  if (!mesh.uvs.empty()) array("uv_tex", rpk_test::packedFloats('f', mesh.uvs));
  array("triangles", rpk_test::packedIntegers(mesh.triangles));
  return text + "}\n" + material + "}\n";
}

inline std::string reference(const std::string& source, const std::string& material = "") {
  return fmt::format("object \"part\" {{\ngeometry \"instance\" {{\n\"source\" \"{}\",\n}}\n{}}}\n", source, material);
}

inline std::string transform(const std::string& numbers) { return "transform " + numbers + "\n"; }

inline std::string group(const std::string& name, const std::string& content) {
  return "group \"" + name + "\" {\n" + content + "}\n";
}

// Model units are millimetres unless the options say otherwise.
inline std::string package(const std::string& groups, const std::string& options = "\"meter_scale\" 1000,\n") {
  return "//---vantor:dal:7---\nload \"vntrtopt.so\" {\n" + options + "}\n" + groups;
}

struct Written {
  std::string bytes;
  rpk::GltfSummary summary;
  tinygltf::Model model;
};

inline Written write(const std::string& packageText, const std::filesystem::path& folder = {}) {
  Written written;
  const rpk::Scene scene = rpk::readScene(packageText);
  std::stringstream scratch;
  std::ostringstream out;
  written.summary = rpk::writeGltf(scene, {folder}, scratch, out);
  written.bytes = out.str();
  EXPECT_EQ(written.summary.bytes, written.bytes.size());
  written.model = load(written.bytes);
  // A test that writes several files gives each a number.
  static std::map<std::string, int> numbers;
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  const std::string name = fmt::format("{}_{}", test->test_suite_name(), test->name());
  keepForValidator(fmt::format("{}_{}", name, ++numbers[name]), written.bytes);
  return written;
}

inline void expectNear(const Matrix& actual, const Matrix& expected, double tolerance) {
  for (std::size_t i = 0; i < 16; ++i) EXPECT_NEAR(actual[i], expected[i], tolerance) << "element " << i;
}

}  // namespace gltf_test

// Packages that something went over: whatever is left of them must still make a good file.
#include <gtest/gtest.h>

#include <random>

#include "tests/gltf/written_package.h"
#include "tests/support/temporary_folder.h"
#include "tools/rpk/image_file.h"

namespace {

using namespace gltf_test;

std::string texturedPump() {
  std::string text = rpk_test::pumpPackage();
  MeshText mesh;
  mesh.uvs = kCornerUvs;
  mesh.normals = {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1};
  return text + group("plate", object(mesh, texturedMaterial("p", "plate.png")) +
                                   transform("2 0 0 0 0 2 0 0 0.5 0 2 0 1 2 3 1"));
}

// Bytes changed, digits changed (which keeps more of the text whole), pieces cut, doubled or moved.
void damage(std::string& bytes, std::mt19937& random) {
  const auto place = [&] { return random() % bytes.size(); };
  switch (random() % 4) {
    case 0:
      bytes[place()] = static_cast<char>(random());
      break;
    case 1:
      if (const std::size_t digit = bytes.find_first_of("0123456789", place()); digit != std::string::npos) {
        bytes[digit] = "0123456789-.en"[random() % 14];
      }
      break;
    case 2:
      bytes.erase(place(), 1 + random() % 40);
      break;
    default:
      bytes.insert(place(), bytes.substr(place(), 1 + random() % 300));
      break;
  }
}

TEST(DamagedGltf, StaysLoadable) {
  const rendara::testing::TemporaryFolder folder;
  rendara::testing::writeFile(folder.path() / "plate.png", rpk::encodePng({1, 1, {1, 2, 3, 255}}));
  const std::string whole = texturedPump();
  std::mt19937 random(2026);
  for (int round = 0; round < 600; ++round) {
    std::string bytes = whole;
    for (int i = 0; i <= round % 5; ++i) damage(bytes, random);
    const rpk::Scene scene = rpk::readScene(bytes);
    std::stringstream scratch;
    std::ostringstream out;
    const rpk::GltfSummary summary = rpk::writeGltf(scene, {folder.path()}, scratch, out);
    const tinygltf::Model model = load(out.str());
    EXPECT_EQ(measure(model).placedMeshes, summary.placedMeshes) << "round " << round;
    if (round % 5 == 0) keepForValidator(fmt::format("damaged_{}", round), out.str());
    ASSERT_FALSE(HasFailure()) << "round " << round;
  }
}

}  // namespace

// Animations.
#include <gtest/gtest.h>

#include "tests/gltf/written_package.h"

namespace {

using namespace gltf_test;

const char* const kShift = "1 0 0 0 0 1 0 0 0 0 1 0 5 6 7 1";
const char* const kTurn = "0 1 0 0 -1 0 0 0 0 0 1 0 0 0 0 1";
const char* const kTurnBack = "0 -1 0 0 1 0 0 0 0 0 1 0 0 0 0 1";
const char* const kGrow = "2 0 0 0 0 2 0 0 0 0 2 0 0 0 0 1";
const char* const kShear = "1 0.5 0 0 0 1 0 0 0 0 1 0 0 0 0 1";
const char* const kBroken = "nan 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1";
const char* const kPlace = "0 0 1 0 0 1 0 0 -1 0 0 0 100 0 0 1";

std::string animation(const std::vector<const char*>& matrices, const std::vector<std::int32_t>& times) {
  std::string text = "animation \"fbx_animation\" \"part\" {\n\"start_time\" 0,\n\"matrices\" [\n";
  for (std::size_t i = 0; i < matrices.size(); ++i) text += fmt::format("{}{}", i > 0 ? ",\n" : "", matrices[i]);
  return text + " ],\n\"timestamps\" [\n" + rpk_test::packedIntegers(times) + " ],\n}\n";
}

Matrix matrixOf(const char* numbers) {
  Matrix matrix{};
  const std::vector<double> parsed = rpk::ArrayView::textValues(numbers).doubles();
  std::copy(parsed.begin(), parsed.end(), matrix.begin());
  return matrix;
}

// The node's own matrix at one of the moments.
Matrix sampledMatrix(const tinygltf::Model& model, int node, std::size_t sample) {
  const tinygltf::Node& resting = model.nodes.at(static_cast<std::size_t>(node));
  std::map<std::string, std::vector<double>> parts = {
      {"translation", resting.translation}, {"rotation", resting.rotation}, {"scale", resting.scale}};
  for (const tinygltf::AnimationChannel& channel : model.animations.at(0).channels) {
    if (channel.target_node != node) continue;
    const auto& sampler = model.animations[0].samplers.at(static_cast<std::size_t>(channel.sampler));
    const std::vector<double> all = values(model, sampler.output);
    const std::size_t components = channel.target_path == "rotation" ? 4 : 3;
    parts[channel.target_path].assign(all.begin() + static_cast<std::ptrdiff_t>(sample * components),
                                      all.begin() + static_cast<std::ptrdiff_t>((sample + 1) * components));
  }
  return poseMatrix(parts["translation"], parts["rotation"], parts["scale"]);
}

std::vector<double> timesOf(const tinygltf::Model& model) {
  return values(model, model.animations.at(0).samplers.at(0).input);
}

TEST(GltfMotion, MatricesComeBeforeThePlacement) {
  const std::vector<const char*> matrices = {kShift, kTurn, kTurnBack, kGrow};
  for (const char* place : {"", kPlace, "-1 0 0 0 0 1 0 0 0 0 1 0 1 2 3 1"}) {
    const std::string placement = *place ? transform(place) : "";
    const Written written =
        write(package(group("top", group("p", object() + animation(matrices, {0, 40, 80, 120}) + placement)),
                      "\"meter_scale\" 1,\n"));
    const PlacedNode node = placedNode(written.model, "p");
    EXPECT_EQ(written.summary.movingGroups, 1U);
    EXPECT_EQ(written.model.animations.size(), 1U);
    const Matrix rest = *place ? matrixOf(place) : rpk::kIdentity;
    expectNear(node.world, rest, 1e-12);
    EXPECT_TRUE(node.node->matrix.empty()) << "an animated node has no matrix";
    for (std::size_t i = 0; i < matrices.size(); ++i) {
      expectNear(sampledMatrix(written.model, node.index, i), rpk::multiply(matrixOf(matrices[i]), rest), 1e-5);
    }
    const std::vector<double> times = timesOf(written.model);
    ASSERT_EQ(times.size(), 4U);
    EXPECT_NEAR(times[3], 0.12, 1e-7);
  }
}

TEST(GltfMotion, RotationsTakeTheShortWay) {
  std::vector<std::string> texts;
  std::vector<const char*> matrices;
  std::vector<std::int32_t> times;
  for (int i = 0; i < 40; ++i) {
    const double angle = i * 0.4;
    texts.push_back(fmt::format("{:.6f} {:.6f} 0 0 {:.6f} {:.6f} 0 0 0 0 1 0 0 0 0 1", std::cos(angle), std::sin(angle),
                                -std::sin(angle), std::cos(angle)));
  }
  for (std::size_t i = 0; i < texts.size(); ++i) {
    matrices.push_back(texts[i].c_str());
    times.push_back(static_cast<std::int32_t>(i) * 40);
  }
  const Written written = write(package(group("p", object() + animation(matrices, times))));
  const auto& channels = written.model.animations.at(0).channels;
  EXPECT_EQ(channels.size(), 2U) << "rounding is no change of size";
  for (const tinygltf::AnimationChannel& channel : channels) {
    if (channel.target_path != "rotation") continue;
    const std::vector<double> all = values(
        written.model, written.model.animations[0].samplers.at(static_cast<std::size_t>(channel.sampler)).output);
    for (std::size_t i = 4; i < all.size(); i += 4) {
      const double cosine =
          all[i] * all[i - 4] + all[i + 1] * all[i - 3] + all[i + 2] * all[i - 2] + all[i + 3] * all[i - 1];
      EXPECT_NEAR(cosine, std::cos(0.2), 1e-5);
    }
  }
}

TEST(GltfMotion, MovesInsideAPlacementThatShears) {
  const Written written = write(
      package(group("p", object() + animation({kShift, kTurn}, {0, 40}) + transform(kShear)), "\"meter_scale\" 1,\n"));
  ASSERT_EQ(written.model.nodes.size(), 4U);
  const PlacedNode moving = placedNode(written.model, "p", 2);
  EXPECT_EQ(moving.node->mesh, 0);
  expectNear(moving.world, matrixOf(kShear), 1e-9);
  expectNear(sampledMatrix(written.model, moving.index, 1), matrixOf(kTurn), 1e-6);
}

TEST(GltfMotion, TakesOnlySamplesThatCanBe) {
  const struct {
    std::vector<const char*> matrices;
    std::vector<std::int32_t> times;
    std::vector<double> kept;
    std::size_t warnings;
  } cases[] = {
      {{kShift, kTurn, kShift}, {0, 40}, {0, 0.04}, 0},
      {{kShift}, {0, 40, 80}, {0}, 0},
      {{kShift, kTurn, kShift, kTurn, kShift}, {-40, 0, 0, 40, 20}, {0, 0.04}, 0},
      {{kShift, kBroken, kTurn}, {0, 40, 80}, {0, 0.08}, 0},
      {{kShift, kTurn}, {2147483640, 2147483647}, {2147483.64}, 0},  // one moment in 32 bits
      {{}, {}, {}, 1},
      {{kBroken}, {0}, {}, 1},
      {{kShear, kShift}, {0, 40}, {}, 1},
  };
  for (const auto& entry : cases) {
    const Written written = write(package(group("p", object() + animation(entry.matrices, entry.times))));
    EXPECT_EQ(written.summary.warnings.size(), entry.warnings);
    if (entry.kept.empty()) {
      EXPECT_TRUE(written.model.animations.empty());
      continue;
    }
    const std::vector<double> times = timesOf(written.model);
    ASSERT_EQ(times.size(), entry.kept.size());
    for (std::size_t i = 0; i < times.size(); ++i) EXPECT_NEAR(times[i], entry.kept[i], 0.1 * entry.kept[i] + 1e-7);
  }
}

TEST(GltfMotion, GroupsShareTheirMoments) {
  const std::string motion = animation({kShift, kTurn}, {0, 40});
  const Written written =
      write(package(group("top", group("a", object() + motion) + group("a", reference("a") + motion + motion) +
                                     group("still", reference("a")))));
  ASSERT_EQ(written.model.animations.size(), 1U);
  const tinygltf::Animation& all = written.model.animations[0];
  EXPECT_EQ(all.channels.size(), 4U);
  for (const tinygltf::AnimationSampler& sampler : all.samplers) EXPECT_EQ(sampler.input, all.samplers[0].input);
  EXPECT_EQ(written.summary.movingGroups, 2U);
  EXPECT_EQ(written.summary.warnings.size(), 1U) << "a second animation of one group";
  expectNear(placedNode(written.model, "still").world, placedNode(written.model, "top").world, 0);
}

}  // namespace

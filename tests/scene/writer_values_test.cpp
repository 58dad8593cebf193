// Parameters and arrays of every type, and captured text, against golden files.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "tests/scene/scene_test_support.h"

namespace rendara {
namespace {

using testing::Arrays;
using testing::golden;
using testing::written;

constexpr int kTrue = 1;

struct Values {
  std::array<float, 4> floats = {0.5F, -1.0F, 1e-5F, 1.0F / 3};
  std::array<double, 3> doubles = {0.1, -2, 1234567};
  std::array<int, 4> integers = {1, -2, 3, 2147483647};
  int no = 0;
  int yes = -1;
  std::array<double, 16> matrix = {1, 0, 0, 1e-50, 0, 1, 0, 0, 0, 0, 1, 0, 1.0 / 3, 2.5, -1, 1};
  const char* text = "by reference";
};

void writeEveryScalar(vntScene_api& scene, const Values& values) {
  EXPECT_TRUE(scene.parameter("t1", kFloat3, values.floats.data()));
  scene.parameter("t2", kFloat4, values.floats.data());
  scene.parameter("t3", kFloat, values.floats.data());
  scene.parameter("t4", kDouble, values.doubles.data());
  scene.parameter("t5", kDouble3, values.doubles.data());
  scene.parameter("t6", kInt, &values.integers[3]);
  scene.parameter("t7", kBool, &values.yes);
  scene.parameter("t7", kBool, &values.no);
  EXPECT_TRUE(scene.parameter("t8", 8, values.integers.data()));
  scene.parameter("t9", kMatrix, values.matrix.data());
  scene.parameter("t10", kString, "itself");
  scene.parameter("t12", 12, values.integers.data());
  scene.parameter("t13", kStringRef, &values.text);
  scene.parameter("t14", kFloat2, values.floats.data());
  scene.parameter("t15", kFloat4b, values.floats.data());
  scene.parameter("t16", kInt2, values.integers.data());
  scene.parameter("t17", kInt3, values.integers.data());
  scene.parameter("t18", kInt4, values.integers.data());
  scene.parameter("none", kFloat, nullptr);
  scene.parameter("none", kString, nullptr);
}

TEST(WriterValues, ScalarsInBothModes) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              const Values values;
              scene.beginGroup("unquoted", true);
              writeEveryScalar(scene, values);
              scene.beginGeometry("quoted");
              writeEveryScalar(scene, values);
              scene.endGeometry();
              scene.endGroup();
            }),
            golden());
}

TEST(WriterValues, NumbersBeyondSinglePrecision) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              constexpr float kLargest = std::numeric_limits<float>::max();
              constexpr float kEndless = std::numeric_limits<float>::infinity();
              constexpr double kWide = std::numeric_limits<double>::infinity();
              scene.beginGroup("g", true);
              for (const float value : {kLargest, -kLargest, kEndless, -kEndless, std::nanf(""), 3.4028233e38F}) {
                scene.parameter("one", kFloat, &value);
                const std::array<float, 2> pair = {value, 0};
                scene.parameter("two", kFloat2, pair.data());
              }
              scene.parameter("wide", kDouble, &kWide);
              scene.endGroup();
            }),
            golden());
}

void writeWhole(vntScene_api& scene, const char* name, SceneValueType type, const void* data, int count) {
  const SceneArray array = {data, count};
  EXPECT_TRUE(scene.parameter(name, arrayOf(type), &array));
}

TEST(WriterValues, WholeArraysAsText) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              std::vector<float> floats(40);
              std::iota(floats.begin(), floats.end(), -0.5F);
              std::vector<double> doubles(floats.begin(), floats.end());
              std::vector<int> integers(40);
              std::iota(integers.begin(), integers.end(), 0);
              const std::array<const char*, 10> strings = {"a", "b\"", "c", "", "e", nullptr, "g", "h", "i", "j"};
              const std::array<double, 32> matrices = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1,
                                                       2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 5, 6, 7, 1};
              scene.beginGroup("g", true);
              writeWhole(scene, "t1", kFloat3, floats.data(), 10);
              writeWhole(scene, "t2", kFloat4, floats.data(), 2);
              writeWhole(scene, "t3", kFloat, floats.data(), 9);
              writeWhole(scene, "t4", kDouble, doubles.data(), 2);
              writeWhole(scene, "t5", kDouble3, doubles.data(), 2);
              writeWhole(scene, "t6", kInt, integers.data(), 18);
              writeWhole(scene, "t7", kBool, integers.data(), 3);
              writeWhole(scene, "t9", kMatrix, matrices.data(), 2);
              writeWhole(scene, "t10", kString, strings.data(), 10);
              writeWhole(scene, "t13", kStringRef, strings.data(), 2);
              writeWhole(scene, "t14", kFloat2, floats.data(), 2);
              writeWhole(scene, "t16", kInt2, integers.data(), 2);
              writeWhole(scene, "t17", kInt3, integers.data(), 2);
              writeWhole(scene, "t18", kInt4, integers.data(), 2);
              writeWhole(scene, "empty", kFloat3, floats.data(), 0);
              writeWhole(scene, "negative", kInt, integers.data(), -4);
              writeWhole(scene, "null", kInt, nullptr, 4);
              EXPECT_TRUE(scene.parameter("nothing", arrayOf(kInt), nullptr));
              scene.beginGeometry("quoted");
              writeWhole(scene, "t6", kInt, integers.data(), 2);
              scene.endGeometry();
              scene.endGroup();
            }),
            golden());
}

TEST(WriterValues, WholeArraysPacked) {
  EXPECT_EQ(written(
                [](vntScene_api& scene) {
                  const std::array<float, 6> floats = {1, -2, 0.5F, 0, 1e-5F, std::numeric_limits<float>::infinity()};
                  const std::array<double, 2> doubles = {0.1, -1};
                  const std::array<int, 3> integers = {1, -1, 0x01020304};
                  scene.beginGroup("g", true);
                  writeWhole(scene, "t1", kFloat3, floats.data(), 2);
                  writeWhole(scene, "t3", kFloat, floats.data(), 3);
                  writeWhole(scene, "t4", kDouble, doubles.data(), 2);
                  writeWhole(scene, "t6", kInt, integers.data(), 3);
                  writeWhole(scene, "t14", kFloat2, floats.data(), 2);
                  writeWhole(scene, "t7", kBool, integers.data(), 2);
                  writeWhole(scene, "empty", kInt, integers.data(), 0);
                  scene.setOutputMode(1, 0);
                  writeWhole(scene, "t6", kInt, integers.data(), 1);
                  scene.setOutputMode(2, 0);
                  writeWhole(scene, "t6", kInt, integers.data(), 1);
                  scene.endGroup();
                },
                Arrays::kPacked),
            golden());
}

TEST(WriterValues, ElementsAsText) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              const Values values;
              scene.beginGeometry("mesh");
              EXPECT_TRUE(scene.beginArray("vectors"));
              for (int i = 0; i < 5; ++i) scene.arrayValue(kFloat3, values.floats.data());
              scene.endArray();
              scene.beginArray("integers");
              for (int i = 0; i < 14; ++i) scene.arrayValue(kInt, &i);
              scene.endArray();
              scene.beginArray("others");
              scene.arrayValue(kFloat, values.floats.data());
              scene.arrayValue(kDouble, values.doubles.data());
              scene.arrayValue(kBool, &kTrue);
              scene.arrayValue(kString, "a");
              scene.arrayValue(kStringRef, &values.text);
              scene.arrayValue(kInt2, values.integers.data());
              scene.arrayValue(kFloat2, values.floats.data());
              scene.endArray();
              scene.beginArray("empty");
              scene.endArray();
              scene.endGeometry();
            }),
            golden());
}

TEST(WriterValues, ElementsPacked) {
  EXPECT_EQ(written(
                [](vntScene_api& scene) {
                  const Values values;
                  scene.beginGeometry("mesh");
                  scene.beginArray("vectors");
                  scene.arrayValue(kFloat3, values.floats.data());
                  scene.arrayValue(kFloat3, values.floats.data() + 1);
                  scene.endArray();
                  scene.beginArray("floats");
                  scene.arrayValue(kFloat, values.floats.data());
                  scene.endArray();
                  scene.beginArray("integers");
                  for (const int i : values.integers) scene.arrayValue(kInt, &i);
                  scene.endArray();
                  scene.beginArray("strings");
                  scene.arrayValue(kString, "a");
                  scene.arrayValue(kString, "b");
                  scene.endArray();
                  scene.beginArray("empty");
                  scene.endArray();
                  scene.endGeometry();
                },
                Arrays::kPacked),
            golden());
}

// ----- Shaders and captures

CaptureBuffer* captureShader(vntScene_api& scene, const char* type) {
  EXPECT_TRUE(scene.beginShader(nullptr, type));
  scene.parameter("p", kInt, &kTrue);
  CaptureBuffer* buffer = scene.currentCapture();
  scene.endShader(0);
  return buffer;
}

TEST(WriterCaptures, NamedShader) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.beginGroup("g", true);
              EXPECT_TRUE(scene.beginShader("s", "phong"));
              scene.parameter("p", kInt, &kTrue);
              scene.endShader(0);
              scene.parameter("p", kInt, &kTrue);
              scene.endGroup();
            }),
            golden());
}

TEST(WriterCaptures, InlineShaderInANestedMaterial) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.beginObject("o", true);
              scene.beginMaterial("m", true);
              CaptureBuffer* buffer = captureShader(scene, "vnt_diffuse");
              EXPECT_EQ(scene.currentCapture(), buffer);  // the finished buffer stays the current one
              scene.shader(0, buffer);
              scene.parameter("p", kCapture, &buffer);
              scene.parameterText("q", buffer);
              scene.endMaterial();
              scene.endObject();
            }),
            golden());
}

TEST(WriterCaptures, ShaderKinds) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              const CaptureBuffer* buffer = captureShader(scene, "s");
              for (const int kind : {0, 1, 2, 3, 8, 4, -1}) scene.shader(kind, buffer);
              scene.shader(0, nullptr);
            }),
            golden());
}

TEST(WriterCaptures, OneInsideAnother) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.beginGroup("g", true);
              scene.beginShader(nullptr, "outer");
              scene.pushCapture();
              const CaptureBuffer* inner = captureShader(scene, "inner");
              scene.popCapture();
              scene.parameterText("map", inner);
              scene.beginShader("named", "deep");
              scene.parameter("p", kInt, &kTrue);
              scene.endShader(0);
              const CaptureBuffer* outer = scene.currentCapture();
              EXPECT_NE(outer, inner);
              scene.endShader(0);
              scene.parameter("p", kInt, &kTrue);
              scene.shader(1, outer);
              scene.endGroup();
            }),
            golden());
}

// Without a saved buffer the finished inner one receives what follows, its own text too.
TEST(WriterCaptures, AppendedToItself) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.beginShader(nullptr, "outer");
              CaptureBuffer* inner = captureShader(scene, "inner");
              scene.endBlock();  // back to no indentation, where no copy of the text is made for the blanks
              for (int i = 0; i < 5; ++i) scene.parameter("again", kCapture, &inner);
              scene.endShader(0);
              scene.writeFormatted("%d\n", inner->length);
              scene.shader(0, inner);
            }),
            golden());
}

// A capture that holds raw bytes is written as it stands, without further blanks.
TEST(WriterCaptures, PackedArrayInside) {
  EXPECT_EQ(written(
                [](vntScene_api& scene) {
                  scene.beginGroup("g", true);
                  scene.beginShader(nullptr, "s");
                  writeWhole(scene, "v", kInt, &kTrue, 1);
                  const CaptureBuffer* buffer = scene.currentCapture();
                  EXPECT_TRUE(buffer->holdsRawBytes);
                  scene.endShader(0);
                  scene.shader(0, buffer);
                  scene.endGroup();
                },
                Arrays::kPacked),
            golden());
}

TEST(WriterCaptures, SectionsEndCapturing) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.beginShader(nullptr, "lost");
              scene.beginOptions();
              scene.endOptions();
              scene.endShader(0);
            }),
            golden());
}

}  // namespace
}  // namespace rendara

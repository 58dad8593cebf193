// Blocks, sections, single lines and names against golden files.
#include <gtest/gtest.h>

#include <array>

#include "tests/scene/scene_test_support.h"

namespace rendara {
namespace {

using testing::golden;
using testing::written;

constexpr std::array<double, 16> kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
constexpr int kOne = 1;

// A parameter, which shows the indentation and the parameter mode.
void writeMark(vntScene_api& scene) { EXPECT_TRUE(scene.parameter("p", kInt, &kOne)); }

TEST(WriterBlocks, TopLevelExample) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              const std::array<float, 3> color = {0.8F, 0.2F, 0.2F};
              scene.beginMaterial("mat1", false);
              scene.parameter("diffuse", kFloat3, color.data());
              scene.endMaterial();
              scene.beginObject("part1", false);
              scene.useMaterial("mat1", 0);
              scene.endObject();
            }),
            golden());
}

TEST(WriterBlocks, NestedGroups) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              EXPECT_TRUE(scene.beginGroup("a", false));
              writeMark(scene);
              EXPECT_TRUE(scene.beginGroup("b", true));
              writeMark(scene);
              scene.endGroup();
              EXPECT_TRUE(scene.beginGroup("c", false));
              scene.endGroup();
              writeMark(scene);
              scene.endGroup();
              writeMark(scene);
            }),
            golden());
}

TEST(WriterBlocks, ObjectsAndTheirFlags) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.setObjectFlag(0x4000, true);  // forgotten by beginObject
              EXPECT_TRUE(scene.beginObject("untouched", false));
              scene.flags(1);
              writeMark(scene);
              scene.endObject();
              EXPECT_TRUE(scene.beginObject("all", true));
              scene.setObjectFlag(0xF00, false);
              scene.setObjectFlag(0x4000, true);
              scene.endObject();
              scene.beginObject("some", true);
              scene.setObjectFlag(0x500, false);
              scene.setObjectFlag(0x100, true);
              scene.endObject();
              scene.setObjectFlag(0x200, false);  // kept by modifyObject
              EXPECT_TRUE(scene.modifyObject("untouched"));
              scene.flags(2);
              writeMark(scene);
              scene.endObject();
              scene.flags(3);
              writeMark(scene);
            }),
            golden());
}

TEST(WriterBlocks, BlocksWithTheModeAround) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.beginGroup("g", true);
              EXPECT_TRUE(scene.beginFrame(-3));
              writeMark(scene);
              scene.endBlock();
              EXPECT_TRUE(scene.defineMatrix("m"));
              scene.endMatrix();
              EXPECT_TRUE(scene.beginLoad("l.so"));
              writeMark(scene);
              scene.endLoad();
              EXPECT_TRUE(scene.beginLight("sun", 7));
              scene.endLight();
              EXPECT_TRUE(scene.modifyLight("sun"));
              scene.endLight();
              EXPECT_TRUE(scene.beginMaterial("red", false));
              writeMark(scene);
              scene.endMaterial();
              EXPECT_TRUE(scene.beginMaterial("blue", true));
              scene.endMaterial();
              EXPECT_TRUE(scene.modifyMaterial("red"));
              scene.endMaterial();
              scene.endGroup();
            }),
            golden());
}

TEST(WriterBlocks, BlocksWithQuotedParameters) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.beginGroup("g", true);
              EXPECT_TRUE(scene.beginAccel("bvh"));
              writeMark(scene);
              scene.endAccel();
              writeMark(scene);
              EXPECT_TRUE(scene.beginAnimation("x", "y"));
              writeMark(scene);
              scene.motion(kIdentity.data(), 0.5F);
              EXPECT_EQ(scene.endAnimation(), 0);
              writeMark(scene);
              EXPECT_TRUE(scene.beginOutput("a", "b", "c"));
              writeMark(scene);
              scene.endOutput();
              writeMark(scene);
              scene.endGroup();
              scene.beginOutput("a", "b", "c");
              scene.endOutput();
              writeMark(scene);  // the mode is true now, whatever it was before
            }),
            golden());
}

TEST(WriterBlocks, Geometry) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.beginObject("o", true);
              EXPECT_TRUE(scene.beginGeometry("triangles"));
              writeMark(scene);
              scene.endGeometry();
              writeMark(scene);
              EXPECT_TRUE(scene.defineGeometry("mesh", "n"));
              EXPECT_TRUE(scene.beginGeometry("triangles"));  // nothing inside a definition
              writeMark(scene);
              scene.endGeometry();
              writeMark(scene);
              scene.beginGeometry("points");
              scene.endGeometry();
              EXPECT_TRUE(scene.instance("n"));
              scene.endObject();
            }),
            golden());
}

TEST(WriterBlocks, Sections) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              EXPECT_TRUE(scene.beginOptions());
              writeMark(scene);
              scene.endOptions();
              writeMark(scene);
              EXPECT_TRUE(scene.beginCamera("view"));
              writeMark(scene);
              scene.endCamera();
              EXPECT_TRUE(scene.beginCamera(nullptr));
              scene.endCamera();
              EXPECT_TRUE(scene.modifyCamera("view"));
              scene.endCamera();
              EXPECT_TRUE(scene.modifyCamera(nullptr));
              scene.endCamera();
              EXPECT_TRUE(scene.beginImage());
              writeMark(scene);
              scene.endImage();
              writeMark(scene);
            }),
            golden());
}

TEST(WriterBlocks, OneSectionAtATime) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.beginCamera("first");
              EXPECT_FALSE(scene.beginOptions());
              EXPECT_FALSE(scene.beginImage());
              EXPECT_FALSE(scene.beginCamera("second"));
              EXPECT_FALSE(scene.modifyCamera("third"));  // its keyword comes before the section is asked for
              scene.endOptions();                         // not open: only resets the state and the mode
              writeMark(scene);
              EXPECT_TRUE(scene.beginOptions());
              scene.endOptions();
              scene.endCamera();
              scene.beginObject("o", true);
              EXPECT_FALSE(scene.beginOptions());
              scene.endImage();
              scene.flags(1);  // the object is no longer open for the writer
              writeMark(scene);
              scene.endObject();
            }),
            golden());
}

TEST(WriterBlocks, TransformsInSinglePrecision) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              std::array<double, 16> matrix = kIdentity;
              matrix[1] = 1.0 / 3;
              matrix[2] = 1e-50;
              matrix[3] = -1e-50;
              matrix[4] = 1e300;
              matrix[12] = 1234567;
              matrix[13] = -0.00001;
              const double x = 1e-50;
              const double y = -2.5;
              const double z = 1e300;
              scene.transform(matrix.data(), true);
              scene.beginGroup("g", true);
              scene.transform(matrix.data(), false);
              scene.scale(&x, &y, &z);
              scene.rotate(&x, &y, &z);
              scene.translate(&x, &y, &z);
              scene.motion(matrix.data(), 1.0F / 3);
              scene.endGroup();
            }),
            golden());
}

TEST(WriterBlocks, SingleLines) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              const std::array<unsigned char, 3> bytes = {0x00, 0xab, 0xff};
              scene.beginGroup("g", true);
              EXPECT_TRUE(scene.render());
              EXPECT_TRUE(scene.instance("i"));
              EXPECT_TRUE(scene.useMaterial("m", 5));
              scene.attribute("k", "v");
              scene.globalPhotons(1);
              scene.causticPhotons(-2);
              scene.volumePhotons(3);
              scene.id(4294967295U);
              scene.flags(0x8000);
              scene.progress("load", 0.5F);
              scene.icon(bytes.data(), 3);
              scene.icon(nullptr, 3);
              scene.blob("key", bytes.data() + 1, 1);
              scene.blob("key", bytes.data(), -1);
              scene.writeFormatted("// %s %d\n\nnext\n", "a", 3);
              scene.reserved1();
              scene.reserved32(1, 2);
              scene.reserved46();
              scene.reserved66(1);
              scene.endGroup();
            }),
            golden());
}

TEST(WriterBlocks, Names) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.beginGroup("plain \t\\ name", true);
              scene.instance("\xe9");
              scene.instance("quote\"");
              scene.instance("cr\r");
              scene.instance("\x80");
              scene.instance("\x7f");
              scene.attribute("line\nbreak", "");
              scene.instance(nullptr);
              scene.beginGeometry("\xe9\xff");
              // At the beginning of a line the hexadecimal form has no blanks before it.
              scene.parameter("\xe9", kInt, &kOne);
              scene.parameter("quoted", kString, "\xe9");
              scene.parameterText("\n", nullptr);
              scene.beginArray("\x80");
              scene.endArray();
              scene.endGeometry();
              scene.parameter("bare\xe9 \"", kInt, &kOne);
              scene.parameter(nullptr, kInt, &kOne);
              scene.endGroup();
            }),
            golden());
}

TEST(WriterBlocks, EndsWithoutABeginning) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.endGroup();
              scene.endBlock();  // four blanks in debt
              scene.beginGroup("a", false);
              writeMark(scene);
              scene.beginGroup("b", true);
              scene.beginGroup("c", true);
              writeMark(scene);  // indented again, by two
              scene.endGroup();
              scene.endGroup();
              scene.endGroup();
              writeMark(scene);
              scene.endShader(0);
              scene.endObject();
              writeMark(scene);
            }),
            golden());
}

// Popping an empty stack of modes gives what was stored last at its bottom.
TEST(WriterBlocks, TheBottomOfTheModesStays) {
  EXPECT_EQ(written([](vntScene_api& scene) {
              scene.beginOutput("a", "b", "c");
              scene.endOutput();            // the mode is true
              scene.beginGeometry("mesh");  // true at the bottom
              scene.endGeometry();
              scene.beginOptions();
              scene.endOptions();  // the mode is false
              writeMark(scene);
              scene.beginFrame(1);
              scene.endGeometry();
              writeMark(scene);
            }),
            golden());
}

}  // namespace
}  // namespace rendara

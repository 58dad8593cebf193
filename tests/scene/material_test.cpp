#include "scene/material.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "scene/appearance_reader.h"
#include "tests/scene/scene_test_support.h"
#include "tests/support/recording_scene.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/test_session.h"

namespace rendara {
namespace {

TEST(MaterialName, JoinsPrefixNameAndColorInLowerCase) {
  const MaterialRecord record{L"Brushed STEEL", {0.998, 0.001, 0.5}, L""};
  EXPECT_EQ(materialName(record, "Cover", true), "cover:brushed steel:254:0:128");
  EXPECT_EQ(materialName(record, "Cover", false), "brushed steel:254:0:128");
  EXPECT_EQ(materialName({L"x", {-1, 7, std::nan("")}, L""}, "", false), "x:0:255:0");
  EXPECT_EQ(materialName({std::wstring(2000, L'n'), {0, 0, 0}, L""}, "p", true), "p:" + std::string(1021, 'n'));
}

TEST(MaterialBlock, PlainMaterialsCarryTheirColorAlone) {
  EXPECT_EQ(testing::written(
                [](vntScene_api& scene) {
                  writeMaterial(scene, "a:1", {L"a", {0.2, 1.5, 0}, L""});
                },
                testing::Arrays::kPacked),
            "material \"a:1\" {\n"
            "  surface   \"vnt_diffuse\" {\n"
            "    \"diffuse\" 0.2 1 0,\n"
            "  }  \n"
            "}\n");
}

TEST(MaterialBlock, TexturedMaterialsFollowTheColorWithTheTexture) {
  EXPECT_EQ(testing::written(
                [](vntScene_api& scene) {
                  scene.beginObject("o", true);
                  writeMaterial(scene, "a:1", {L"a", {0.25, 0.5, 1}, L"C:\\caf\u00e9\\a.png"});
                  scene.endObject();
                },
                testing::Arrays::kPacked),
            "\nobject \"o\" {\n"
            "  material \"a:1\" {\n"
            "    surface     \"vnt_advanced\" {\n"
            "      \"diffuse\" 0.25 0.5 1,\n"
            "      \"specular\" 0 0 0,\n"
            "      \"fresnel\" on,\n"
            "      \"roughness\" 0,\n"
            "      \"ior\" 1.5,\n"
            "      \"glossy\" on,\n"
            "      \"glossy_samples\" 9,\n"
            "      \"alpha\" 1,\n"
            "      \"diffuse\" !   \"texture_rgb\" {\n"
            "        \"project\" 3,\n"
            "        \"wrap\" on,\n"
            "        \"default_color\" 0 0 0,\n"
            "        \"texture\" xX433a5c636166e95c612e706e67,\n"
            "      }  ,\n"
            "    }    \n"
            "  }\n"
            "}\n");
}

TEST(MaterialBlock, WithoutACaptureTheMaterialIsPlain) {
  // A live scene may capture nothing.
  class NoCapture : public testing::RecordingScene {
   public:
    CaptureBuffer* currentCapture() override { return nullptr; }
  } scene;
  writeMaterial(scene, "a", {L"a", {1, 1, 1}, L"a.png"});
  EXPECT_EQ(scene.count("beginShader null \"vnt_diffuse\""), 1);
  EXPECT_EQ(scene.count("shader 0 null"), 1);
}

class Appearances : public ::testing::Test {
 protected:
  Appearances() : part(standin::test::addBoxPart(session, L"box")) { session.textureFolders = {folder.path()}; }

  // The texture's path after an appearance with this texture was read; "none" when nothing was read.
  std::wstring texturePath(const std::wstring& texture) {
    part.appearance = standin::Appearance{L"paint", {1, 0, 0}, texture};
    const auto record = occurrenceMaterial(&part, {});
    return record ? record->texturePath : L"none";
  }
  std::wstring existing(const std::string& name) {
    testing::writeFile(folder.path() / name, "image");
    return (folder.path() / name).wstring();
  }

  testing::TemporaryFolder folder;
  standin::Session session;
  standin::Model& part;
};

TEST_F(Appearances, TexturesOfFiveKindsAreResolvedWithoutRegardToCase) {
  for (const std::string name : {"a.png", "a.gif", "a.JPG", "a.Tif", "a.bmp"}) {
    const std::wstring path = existing(name);
    EXPECT_EQ(texturePath(std::wstring(name.begin(), name.end())), path);
  }
  for (const std::string name : {"a.jpeg", "a.tiff", "png", "a.png.txt"}) {
    existing(name);
    EXPECT_EQ(texturePath(std::wstring(name.begin(), name.end())), L"") << name;
  }
  EXPECT_EQ(texturePath(L"missing.png"), L"");
  EXPECT_EQ(texturePath(L""), L"");
}

TEST_F(Appearances, WithoutAReadableNamedAppearanceThereIsNone) {
  EXPECT_FALSE(occurrenceMaterial(&part, {}).has_value());
  part.appearance = standin::Appearance{L"", {1, 0, 0}, L""};
  EXPECT_FALSE(occurrenceMaterial(&part, {}).has_value());
  part.appearance = standin::Appearance{L"paint", {1, 0, 0.5}, L""};
  const auto record = occurrenceMaterial(&part, {});
  ASSERT_TRUE(record.has_value());
  EXPECT_EQ(record->displayName, L"paint");
  EXPECT_EQ(record->color, (std::array<double, 3>{1, 0, 0.5}));
}

}  // namespace
}  // namespace rendara

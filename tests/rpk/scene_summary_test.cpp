#include "tools/rpk/scene_summary.h"

#include <gtest/gtest.h>

#include "tests/rpk/package_text.h"

namespace {

class PumpScene : public testing::Test {
 protected:
  const std::string text_ = rpk_test::pumpPackage();
  const rpk::Scene scene_ = rpk::readScene(text_);
};

TEST_F(PumpScene, HasHeaderAndOptions) {
  EXPECT_EQ(scene_.faultCount, 0U);
  EXPECT_EQ(scene_.headerVariant, 7);
  EXPECT_EQ(scene_.headers, (std::vector<std::string>{"//---vantor:dal:7---", "//---import:dal:1---", "//---id:1---"}));
  EXPECT_EQ(scene_.modules, (std::vector<std::string>{"vntgeometry_nurbs.so", "vntrtopt.so"}));
  EXPECT_EQ(scene_.option("import_merge_groups"), "off");
  EXPECT_EQ(scene_.option("meter_scale"), "39.3701");
  EXPECT_EQ(scene_.option("ext"), "");
}

TEST_F(PumpScene, HasCameras) {
  ASSERT_EQ(scene_.cameras.size(), 2U);
  EXPECT_EQ(scene_.cameras[1].name, "V\xe9");
  const rpk::Camera* camera = scene_.camera("Current Creo camera");
  ASSERT_NE(camera, nullptr);
  EXPECT_EQ(camera->values.at("position"), "0 0 2000");
  EXPECT_EQ(camera->values.at("projection"), "orthographic");
  ASSERT_TRUE(camera->transform);
  EXPECT_EQ((*camera->transform)[9], -1);
  ASSERT_TRUE(camera->environment);
  EXPECT_EQ(camera->environment->type, "vnt_envmap");
  EXPECT_EQ(camera->environment->values.at("texture"), "startup.hdr");
}

TEST_F(PumpScene, HasTheTreeWithPlacements) {
  ASSERT_EQ(scene_.groups.size(), 1U);
  const rpk::Group& pump = *scene_.groups[0];
  EXPECT_FALSE(pump.hasFlags);
  ASSERT_EQ(pump.children.size(), 3U);
  const rpk::Group* housing = pump.child("housing.asm");
  ASSERT_NE(housing, nullptr);
  EXPECT_TRUE(housing->assembly());
  const rpk::Group* cover = scene_.find("cover.prt");
  ASSERT_NE(cover, nullptr);
  EXPECT_EQ(cover->parent, housing);
  EXPECT_EQ(cover->flags, 1024U);
  // (1, 2, 3) moves to (1, 22, 3) in the housing, which turns x to y and y to -x and lifts by 3.
  EXPECT_EQ(rpk::transformPoint({1, 2, 3}, cover->placementInScene()), (rpk::Vector{-22, 1, 6}));
  EXPECT_EQ(scene_.allGroups().size(), 6U);
}

TEST_F(PumpScene, HasMeshesAsViews) {
  const rpk::Group* rotor = scene_.find("rotor.prt");
  ASSERT_NE(rotor, nullptr);
  ASSERT_EQ(rotor->objects.size(), 1U);
  const rpk::MeshView& mesh = rotor->objects[0].mesh;
  EXPECT_EQ(mesh.vertexCount(), 4U);
  EXPECT_EQ(mesh.triangleCount(), 2U);
  EXPECT_EQ(mesh.uvs.count(), 8U);
  EXPECT_EQ(mesh.normals.count(), 12U);
  EXPECT_EQ(mesh.triangles.integers(), (std::vector<std::int32_t>{0, 1, 2, 2, 1, 3}));
  EXPECT_GE(mesh.vertices.bytes().data(), text_.data());
  EXPECT_LT(mesh.vertices.bytes().data(), text_.data() + text_.size());
}

TEST_F(PumpScene, HasMaterials) {
  const rpk::Object& rotor = scene_.find("rotor.prt")->objects[0];
  ASSERT_TRUE(rotor.material);
  EXPECT_EQ(rotor.material->name, "rotor:red:204:51:26");
  EXPECT_EQ(rotor.material->surface.type, "vnt_diffuse");
  EXPECT_EQ(rotor.material->colour, (rpk::Vector{0.8, 0.2, 0.1}));
  EXPECT_EQ(rotor.material->texture, "");
  const std::vector<rpk::Object>& cover = scene_.find("cover")->objects;
  ASSERT_EQ(cover.size(), 2U);
  ASSERT_TRUE(cover[0].material);
  EXPECT_EQ(cover[0].material->surface.type, "vnt_advanced");
  EXPECT_EQ(cover[0].material->texture, "plate.png");
  EXPECT_EQ(cover[0].material->colour, (rpk::Vector{0.5, 0.5, 0.5}));
  ASSERT_TRUE(cover[1].material);
  EXPECT_EQ(cover[1].material->name, "rotor:red:204:51:26") << "a material that is only referred to";
  EXPECT_EQ(cover[1].material->surface.type, "vnt_diffuse") << "as it was defined before";
}

TEST_F(PumpScene, HasExactSurfaces) {
  const rpk::Object& exact = scene_.find("cover")->objects[0];
  EXPECT_EQ(exact.geometryType, "nurbs");
  EXPECT_EQ(exact.values.at("uorder"), "2");
  EXPECT_EQ(exact.arrays.at("uknot").doubles(), (std::vector<double>{0, 0, 1, 1}));
  EXPECT_EQ(exact.mesh.vertexCount(), 0U);
}

TEST_F(PumpScene, HasAnimation) {
  const rpk::Group* rotor = scene_.find("rotor.prt");
  ASSERT_EQ(rotor->animations.size(), 1U);
  const rpk::Animation& motion = rotor->animations[0];
  EXPECT_EQ(motion.type, "fbx_animation");
  EXPECT_EQ(motion.name, "rotor.prt");
  EXPECT_EQ(motion.values.at("folder"), "Creo animation");
  ASSERT_EQ(motion.matrices.size(), 2U);
  EXPECT_EQ(motion.matrices[1][1], 1);
  EXPECT_EQ(motion.matrices[1][14], 7);
  EXPECT_EQ(motion.timestamps, (std::vector<std::int32_t>{0, 40}));
}

TEST_F(PumpScene, FollowsReferences) {
  const rpk::Group& second = *scene_.groups[0]->children[2];
  ASSERT_NE(second.reference(), nullptr);
  EXPECT_EQ(second.reference()->source, "rotor.prt");
  EXPECT_EQ(second.reference()->sourceGroup, scene_.groups[0]->children[0].get());
  EXPECT_FALSE(second.holdsGeometry());
  EXPECT_EQ(scene_.groups[0]->children[0]->reference(), nullptr);
}

std::string reference(const std::string& name) {
  return "group \"" + name + "\" {\n  object \"o\" {\n    geometry \"instance\" {\n      \"source\" \"" + name +
         "\",\n    }\n  }\n}\n";
}

TEST(Scene, ReferenceMeansTheLastEarlierGroupWithGeometry) {
  const std::string mesh =
      "group \"a.prt\" {\n  object \"o\" {\n    geometry \"triangles\" {\n      \"vertices\" [ 0 0 0,1 0 0,0 1 0 ] ,\n"
      "      \"triangles\" [ 0,1,2 ] ,\n    }\n  }\n}\n";
  const std::string inner =
      "group \"b.prt\" {\n  group \"b\" {\n    flags 66560\n    object \"o\" {\n"
      "      geometry \"nurbs\" {\n      }\n    }\n  }\n}\n";
  const std::string empty = "group \"a.prt\" {\n}\n";
  const std::string text = "group \"top\" {\n" + reference("a.prt") + mesh + mesh + empty + reference("a.prt") + mesh +
                           inner + reference("b.prt") + "}\n";
  const rpk::Scene scene = rpk::readScene(text);
  const auto& groups = scene.groups.at(0)->children;
  ASSERT_EQ(groups.size(), 8U);
  EXPECT_EQ(groups[0]->reference()->sourceGroup, nullptr) << "nothing before it";
  EXPECT_EQ(groups[4]->reference()->sourceGroup, groups[2].get()) << "neither an empty group nor a later one";
  EXPECT_EQ(groups[7]->reference()->sourceGroup, groups[6].get()) << "geometry in the groups of its materials";
  EXPECT_EQ(groups[1]->objects[0].mesh.triangleCount(), 1U) << "arrays in text form";
}

TEST(PackageCounts, CountsThePump) {
  const std::string text = rpk_test::pumpPackage();
  const rpk::PackageCounts counts = rpk::countPackage(text);
  EXPECT_EQ(counts.faultCount, 0U);
  EXPECT_EQ(counts.groups, 6U);
  EXPECT_EQ(counts.occurrences, 3U) << "two rotors and a cover";
  EXPECT_EQ(counts.references, 1U);
  EXPECT_EQ(counts.objects, 4U);
  EXPECT_EQ(counts.nurbsObjects, 1U);
  EXPECT_EQ(counts.vertices, 7U);
  EXPECT_EQ(counts.triangles, 3U);
  EXPECT_EQ(counts.trianglesPlaced, 5U);
  EXPECT_EQ(counts.materials, 2U);
  EXPECT_EQ(counts.cameras, 2U);
  EXPECT_EQ(counts.animations, 1U);
  EXPECT_EQ(counts.bytes.mesh, 4U * (12 + 12 + 8 + 6 + 9 + 3));
  EXPECT_EQ(counts.bytes.nurbs, 8U * 4);
  EXPECT_EQ(counts.bytes.mesh + counts.bytes.nurbs + counts.bytes.animation + counts.bytes.text, text.size());
}

}  // namespace

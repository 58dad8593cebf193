// Colours and textures.
#include <gtest/gtest.h>
#include <stb_image_write.h>

#include "tests/gltf/written_package.h"
#include "tests/support/temporary_folder.h"
#include "tools/rpk/image_file.h"

namespace {

using namespace gltf_test;

const rpk::Image kPicture = {2, 1, {255, 0, 0, 255, 0, 255, 0, 255}};

// The smallest of its kind: red beside green.
std::string bmpPicture() {
  std::string bytes = "BM";
  for (const auto& [value, size] : std::initializer_list<std::pair<std::uint32_t, int>>{
           {62, 4}, {0, 4}, {54, 4}, {40, 4}, {2, 4}, {1, 4}, {1, 2}, {24, 2}, {0, 4}, {8, 4}, {0, 8}, {0, 8}}) {
    rpk_test::appendLittleEndian(bytes, value, size);
  }
  return bytes + std::string("\0\0\xff\0\xff\0\0\0", 8);
}

std::string jpegPicture() {
  const std::vector<std::uint8_t> grey(std::size_t{8} * 8 * 3, 90);
  std::string bytes;
  const auto append = [](void* context, void* data, int size) {
    static_cast<std::string*>(context)->append(static_cast<const char*>(data), static_cast<std::size_t>(size));
  };
  EXPECT_NE(stbi_write_jpg_to_func(append, &bytes, 8, 8, 3, grey.data(), 80), 0);
  return bytes;
}

MeshText withUvs() {
  MeshText mesh;
  mesh.uvs = kCornerUvs;
  return mesh;
}

const tinygltf::Primitive& onlyPrimitive(const tinygltf::Model& model, const std::string& node) {
  return model.meshes.at(static_cast<std::size_t>(placedNode(model, node).node->mesh)).primitives.at(0);
}

const tinygltf::Material& materialOf(const tinygltf::Model& model, const std::string& node) {
  return model.materials.at(static_cast<std::size_t>(onlyPrimitive(model, node).material));
}

std::string embeddedBytes(const tinygltf::Model& model, const tinygltf::Image& image) {
  const tinygltf::BufferView& view = model.bufferViews.at(static_cast<std::size_t>(image.bufferView));
  const unsigned char* start = model.buffers[0].data.data() + view.byteOffset;
  return {start, start + view.byteLength};
}

TEST(GltfMaterial, ColoursAreLinearAndEachLookStandsOnce) {
  const Written written =
      write(package(group("top", group("grey", object({}, plainMaterial("m", "0.5 0.5 0.5"))) +
                                     group("same", object({}, plainMaterial("m", "0.5 0.5 0.5"))) +
                                     group("other", object({}, plainMaterial("m", "0.5 0.5 1.5"))) +
                                     group("none", object()) + group("named", object({}, "material \"m\"\n")) +
                                     group("broken", object({}, plainMaterial("n", "nan -1 0.02"))))));
  const tinygltf::Model& model = written.model;
  const std::vector<double> half = {0.214041, 0.214041, 0.214041, 1};
  EXPECT_EQ(materialOf(model, "grey").pbrMetallicRoughness.baseColorFactor, half);
  EXPECT_EQ(materialOf(model, "grey").pbrMetallicRoughness.metallicFactor, 0);
  EXPECT_TRUE(materialOf(model, "grey").doubleSided);
  EXPECT_EQ(onlyPrimitive(model, "same").material, onlyPrimitive(model, "grey").material);
  EXPECT_EQ(materialOf(model, "other").pbrMetallicRoughness.baseColorFactor,
            (std::vector<double>{0.214041, 0.214041, 1, 1}));
  EXPECT_EQ(onlyPrimitive(model, "named").material, onlyPrimitive(model, "other").material) << "the last of the name";
  EXPECT_EQ(materialOf(model, "none").pbrMetallicRoughness.baseColorFactor,
            (std::vector<double>{0.318547, 0.318547, 0.318547, 1}));
  EXPECT_EQ(materialOf(model, "broken").pbrMetallicRoughness.baseColorFactor, (std::vector<double>{0, 0, 0.001548, 1}));
  EXPECT_EQ(model.materials.size(), 4U);
}

TEST(GltfMaterial, EmbedsTexturesFoundBesideThePackage) {
  const rendara::testing::TemporaryFolder folder;
  rendara::testing::writeFile(folder.path() / "plate.png", rpk::encodePng(kPicture));
  rendara::testing::writeFile(folder.path() / "wood.jpg", jpegPicture());
  rendara::testing::writeFile(folder.path() / "M\xc3\xbcnze.bmp", bmpPicture());
  const std::string plate = texturedMaterial("plate", "C:\\textures\\plate.png");
  const Written written = write(
      package(group("top", group("plate", object(withUvs(), plate)) +
                               group("again", object(withUvs(), texturedMaterial("plate", "/gone/plate.png"))) +
                               group("bare", object({}, plate)) +
                               group("clamped", object(withUvs(), texturedMaterial("plate", "plate.png", "off"))) +
                               group("wood", object(withUvs(), texturedMaterial("w", "wood.jpg"))) +
                               group("coin", object(withUvs(), texturedMaterial("c", "x\\M\xfcnze.bmp"))))),
      folder.path());
  const tinygltf::Model& model = written.model;
  EXPECT_TRUE(written.summary.warnings.empty());
  ASSERT_EQ(model.images.size(), 3U);
  EXPECT_EQ(embeddedBytes(model, model.images[0]), rpk::encodePng(kPicture));
  EXPECT_EQ(embeddedBytes(model, model.images[1]), jpegPicture());
  EXPECT_EQ(model.images[1].mimeType, "image/jpeg");
  EXPECT_EQ(model.images[2].mimeType, "image/png");
  const auto coin = rpk::decodeImage(embeddedBytes(model, model.images[2]));
  ASSERT_TRUE(coin.has_value());
  EXPECT_EQ(coin->pixels, kPicture.pixels);

  // The texture takes the place of the colour; rows count from the top.
  EXPECT_EQ(materialOf(model, "plate").pbrMetallicRoughness.baseColorFactor, (std::vector<double>{1, 1, 1, 1}));
  EXPECT_EQ(values(model, onlyPrimitive(model, "plate").attributes.at("TEXCOORD_0")),
            (std::vector<double>{0, 1, 1, 1, 0, 0, 1, 0.25}));
  EXPECT_EQ(onlyPrimitive(model, "again").material, onlyPrimitive(model, "plate").material);
  EXPECT_EQ(materialOf(model, "bare").pbrMetallicRoughness.baseColorTexture.index, -1);
  EXPECT_EQ(materialOf(model, "bare").pbrMetallicRoughness.baseColorFactor[0], 0.214041);
  const auto wrapOf = [&](const std::string& node) {
    const int texture = materialOf(model, node).pbrMetallicRoughness.baseColorTexture.index;
    return model.samplers.at(static_cast<std::size_t>(model.textures.at(static_cast<std::size_t>(texture)).sampler))
        .wrapS;
  };
  EXPECT_EQ(wrapOf("plate"), TINYGLTF_TEXTURE_WRAP_REPEAT);
  EXPECT_EQ(wrapOf("clamped"), TINYGLTF_TEXTURE_WRAP_CLAMP_TO_EDGE);
}

TEST(GltfMaterial, TextureCoordinatesComeWithTheFirstTextureOnThem) {
  const rendara::testing::TemporaryFolder folder;
  rendara::testing::writeFile(folder.path() / "plate.png", rpk::encodePng(kPicture));
  const Written written =
      write(package(group("top", group("p", object(withUvs(), plainMaterial("red", "1 0 0"))) +
                                     group("q", reference("p", texturedMaterial("plate", "plate.png"))))),
            folder.path());
  const tinygltf::Primitive& plain = onlyPrimitive(written.model, "p");
  const tinygltf::Primitive& textured = onlyPrimitive(written.model, "q");
  EXPECT_FALSE(plain.attributes.contains("TEXCOORD_0"));
  EXPECT_TRUE(textured.attributes.contains("TEXCOORD_0"));
  EXPECT_EQ(plain.attributes.at("POSITION"), textured.attributes.at("POSITION"));
}

TEST(GltfMaterial, UnreadableTexturesLeaveThePlainColour) {
  const rendara::testing::TemporaryFolder folder;
  rendara::testing::writeFile(folder.path() / "cut.png", rpk::encodePng(kPicture).substr(0, 40));
  rendara::testing::writeFile(folder.path() / "note.png", "no picture");
  std::filesystem::create_directory(folder.path() / "folder.png");
  for (const char* file : {"cut.png", "note.png", "folder.png", "none.png", "/dev/zero", "..\\", "\x1b[2J.png"}) {
    const std::string part = object(withUvs(), texturedMaterial("m", file));
    const Written written = write(package(group("top", group("p", part) + group("q", part))), folder.path());
    EXPECT_TRUE(written.model.images.empty());
    EXPECT_EQ(materialOf(written.model, "p").pbrMetallicRoughness.baseColorFactor[0], 0.214041);
    ASSERT_EQ(written.summary.warnings.size(), 1U) << "one line for each file";
    EXPECT_EQ(written.summary.warnings[0].find('\x1b'), std::string::npos);
  }
}

}  // namespace

#include "tools/rpk/gltf/gltf_writer.h"

#include <fmt/format.h>
#include <tiny_gltf.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <istream>
#include <set>
#include <sstream>
#include <utility>

#include "tools/rpk/gltf/binary_data.h"
#include "tools/rpk/gltf/camera_nodes.h"
#include "tools/rpk/gltf/group_nodes.h"
#include "tools/rpk/gltf/material_table.h"
#include "tools/rpk/gltf/mesh_table.h"
#include "tools/rpk/gltf/pose_node.h"
#include "tools/rpk/gltf/texture_table.h"
#include "tools/rpk/utf8_text.h"

namespace rpk {
namespace {

double numberOption(const Scene& scene, std::string_view name, double without) {
  const std::string_view text = scene.option(name);
  double value = without;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

WorldFrame worldFrame(const Scene& scene, std::vector<std::string>& warnings) {
  constexpr double kMost = 1e12;
  WorldFrame frame;
  frame.rotation = upRotation(numberOption(scene, "import_up_vector", 1));
  const double units = unitsPerMetre(scene);
  if (units > kMost || units < 1 / kMost) {
    warnings.emplace_back("the metre scale is out of range; lengths are taken as metres");
  } else {
    frame.metresPerUnit = 1 / units;
  }
  return frame;
}

// The text of everything but the binary data themselves. The library would have these in memory, twice; so it gets no
// buffer, and the entry that tells of them is put in here.
std::string jsonOf(const tinygltf::Model& model, std::uint64_t binarySize) {
  std::ostringstream stream;
  tinygltf::TinyGLTF writer;
  if (!writer.WriteGltfSceneToStream(&model, stream, false, false)) throw GltfError("its text cannot be made");
  std::string text = std::move(stream).str();
  while (!text.empty() && text.back() != '}') text.pop_back();
  if (binarySize > 0) text.insert(1, fmt::format(R"("buffers":[{{"byteLength":{}}}],)", binarySize));
  text.append((4 - text.size() % 4) % 4, ' ');
  return text;
}

void writeNumbers(std::ostream& out, std::initializer_list<std::uint64_t> numbers) {
  for (const std::uint64_t number : numbers) {
    std::array<char, 4> bytes{};
    for (std::size_t i = 0; i < 4; ++i) bytes[i] = static_cast<char>(number >> (8 * i));
    out.write(bytes.data(), 4);
  }
}

// Header and two chunks, each a multiple of four bytes; the number of bytes written.
std::uint64_t writeContainer(const std::string& json, std::uint64_t binarySize, std::iostream& scratch,
                             std::ostream& out) {
  constexpr std::uint64_t kMagic = 0x46546c67;
  constexpr std::uint64_t kJsonChunk = 0x4e4f534a;
  constexpr std::uint64_t kBinaryChunk = 0x004e4942;
  const std::uint64_t padding = (4 - binarySize % 4) % 4;
  const std::uint64_t total = 20 + json.size() + (binarySize > 0 ? 8 + binarySize + padding : 0);
  if (total > 0xffffffffU) throw GltfError("the scene needs more than the 4 GB that a binary glTF file can hold");
  writeNumbers(out, {kMagic, 2, total, json.size(), kJsonChunk});
  out.write(json.data(), static_cast<std::streamsize>(json.size()));
  if (binarySize > 0) {
    writeNumbers(out, {binarySize + padding, kBinaryChunk});
    scratch.flush();
    scratch.seekg(0);
    std::vector<char> block(std::size_t{1} << 20);
    for (std::uint64_t left = binarySize; left > 0;) {
      const auto count = static_cast<std::streamsize>(std::min<std::uint64_t>(left, block.size()));
      if (!scratch.read(block.data(), count)) throw GltfError("its binary data cannot be read back");
      out.write(block.data(), count);
      left -= static_cast<std::uint64_t>(count);
    }
    out.write("\0\0\0", static_cast<std::streamsize>(padding));
  }
  out.flush();
  if (!out) throw GltfError("it cannot be written");
  return total;
}

void addRoot(tinygltf::Model& model, const WorldFrame& frame) {
  tinygltf::Node root;
  root.name = "metres, Y up";
  Pose pose = *toPose(frame.rotation);
  pose.scale = {frame.metresPerUnit, frame.metresPerUnit, frame.metresPerUnit};
  setPose(root, pose);
  model.nodes.push_back(std::move(root));
}

GltfSummary summaryOf(const tinygltf::Model& model) {
  GltfSummary summary;
  summary.meshes = model.meshes.size();
  summary.placedMeshes = static_cast<std::size_t>(
      std::count_if(model.nodes.begin(), model.nodes.end(), [](const tinygltf::Node& node) { return node.mesh >= 0; }));
  summary.materials = model.materials.size();
  summary.textures = model.images.size();
  summary.cameras = model.cameras.size();
  std::set<int> moving;
  for (const tinygltf::Animation& animation : model.animations) {
    for (const tinygltf::AnimationChannel& channel : animation.channels) moving.insert(channel.target_node);
  }
  summary.movingGroups = moving.size();
  return summary;
}

}  // namespace

GltfSummary writeGltf(const Scene& scene, const GltfOptions& options, std::iostream& scratch, std::ostream& out) {
  std::vector<std::string> warnings;
  tinygltf::Model model;
  model.asset.version = "2.0";
  model.asset.generator = "rpk";
  BinaryData data(model, scratch);
  TextureTable textures(model, data, options.folder, warnings);
  MaterialTable materials(model, textures);
  MeshTable meshes(model, data, materials);
  GroupNodes groups(model, data, meshes, warnings);

  const WorldFrame frame = worldFrame(scene, warnings);
  addRoot(model, frame);
  const std::vector<int> children = groups.add(scene.groups);
  model.nodes[0].children = children;
  tinygltf::Scene top;
  if (!scene.groups.empty()) top.name = toUtf8(scene.groups.front()->name);
  top.nodes = {0};
  const std::vector<int> cameras = addCameras(model, scene, groups.bounds(), frame);
  top.nodes.insert(top.nodes.end(), cameras.begin(), cameras.end());
  model.scenes.push_back(std::move(top));
  model.defaultScene = 0;

  if (meshes.leftOut() > 0) {
    warnings.push_back(
        fmt::format("{} triangles with indices or coordinates that cannot be are left out", meshes.leftOut()));
  }
  GltfSummary summary = summaryOf(model);
  summary.triangles = meshes.triangles();
  summary.bytes = writeContainer(jsonOf(model, data.size()), data.size(), scratch, out);
  summary.warnings = std::move(warnings);
  return summary;
}

}  // namespace rpk

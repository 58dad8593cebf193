#include "standin/renderer/scene_status.h"

#include <fmt/format.h>

#include <bit>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "tools/rpk/drawn_content.h"
#include "tools/rpk/hash_mix.h"
#include "tools/rpk/utf8_text.h"

namespace standin {
namespace {

using Json = nlohmann::ordered_json;
using rpk::hashMix;

Json digest(std::uint64_t value) { return fmt::format("{:016x}", value); }

Json matrix(const std::optional<rpk::Matrix>& values) { return values ? Json(*values) : Json(); }

Json animationDigest(const std::vector<rpk::Animation>& animations) {
  if (animations.empty()) return {};
  std::uint64_t key = 0;
  for (const rpk::Animation& animation : animations) {
    key = hashMix(hashMix(key, animation.type), animation.name);
    for (const auto& [name, value] : animation.values) key = hashMix(hashMix(key, name), value);
    for (const rpk::Matrix& pose : animation.matrices) {
      for (const double value : pose) key = hashMix(key, std::bit_cast<std::uint64_t>(value));
    }
    for (const std::int32_t time : animation.timestamps) key = hashMix(key, static_cast<std::uint64_t>(time));
    key = hashMix(key, std::uint64_t{animation.matrices.size()});
  }
  return digest(key);
}

class Groups {
 public:
  Json list(const std::vector<MergedScene::Node>& nodes) {
    add(nodes, "");
    return std::move(groups_);
  }

 private:
  void add(const std::vector<MergedScene::Node>& nodes, const std::string& around) {
    std::map<std::string_view, std::size_t> counts;
    for (const MergedScene::Node& node : nodes) {
      const std::size_t count = ++counts[node.name];
      std::string path = around + rpk::toUtf8(node.name);
      if (count > 1) path += fmt::format("[{}]", count);
      add(node, path);
      add(node.children, path + "/");
    }
  }

  void add(const MergedScene::Node& node, const std::string& path) {
    Json group;
    group["path"] = path;
    group["flags"] = node.flags ? Json(*node.flags) : Json();
    group["placement"] = matrix(node.placement);
    group["animation"] = animationDigest(node.animations);
    const auto [geometry, material] = drawn(node.content);
    group["geometry"] = geometry;
    group["material"] = material;
    groups_.push_back(std::move(group));
  }

  // Digests of what is drawn by a group; null for nothing. Geometry that many groups refer to is gone through once.
  std::pair<Json, Json> drawn(const rpk::Group* content) {
    if (!content) return {};
    const std::vector<rpk::DrawnObject> objects = rpk::drawnObjects(*content);
    if (objects.empty()) return {};
    std::uint64_t material = 0;
    for (const rpk::DrawnObject& object : objects) material = hashMix(material, rpk::materialKey(object.material));
    return {digest(geometryOf(objects)), digest(material)};
  }

  std::uint64_t geometryOf(const std::vector<rpk::DrawnObject>& objects) {
    const auto [entry, added] = geometry_.try_emplace(objects.front().object, 0);
    if (added) {
      for (const std::uint64_t key : rpk::contentOf(objects).geometryKeys) entry->second = hashMix(entry->second, key);
    }
    return entry->second;
  }

  Json groups_ = Json::array();
  std::map<const rpk::Object*, std::uint64_t> geometry_;  // by the first object
};

Json texts(const std::vector<std::string>& values) {
  Json list = Json::array();
  for (const std::string& value : values) list.push_back(rpk::toUtf8(value));
  return list;
}

}  // namespace

std::string statusJson(const MergedScene& scene, const ScriptCounts& counts) {
  Json status;
  status["scripts_taken"] = counts.taken;
  status["scripts_refused"] = counts.refused;
  status["last_refusal"] = counts.refused > 0 ? Json(rpk::toUtf8(counts.lastRefusal)) : Json();
  status["scripts_held"] = scene.scriptsHeld();
  status["bytes_last"] = counts.lastBytes;
  status["bytes_all"] = counts.allBytes;
  status["pictures"] = counts.pictures;
  status["picture_failure"] = counts.pictureFailure.empty() ? Json() : Json(rpk::toUtf8(counts.pictureFailure));
  status["headers"] = texts(scene.head().headers);
  status["modules"] = texts(scene.head().modules);
  status["options"] = Json::object();
  for (const auto& [name, value] : scene.head().options) status["options"][rpk::toUtf8(name)] = rpk::toUtf8(value);
  status["cameras"] = Json::array();
  for (const rpk::Camera& camera : scene.head().cameras) {
    status["cameras"].push_back({{"name", rpk::toUtf8(camera.name)}, {"transform", matrix(camera.transform)}});
  }
  status["dangling_references"] = scene.danglingReferences();
  status["groups"] = Groups().list(scene.groups());
  return status.dump(1) + "\n";
}

}  // namespace standin

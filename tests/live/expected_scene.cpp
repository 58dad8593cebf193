#include "tests/live/expected_scene.h"

#include <algorithm>

#include "standin/app/component_lookup.h"

namespace rendara::testing {
namespace {

using nlohmann::json;
using standin::Feature;
using standin::Layer;
using standin::Model;

bool isShown(const Model& owner, const Feature& feature) {
  if (feature.type != PRO_FEAT_COMPONENT || feature.component == nullptr || feature.status != PRO_FEAT_ACTIVE) {
    return false;
  }
  return std::none_of(owner.layers.begin(), owner.layers.end(), [&](const Layer& layer) {
    return layer.display == PRO_LAYER_TYPE_BLANK &&
           std::find(layer.items.begin(), layer.items.end(), std::pair(PRO_LAYER_FEAT, feature.id)) !=
               layer.items.end();
  });
}

class Walk {
 public:
  void walk(const Model& owner, const std::string& group, const std::vector<int>& path) {
    std::map<std::string, int> siblings;
    const auto next = [&](const std::string& name) {
      const int count = ++siblings[name];
      return group + "/" + name + (count > 1 ? "[" + std::to_string(count) + "]" : "");
    };
    for (const Feature& feature : owner.features) {
      if (!isShown(owner, feature)) {
        continue;
      }
      const Model& component = *feature.component;
      const std::string name = standin::displayName(component);
      std::vector<int> below = path;
      below.push_back(feature.id);
      if (component.type == PRO_MDL_ASSEMBLY) {
        walk(component, next(name), below);
      }
      if (!component.surfaces.empty()) {
        occurrences.push_back({below, next(name), name, component.versionStamp});
      }
    }
  }

  std::vector<Occurrence> occurrences;
};

bool isPicked(const std::vector<int>& path, const ExpectedScene::Picks& picks) {
  return std::any_of(picks.begin(), picks.end(), [&](const std::vector<int>& pick) {
    return pick.size() <= path.size() && std::equal(pick.begin(), pick.end(), path.begin());
  });
}

}  // namespace

std::vector<Occurrence> occurrencesOf(const Model& top) {
  Walk walk;
  const std::string name = standin::displayName(top);
  walk.walk(top, name.substr(0, name.rfind('.')), {});
  return walk.occurrences;
}

json ExpectedScene::take(const Model& top, const json& fresh, const Picks& picks) {
  std::map<std::string, json> groups;
  for (const json& group : fresh) {
    groups[group.at("path")] = group;
  }
  std::map<std::vector<int>, Sent> next;
  std::set<std::string> known;
  for (const Occurrence& occurrence : occurrencesOf(top)) {
    json& group = groups.at(occurrence.group);
    const auto before = sent_.find(occurrence.path);
    const bool held =
        before != sent_.end() && before->second.group == occurrence.group && before->second.stamp == occurrence.stamp;
    if (!held || isPicked(occurrence.path, picks) || known.contains(occurrence.name)) {
      known.insert(occurrence.name);
    } else {
      group["geometry"] = json::parse(before->second.geometry);
      group["material"] = json::parse(before->second.material);
    }
    next[occurrence.path] = {occurrence.group, occurrence.stamp, group["geometry"].dump(), group["material"].dump()};
  }
  sent_ = std::move(next);
  json result = json::array();
  for (const json& group : fresh) {
    result.push_back(groups.at(group.at("path")));
  }
  return result;
}

}  // namespace rendara::testing

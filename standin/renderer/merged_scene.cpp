#include "standin/renderer/merged_scene.h"

#include <fmt/format.h>

#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace standin {
namespace {

using Node = MergedScene::Node;
using Script = MergedScene::Script;

// Finds nodes among siblings by their name and, of those of one name, their place.
class Siblings {
 public:
  explicit Siblings(const std::vector<Node>& nodes) {
    for (const Node& node : nodes) byName_[node.name].nodes.push_back(&node);
  }

  // The one that the next sibling of that name is; or null.
  const Node* next(std::string_view name) {
    const auto found = byName_.find(name);
    if (found == byName_.end() || found->second.used == found->second.nodes.size()) return nullptr;
    return found->second.nodes[found->second.used++];
  }

 private:
  struct Named {
    std::vector<const Node*> nodes;
    std::size_t used = 0;
  };
  std::map<std::string_view, Named> byName_;
};

class Merger {
 public:
  explicit Merger(std::shared_ptr<const Script> script) : script_(std::move(script)) {}

  // The groups of the script as they become with what was held before.
  std::vector<Node> merge(const std::vector<std::unique_ptr<rpk::Group>>& groups, const std::vector<Node>& held) {
    Siblings siblings(held);
    std::vector<Node> merged;
    for (const auto& group : groups) {
      if (!group->materialGroup()) merged.push_back(mergeGroup(*group, siblings.next(group->name)));
    }
    return merged;
  }

  std::size_t danglingReferences() const { return danglingReferences_; }

 private:
  Node mergeGroup(const rpk::Group& group, const Node* held) {
    Node node;
    node.name = group.name;
    if (group.hasFlags) node.flags = group.flags;
    node.placement = group.placement;
    node.animations = group.animations;
    const rpk::Object* const reference = group.reference();
    if (group.holdsGeometry() || reference) {
      node.content = &group;
      node.script = script_;
      if (!group.holdsGeometry() && !reference->sourceGroup) ++danglingReferences_;
    } else if (held) {
      node.content = held->content;
      node.script = held->script;
    }
    static const std::vector<Node> kNone;
    node.children = merge(group.children, held ? held->children : kNone);
    return node;
  }

  std::shared_ptr<const Script> script_;
  std::size_t danglingReferences_ = 0;
};

// The top of the scene: what came takes the place of what it is the same as, or goes to the end.
std::vector<Node> replaceTop(std::vector<Node> held, std::vector<Node> came) {
  std::map<std::pair<std::string, std::size_t>, std::size_t> places;
  std::map<std::string_view, std::size_t> counts;
  for (std::size_t i = 0; i < held.size(); ++i) places[{held[i].name, counts[held[i].name]++}] = i;
  counts.clear();
  std::map<std::string, std::size_t> used;
  for (Node& node : came) {
    const auto found = places.find({node.name, used[node.name]++});
    if (found != places.end()) {
      held[found->second] = std::move(node);
    } else {
      held.push_back(std::move(node));
    }
  }
  return held;
}

void collectScripts(const std::vector<Node>& nodes, std::set<const Script*>& scripts) {
  for (const Node& node : nodes) {
    if (node.script) scripts.insert(node.script.get());
    collectScripts(node.children, scripts);
  }
}

std::size_t countScripts(const std::vector<Node>& nodes) {
  std::set<const Script*> scripts;
  collectScripts(nodes, scripts);
  return scripts.size();
}

std::string faultOf(const rpk::Scene& scene) {
  if (scene.faultCount > 0) {
    const rpk::Fault& fault = scene.faults.front();
    return fmt::format("line {}: {}{}", fault.place.line, fault.what,
                       scene.faultCount > 1 ? fmt::format(" (and {} more faults)", scene.faultCount - 1) : "");
  }
  if (scene.headerVariant == 0) return "the script has no header line of a scene";
  if (scene.groups.empty()) return "the script has no group";
  for (const auto& [name, wanted] : {std::pair<std::string_view, std::string_view>{"import_merge_groups", "off"},
                                     {"import_merge_objects", "off"},
                                     {"import_keep_original", "on"}}) {
    const std::string_view value = scene.option(name);
    if (!value.empty() && value != wanted) return fmt::format("{} is {}, which is not supported", name, value);
  }
  return {};
}

void collectPlaced(const std::vector<Node>& nodes, const rpk::Matrix& around, std::vector<rpk::PlacedGroup>& placed) {
  for (const Node& node : nodes) {
    const rpk::Matrix placement = node.placement ? rpk::multiply(*node.placement, around) : around;
    if (node.content) placed.push_back({node.content, placement});
    collectPlaced(node.children, placement, placed);
  }
}

}  // namespace

std::string MergedScene::take(ScriptBytes bytes) {
  auto script = std::make_shared<Script>();
  script->scene = rpk::readScene(bytes.bytes);
  script->bytes = std::move(bytes);
  if (std::string fault = faultOf(script->scene); !fault.empty()) return fault;
  Merger merger(script);
  std::vector<Node> groups = replaceTop(groups_, merger.merge(script->scene.groups, groups_));
  if (countScripts(groups) > maxScripts_) {
    return fmt::format("more than {} scripts would have to be held", maxScripts_);
  }
  rpk::Scene head;
  head.headers = script->scene.headers;
  head.headerVariant = script->scene.headerVariant;
  head.modules = script->scene.modules;
  head.options = script->scene.options;
  head.cameras = script->scene.cameras.empty() ? std::move(head_.cameras) : script->scene.cameras;
  groups_ = std::move(groups);
  head_ = std::move(head);
  danglingReferences_ = merger.danglingReferences();
  return {};
}

std::size_t MergedScene::scriptsHeld() const { return countScripts(groups_); }

std::vector<rpk::PlacedGroup> placedContent(const std::vector<Node>& groups) {
  std::vector<rpk::PlacedGroup> placed;
  collectPlaced(groups, rpk::kIdentity, placed);
  return placed;
}

}  // namespace standin

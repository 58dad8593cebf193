#include "core/traversal.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>

#include "core/cameras.h"
#include "core/component_filter.h"
#include "platform/creo_handles.h"
#include "scene/vntScene_api.h"

namespace rendara {
namespace {

constexpr unsigned kAssemblyGroupFlags = 0x8000;

class Traversal;

// Groups as a renderer tells them apart: by their names from the top down and, among siblings of one name, by number.
class SiblingGroups {
 public:
  explicit SiblingGroups(std::string parent) : parent_(std::move(parent)) {}

  // The group of that name that comes next.
  std::string next(const std::string& name) const {
    const auto found = counts_.find(name);
    return parent_ + '\n' + name + '[' + std::to_string(found != counts_.end() ? found->second : 0) + ']';
  }
  void written(const std::string& name) { ++counts_[name]; }

 private:
  std::string parent_;
  std::unordered_map<std::string, std::size_t> counts_;
};

// One assembly while its components are visited.
struct WalkContext {
  explicit WalkContext(std::string group) : siblings(std::move(group)) {}

  SiblingGroups siblings;
  Traversal* traversal = nullptr;
  ProSolid model = nullptr;
  Matrix placement = kIdentityMatrix;  // the inverse of the assembly's own transform, identity at the top
  ProAsmcomppath path{};               // from the top model
  bool selected = false;
  bool included = false;
};

// One component while it is written.
struct Component {
  ProMdl model = nullptr;
  ProAsmcomppath fullPath{};
  ProAsmcomppath ownPath{};
  Matrix transform = kIdentityMatrix;  // to the top model's coordinates
  Matrix placement = kIdentityMatrix;  // to those of the enclosing group
  VersionStamp stamp;                  // on the live link only
  bool selected = false;
  bool included = false;
  NarrowText sceneName;
};

ProAsmcomppath makePath(ProSolid owner, ProIdTable identifiers, int count) {
  ProAsmcomppath path{};
  path.owner = owner;
  ProAsmcomppathInit(owner, identifiers, count, &path);
  return path;
}

ProError visitComponent(ProFeature* feature, ProError, ProAppData context);
ProError filterVisited(ProFeature* feature, ProAppData context);

class Traversal {
 public:
  Traversal(RendaraPlugin& plugin, SceneBuilder& builder, const OpenModel& open)
      : plugin_(plugin), builder_(builder), open_(open) {}

  void run() {
    readModel();
    exportCameras(builder_, open_.model);
    WalkContext top(open_.name);
    top.traversal = this;
    top.model = static_cast<ProSolid>(open_.model);
    ProIdTable none{};
    top.path = makePath(top.model, none, 0);
    top.selected = plugin_.updateInProgress && plugin_.wholeModelPicked;
    top.included = open_.representation.includesByDefault();
    if (open_.mode == PRO_MODE_ASSEMBLY) {
      walk(top);
    } else if (open_.mode != PRO_MODE_SECTION && open_.mode != PRO_MODE_PART) {
      return;
    }
    // An assembly's own surfaces come after its components.
    plugin_.exportPartGeometry(top.model, top.path, top.path, {open_.name, true}, kIdentityMatrix, true);
  }

  // The action of a visit, below the host's frames.
  ProError visit(ProFeature& feature, WalkContext& context) {
    return guard_.run([&] {
      writeComponent(feature, context);
      return PRO_TK_NO_ERROR;
    });
  }

 private:
  // What the host tells of the model. The walk goes by the mode alone; nothing depends on the answers.
  void readModel() const {
    ProMdldata data{};
    ProMdlDataGet(open_.model, &data);
    ProMdlType type = PRO_MDL_UNUSED;
    ProMdlTypeGet(open_.model, &type);
  }

  void walk(WalkContext& context) {
    ProSolidFeatVisit(context.model, visitComponent, filterVisited, &context);
    guard_.rethrow();
  }

  void writeComponent(ProFeature& feature, WalkContext& context) {
    if (context.path.table_num >= PRO_MAX_ASSEM_LEVEL) {
      return;
    }
    Component component = describe(feature, context);
    ProMdlType type = PRO_MDL_UNUSED;
    ProMdlTypeGet(component.model, &type);
    if (type != PRO_MDL_ASSEMBLY && type != PRO_MDL_PART) {
      return;
    }
    component.sceneName = modelName(component.model);
    component.sceneName.text += type == PRO_MDL_ASSEMBLY ? ".asm" : ".prt";
    if (type == PRO_MDL_ASSEMBLY) {
      writeSubassembly(component, context.siblings);
    }
    writeOccurrence(component, context.siblings);
  }

  Component describe(ProFeature& feature, const WalkContext& context) {
    Component component;
    ProAsmcompMdlGet(&feature, &component.model);
    ProIdTable identifiers{};
    std::copy_n(context.path.comp_id_tab, context.path.table_num, identifiers);
    identifiers[context.path.table_num] = feature.id;
    component.fullPath = makePath(context.path.owner, identifiers, context.path.table_num + 1);
    ProIdTable own{feature.id};
    component.ownPath = makePath(context.model, own, 1);
    component.transform = componentTransform(component.fullPath);
    component.placement = multiply(component.transform, context.placement);
    if (plugin_.isLive()) {
      ProMdlVerstampGet(component.model, component.stamp.receive());
    }
    component.selected = context.selected || isPicked(component.fullPath);
    component.included = open_.representation.includes(component.fullPath, context.included);
    return component;
  }

  bool isPicked(const ProAsmcomppath& path) const {
    return plugin_.updateInProgress && plugin_.settings.selectionMode == kManualSelection &&
           std::any_of(plugin_.selection.begin(), plugin_.selection.end(),
                       [&](const ProAsmcomppath& picked) { return sameIdentifiers(picked, path); });
  }

  void writeSubassembly(const Component& component, SiblingGroups& siblings) {
    builder_.openGroup(component.sceneName.text.c_str());
    builder_.scene()->flags(kAssemblyGroupFlags);
    WalkContext child(siblings.next(component.sceneName.text));
    siblings.written(component.sceneName.text);
    child.traversal = this;
    child.model = static_cast<ProSolid>(component.model);
    child.path = component.fullPath;
    invertSimilarity(component.transform, child.placement);
    child.selected = component.selected;
    child.included = component.included;
    walk(child);
    plugin_.writeComponentAnimation(component.fullPath, component.sceneName.text.c_str());
    builder_.scene()->transform(component.placement.data(), false);
    builder_.closeGroup();
  }

  void writeOccurrence(Component& component, SiblingGroups& siblings) {
    const std::string& name = component.sceneName.text;
    std::string group = plugin_.isLive() ? siblings.next(name) : std::string();
    const bool changed = !plugin_.isLive() || !plugin_.componentCache.holds(component.fullPath, component.stamp, group);
    const WrittenOccurrence written = writeKnownOrNew(component, changed);
    if (written.group) {
      siblings.written(name);
      if (plugin_.isLive() && (written.material || !changed)) {
        plugin_.componentCache.note(component.fullPath, std::move(component.stamp), std::move(group));
      }
    }
  }

  WrittenOccurrence writeKnownOrNew(const Component& component, bool changed) {
    const bool known = component.sceneName.exact && plugin_.isNameWritten(component.sceneName.text);
    if (known && component.included) {
      return plugin_.writeReference(component.model, component.ownPath, component.fullPath, component.sceneName.text,
                                    component.placement);
    }
    const bool wanted = component.included && (!plugin_.updateInProgress || changed || component.selected);
    const bool define = wanted && !known;
    if (define && plugin_.updateInProgress) {
      plugin_.changedItems.push_back(component.fullPath);
    }
    return plugin_.exportPartGeometry(static_cast<ProPart>(component.model), component.ownPath, component.fullPath,
                                      component.sceneName, component.placement, define);
  }

  RendaraPlugin& plugin_;
  SceneBuilder& builder_;
  const OpenModel& open_;
  VisitGuard guard_;
};

ProError visitComponent(ProFeature* feature, ProError, ProAppData context) {
  auto& walked = *static_cast<WalkContext*>(context);
  return walked.traversal->visit(*feature, walked);
}

ProError filterVisited(ProFeature* feature, ProAppData context) {
  return filterComponent(*feature, static_cast<WalkContext*>(context)->model);
}

}  // namespace

void traverseModel(RendaraPlugin& plugin, SceneBuilder& builder, const OpenModel& open) {
  plugin.writtenNames.clear();
  Traversal(plugin, builder, open).run();
}

}  // namespace rendara

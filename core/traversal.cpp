#include "core/traversal.h"

#include <algorithm>
#include <string>
#include <utility>

#include "core/cameras.h"
#include "core/component_filter.h"
#include "platform/creo_handles.h"
#include "scene/vntScene_api.h"

namespace rendara {
namespace {

constexpr unsigned kAssemblyGroupFlags = 0x8000;

class Traversal;

// One assembly while its components are visited.
struct WalkContext {
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
  bool changed = true;
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
    WalkContext top;
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
  ProError visit(ProFeature& feature, const WalkContext& context) {
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

  void writeComponent(ProFeature& feature, const WalkContext& context) {
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
      writeSubassembly(component);
    }
    writeOccurrence(component);
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
      component.changed = !plugin_.componentCache.holds(component.fullPath, component.stamp);
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

  void writeSubassembly(const Component& component) {
    builder_.openGroup(component.sceneName.text.c_str());
    builder_.scene()->flags(kAssemblyGroupFlags);
    WalkContext child;
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

  void writeOccurrence(Component& component) {
    const bool known = component.sceneName.exact && plugin_.isNameWritten(component.sceneName.text);
    const bool wanted = component.included && (!plugin_.updateInProgress || component.changed || component.selected);
    bool written = known && component.included;
    if (written) {
      plugin_.writeReference(component.model, component.ownPath, component.fullPath, component.sceneName.text,
                             component.placement);
    } else {
      const bool define = wanted && !known;
      if (define && plugin_.updateInProgress) {
        plugin_.changedItems.push_back(component.fullPath);
      }
      written = plugin_.exportPartGeometry(static_cast<ProPart>(component.model), component.ownPath, component.fullPath,
                                           component.sceneName, component.placement, define);
    }
    if (plugin_.isLive() && (written || !component.changed)) {
      plugin_.componentCache.note(component.fullPath, std::move(component.stamp));
    }
  }

  RendaraPlugin& plugin_;
  SceneBuilder& builder_;
  const OpenModel& open_;
  VisitGuard guard_;
};

ProError visitComponent(ProFeature* feature, ProError, ProAppData context) {
  const auto& walked = *static_cast<WalkContext*>(context);
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

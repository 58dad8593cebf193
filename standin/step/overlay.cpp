#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <set>

#include "standin/step/exact_part.h"
#include "standin/step/overlay_json.h"
#include "standin/step/overlay_target.h"
#include "standin/step/step_loader.h"

namespace standin {

namespace {

namespace fs = std::filesystem;

// Reads a file into a list of changes. They are made only when the whole file was found sound.
class Overlay {
 public:
  Overlay(Session& session, Model& top, fs::path folder)
      : session_(session), top_(top), names_(top), folder_(std::move(folder)) {}

  void read(const JsonNode& root) {
    root.onlyKeys({"version", "textureFolders", "components", "layers", "representations", "views", "currentView",
                   "appearances", "quilts", "exactSurfaces"});
    root.at("version").count(1, 1);
    if (const auto node = root.find("textureFolders")) readTextureFolders(*node);
    if (const auto node = root.find("layers")) readLayers(*node);
    if (const auto node = root.find("components")) readComponents(*node);
    if (const auto node = root.find("representations")) readRepresentations(*node);
    if (const auto node = root.find("views")) readViews(*node);
    if (const auto node = root.find("currentView")) readCurrentView(*node);
    if (const auto node = root.find("appearances")) readAppearances(*node);
    if (const auto node = root.find("quilts")) readQuilts(*node);
    if (const auto node = root.find("exactSurfaces")) readExactSurfaces(*node);
  }

  void apply() {
    for (const auto& change : changes_) change();
    for (const auto& model : session_.models()) {
      if (touched_.count(model.get()) != 0) session_.touch(*model);
    }
  }

 private:
  void change(Model& model, std::function<void()> what) {
    changes_.push_back(std::move(what));
    touched_.insert(&model);
  }

  void addTextureFolder(const fs::path& folder) {
    changes_.push_back([this, folder] {
      for (const fs::path& known : session_.textureFolders) {
        if (known == folder) return;
      }
      session_.textureFolders.push_back(folder);
    });
  }

  fs::path resolved(const std::string& text) const { return (folder_ / fs::path(text)).lexically_normal(); }

  void readTextureFolders(const JsonNode& list) {
    for (const JsonNode& node : list.elements()) {
      const fs::path folder = resolved(node.text());
      std::error_code error;
      if (!fs::is_directory(folder, error)) node.fail("there is no folder \"" + node.text() + "\"");
      addTextureFolder(folder);
    }
  }

  static Layer& layerNamed(Model& owner, const std::wstring& name) {
    for (Layer& layer : owner.layers) {
      if (layer.name == name) return layer;
    }
    return owner.addLayer(name);
  }

  void addToLayer(Model& owner, const std::wstring& name, ProLayerType type, int id) {
    change(owner, [&owner, name, type, id] {
      Layer& layer = layerNamed(owner, name);
      const std::pair<ProLayerType, int> item{type, id};
      for (const auto& known : layer.items) {
        if (known == item) return;
      }
      layer.items.push_back(item);
    });
    if (const auto status = layerStatus_.find(name); status != layerStatus_.end()) {
      const ProLayerDisplay display = status->second;
      change(owner, [&owner, name, display] { layerNamed(owner, name).display = display; });
    }
  }

  void readLayers(const JsonNode& list) {
    static const std::map<std::string, ProLayerDisplay> kStatus = {{"normal", PRO_LAYER_TYPE_NORMAL},
                                                                   {"displayed", PRO_LAYER_TYPE_DISPLAY},
                                                                   {"blanked", PRO_LAYER_TYPE_BLANK},
                                                                   {"hidden", PRO_LAYER_TYPE_HIDDEN}};
    for (const JsonNode& node : list.elements()) {
      node.onlyKeys({"name", "status", "items"});
      const std::wstring name = node.at("name").wide();
      if (layerStatus_.count(name) != 0) node.at("name").fail("there are two layers of this name");
      const std::optional<JsonNode> status = node.find("status");
      const auto found = kStatus.find(status ? status->text() : "normal");
      if (found == kStatus.end()) status->fail("must be normal, displayed, blanked or hidden");
      layerStatus_[name] = found->second;
      if (status) setStatusOfKnownLayers(name, found->second);
      const std::optional<JsonNode> items = node.find("items");
      if (!items) continue;
      for (const JsonNode& item : items->elements()) readLayerItem(item, name);
    }
  }

  // Layers that came with the STEP file.
  void setStatusOfKnownLayers(const std::wstring& name, ProLayerDisplay display) {
    for (Model* model : names_.models()) {
      for (Layer& layer : model->layers) {
        if (layer.name == name) change(*model, [&layer, display] { layer.display = display; });
      }
    }
  }

  void readLayerItem(const JsonNode& item, const std::wstring& layer) {
    item.onlyKeys({"component", "part", "quilt", "model", "feature"});
    if (const auto component = item.find("component")) {
      item.onlyKeys({"component"});
      for (const ComponentTarget& target : names_.components(component->text(), *component)) {
        addToLayer(*target.owner, layer, PRO_LAYER_FEAT, target.feature->id);
      }
    } else if (item.find("quilt")) {
      item.onlyKeys({"part", "quilt"});
      Model& part = names_.part(item.at("part"));
      addToLayer(part, layer, PRO_LAYER_QUILT, part.quilts[item.at("quilt").count(1, part.quilts.size()) - 1].id);
    } else {
      item.onlyKeys({"model", "feature"});
      Model& model = names_.model(item.at("model"));
      const std::size_t index = item.at("feature").count(1, model.features.size()) - 1;
      addToLayer(model, layer, PRO_LAYER_FEAT, model.features[index].id);
    }
  }

  void readComponents(const JsonNode& list) {
    for (const auto& [path, node] : list.members()) {
      node.onlyKeys({"hidden", "suppressed", "layer"});
      const std::optional<JsonNode> hidden = node.find("hidden");
      const std::optional<JsonNode> suppressed = node.find("suppressed");
      const std::optional<JsonNode> layer = node.find("layer");
      for (const ComponentTarget& target : names_.components(path, node)) {
        Feature* const feature = target.feature;
        if (hidden) change(*target.owner, [feature, on = hidden->flag()] { feature->hidden = on; });
        if (suppressed) {
          const ProFeatStatus status = suppressed->flag() ? PRO_FEAT_SUPPRESSED : PRO_FEAT_ACTIVE;
          change(*target.owner, [feature, status] { feature->status = status; });
        }
        if (layer) addToLayer(*target.owner, layer->wide(), PRO_LAYER_FEAT, feature->id);
      }
    }
  }

  static ProSimprepActionType actionFrom(const JsonNode& node) {
    static const std::map<std::string, ProSimprepActionType> kActions = {
        {"none", PRO_SIMPREP_NONE},         {"reverse", PRO_SIMPREP_REVERSE},       {"include", PRO_SIMPREP_INCLUDE},
        {"exclude", PRO_SIMPREP_EXCLUDE},   {"substitute", PRO_SIMPREP_SUBSTITUTE}, {"geometry", PRO_SIMPREP_GEOM},
        {"graphics", PRO_SIMPREP_GRAPHICS},
    };
    const auto found = kActions.find(node.text());
    if (found == kActions.end()) {
      node.fail("must be none, reverse, include, exclude, substitute, geometry or graphics");
    }
    return found->second;
  }

  void readRepresentations(const JsonNode& list) {
    if (top_.type != PRO_MDL_ASSEMBLY) list.fail("the model is no assembly");
    for (const JsonNode& node : list.elements()) {
      node.onlyKeys({"name", "master", "default", "items"});
      SimplifiedRep made;
      made.name = node.at("name").wide();
      if (const auto action = node.find("default")) made.defaultAction = actionFrom(*action);
      if (const auto items = node.find("items")) {
        for (const auto& [path, item] : items->members()) {
          for (ComponentTarget& target : names_.components(path, item)) {
            made.items.push_back({std::move(target.path), actionFrom(item)});
          }
        }
      }
      const std::optional<JsonNode> master = node.find("master");
      const bool isMaster = master && master->flag();
      changes_.push_back([this, made = std::move(made), isMaster] { setRepresentation(made, isMaster); });
    }
  }

  void setRepresentation(const SimplifiedRep& made, bool isMaster) {
    SimplifiedRep* representation = nullptr;
    for (SimplifiedRep& known : top_.representations) {
      if (known.name == made.name) representation = &known;
    }
    if (representation == nullptr) representation = &top_.addRepresentation(made.name);
    representation->defaultAction = made.defaultAction;
    representation->items = made.items;
    if (isMaster) representation->id = PRO_SIMPREP_MASTER_REP;
  }

  void readViews(const JsonNode& list) {
    for (const JsonNode& node : list.elements()) {
      node.onlyKeys({"name", "standard", "direction", "up", "matrix"});
      const View view{node.at("name").wide(), viewMatrix(node)};
      if (!views_.emplace(view.name, view.matrix).second) node.at("name").fail("there are two views of this name");
      changes_.push_back([this, view] {
        for (View& known : top_.views) {
          if (known.name == view.name) {
            known.matrix = view.matrix;
            return;
          }
        }
        top_.views.push_back(view);
      });
    }
  }

  void readCurrentView(const JsonNode& node) {
    std::optional<Matrix> matrix;
    if (node.isText()) {
      if (const auto found = views_.find(node.wide()); found != views_.end()) matrix = found->second;
      for (const View& known : top_.views) {
        if (!matrix && known.name == node.wide()) matrix = known.matrix;
      }
      if (!matrix) matrix = standardView(node.text());
      if (!matrix) node.fail("there is no view \"" + node.text() + "\"");
    } else {
      matrix = viewMatrix(node.onlyKeys({"standard", "direction", "up", "matrix"}));
    }
    changes_.push_back([this, matrix = *matrix] { top_.currentView = matrix; });
  }

  // What an appearance entry says, before it is put on something.
  struct Paint {
    std::optional<std::wstring> name;
    std::optional<Point> color;
    fs::path texture;

    // Keeps the colour that was there before when the entry gives none.
    Appearance over(const std::optional<Appearance>& before) const {
      Appearance appearance;
      if (color || before) appearance.color = color ? *color : before->color;
      appearance.texture = texture.filename().wstring();
      appearance.name = texture.empty() ? colorName(appearance.color) : texture.stem().wstring();
      if (name) appearance.name = *name;
      return appearance;
    }
  };

  Paint paintFrom(const JsonNode& node) {
    Paint paint;
    if (const auto name = node.find("name")) paint.name = name->wide();
    if (const auto color = node.find("color")) paint.color = colorFrom(*color);
    if (const auto texture = node.find("texture")) {
      paint.texture = resolved(texture->text());
      std::error_code error;
      if (!fs::is_regular_file(paint.texture, error)) texture->fail("there is no file \"" + texture->text() + "\"");
      addTextureFolder(paint.texture.parent_path());
    }
    if (!paint.color && paint.texture.empty()) node.fail("needs a \"color\" or a \"texture\"");
    return paint;
  }

  void put(Model& owner, std::optional<Appearance>& place, const Paint& paint) {
    change(owner, [&place, paint] { place = paint.over(place); });
  }

  void readAppearances(const JsonNode& list) {
    for (const JsonNode& node : list.elements()) {
      node.onlyKeys({"part", "surface", "surfaceColor", "component", "name", "color", "texture"});
      const Paint paint = paintFrom(node);
      if (const auto component = node.find("component")) {
        node.onlyKeys({"component", "name", "color", "texture"});
        for (const ComponentTarget& target : names_.components(component->text(), *component)) {
          put(*target.owner, target.feature->appearance, paint);
        }
        continue;
      }
      Model& part = names_.part(node.at("part"));
      const std::optional<JsonNode> surface = node.find("surface");
      const std::optional<JsonNode> surfaceColor = node.find("surfaceColor");
      if (surface && surfaceColor) node.fail("\"surface\" and \"surfaceColor\" exclude each other");
      if (surface) {
        put(part, part.surfaces[surface->count(1, part.surfaces.size()) - 1].appearance, paint);
      } else if (surfaceColor) {
        paintByColor(part, *surfaceColor, paint);
      } else {
        put(part, part.appearance, paint);
      }
    }
  }

  void paintByColor(Model& part, const JsonNode& surfaceColor, const Paint& paint) {
    const std::wstring wanted = colorName(colorFrom(surfaceColor));
    bool found = false;
    for (Surface& surface : part.surfaces) {
      if (!surface.appearance || colorName(surface.appearance->color) != wanted) continue;
      put(part, surface.appearance, paint);
      found = true;
    }
    if (!found) surfaceColor.fail("no surface of the part has this colour of its own");
  }

  void readQuilts(const JsonNode& list) {
    for (const JsonNode& node : list.elements()) {
      node.onlyKeys({"part", "quilt", "hidden", "backup"});
      Model& part = names_.part(node.at("part"));
      Quilt& quilt = part.quilts[node.at("quilt").count(1, part.quilts.size()) - 1];
      if (const auto hidden = node.find("hidden")) {
        change(part, [&quilt, on = hidden->flag()] { quilt.hidden = on; });
      }
      if (const auto backup = node.find("backup")) {
        change(part, [&quilt, on = backup->flag()] { quilt.backup = on; });
      }
    }
  }

  void readExactSurfaces(const JsonNode& list) {
    for (const JsonNode& node : list.elements()) {
      node.onlyKeys({"part", "foreignIds"});
      const JsonNode name = node.at("part");
      Model& part = names_.part(name);
      const std::size_t every = node.at("foreignIds").count(0, std::max<std::size_t>(part.surfaces.size(), 1));
      const auto converter = std::dynamic_pointer_cast<StepConverter>(part.converter);
      if (!converter) name.fail("the part has no exact surfaces");
      change(part, [converter, every] { converter->setForeignIds(every); });
    }
  }

  Session& session_;
  Model& top_;
  const OverlayNames names_;
  const fs::path folder_;
  std::map<std::wstring, ProLayerDisplay> layerStatus_;
  std::map<std::wstring, Matrix> views_;
  std::vector<std::function<void()>> changes_;
  std::set<Model*> touched_;
};

}  // namespace

std::string applyOverlay(Session& session, Model& top, const fs::path& file) {
  try {
    const JsonDocument document(file);
    Overlay overlay(session, top, fs::absolute(file).parent_path());
    overlay.read(document.root());
    overlay.apply();
  } catch (const std::exception& failure) {
    return failure.what();
  }
  return {};
}

}  // namespace standin

#include "standin/step/product_structure.h"

#include <TDF_LabelSequence.hxx>
#include <TopLoc_Location.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <gp_Trsf.hxx>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "standin/step/exact_part.h"
#include "standin/step/product_attributes.h"
#include "standin/step/step_mesher.h"

namespace standin {

namespace {

// The feature that owns all surfaces of an imported part. Any type will do that is not a component's.
constexpr ProFeattype kImportedGeometry = 1;

// Row vectors, and the translation in model units.
Matrix placementFrom(const TopLoc_Location& location, double unit) {
  const gp_Trsf transform = location.Transformation();
  Matrix matrix = kIdentity;
  for (int row = 1; row <= 3; ++row) {
    for (int column = 1; column <= 3; ++column) {
      matrix[static_cast<std::size_t>((column - 1) * 4 + row - 1)] = transform.Value(row, column);
    }
    matrix[static_cast<std::size_t>(12 + row - 1)] = transform.Value(row, 4) / unit;
  }
  return matrix;
}

TDF_LabelSequence componentsOf(const TDF_Label& assembly) {
  TDF_LabelSequence components;
  XCAFDoc_ShapeTool::GetComponents(assembly, components);
  return components;
}

// The label of the product that a component stands for; null when the reference leads nowhere.
TDF_Label productOf(const TDF_Label& component) {
  TDF_Label product;
  if (!XCAFDoc_ShapeTool::GetReferredShape(component, product)) return {};
  return product;
}

class Builder {
 public:
  Builder(Session& session, const StepFile& file) : session_(session), unit_(file.unit) {
    layers_ = layersByLabel(file.document->Main());
  }

  // False when an assembly holds itself, at whatever depth.
  bool acyclic(const TDF_Label& label) {
    const std::string entry = entryOf(label);
    if (open_.count(entry) != 0) return false;
    if (!XCAFDoc_ShapeTool::IsAssembly(label) || checked_.count(entry) != 0) return true;
    open_.insert(entry);
    for (const TDF_Label& component : componentsOf(label)) {
      const TDF_Label product = productOf(component);
      if (!product.IsNull() && !acyclic(product)) return false;
    }
    open_.erase(entry);
    checked_.insert(entry);
    return true;
  }

  Model& addModel(ProMdlType type, const std::wstring& name) {
    Model& model = session_.addModel(type, name);
    model.lengthUnit = unit_.name;
    return model;
  }

  // The model of a product, made at the first call. `owner` names it when it has no name of its own.
  Model& model(const TDF_Label& label, const std::wstring& owner) {
    const std::string entry = entryOf(label);
    if (const auto found = models_.find(entry); found != models_.end()) return *found->second;
    std::wstring name = nameOf(label);
    if (name.empty()) name = owner;
    const bool assembly = XCAFDoc_ShapeTool::IsAssembly(label);
    Model& made = addModel(assembly ? PRO_MDL_ASSEMBLY : PRO_MDL_PART, name);
    models_.emplace(entry, &made);
    made.appearance = appearanceOf(label);
    if (assembly) {
      for (const TDF_Label& component : componentsOf(label)) addComponent(made, component, name);
    } else {
      addGeometry(made, label);
    }
    return made;
  }

  // A component or, below a synthetic top assembly, a free shape that stands for itself.
  void addComponent(Model& owner, const TDF_Label& component, const std::wstring& ownerName) {
    const bool reference = XCAFDoc_ShapeTool::IsReference(component);
    const TDF_Label product = reference ? productOf(component) : component;
    if (product.IsNull()) return;
    const Matrix placement =
        reference ? placementFrom(XCAFDoc_ShapeTool::GetLocation(component), unit_.millimetres) : kIdentity;
    Feature& feature = owner.addComponent(model(product, ownerName), placement);
    if (reference) {
      feature.appearance = appearanceOf(component);
      feature.hidden = !isVisible(component);
      addToLayers(owner, feature.id, entryOf(component));
    }
    addToLayers(owner, feature.id, entryOf(product));
  }

 private:
  void addToLayers(Model& owner, int featureId, const std::string& entry) {
    const auto found = layers_.find(entry);
    if (found == layers_.end()) return;
    for (const StepLayer& stepLayer : found->second) {
      if (stepLayer.name.empty()) continue;
      Layer* layer = nullptr;
      for (Layer& known : owner.layers) {
        if (known.name == stepLayer.name) layer = &known;
      }
      if (layer == nullptr) layer = &owner.addLayer(stepLayer.name);
      layer->display = stepLayer.visible ? PRO_LAYER_TYPE_NORMAL : PRO_LAYER_TYPE_BLANK;
      layer->items.emplace_back(PRO_LAYER_FEAT, featureId);
    }
  }

  void addGeometry(Model& part, const TDF_Label& label) {
    auto shape = std::make_shared<const PartShape>(collectFaces(XCAFDoc_ShapeTool::GetShape(label), unit_.millimetres));
    if (shape->empty()) return;
    const std::vector<std::optional<Appearance>> appearances = faceAppearances(label, *shape);
    const int feature = part.addFeature(kImportedGeometry).id;
    for (std::size_t i = 0; i < shape->solidFaces; ++i) part.addSurface(feature).appearance = appearances[i];
    for (const std::vector<std::size_t>& faces : shape->quilts) {
      Quilt& quilt = part.addQuilt(feature);
      for (const std::size_t face : faces) part.addSurface(feature, &quilt).appearance = appearances[face];
    }
    part.outline = outlineOf(*shape);
    std::vector<int> surfaceIds;
    for (const Surface& surface : part.surfaces) surfaceIds.push_back(surface.id);
    part.converter = std::make_shared<StepConverter>(shape, std::move(surfaceIds));
    part.mesher = std::make_shared<StepMesher>(std::move(shape));
  }

  Session& session_;
  const LengthUnit unit_;
  std::map<std::string, std::vector<StepLayer>> layers_;
  std::map<std::string, Model*> models_;
  std::set<std::string> open_;
  std::set<std::string> checked_;
};

}  // namespace

LoadResult buildModels(Session& session, const StepFile& file, const std::wstring& fileName) {
  TDF_LabelSequence roots;
  XCAFDoc_DocumentTool::ShapeTool(file.document->Main())->GetFreeShapes(roots);
  if (roots.IsEmpty()) return {nullptr, "the STEP file holds no shapes"};
  Builder builder(session, file);
  for (const TDF_Label& root : roots) {
    const TDF_Label product = XCAFDoc_ShapeTool::IsReference(root) ? productOf(root) : root;
    if (!builder.acyclic(product)) return {nullptr, "an assembly of the STEP file holds itself"};
  }
  if (roots.Length() == 1 && !XCAFDoc_ShapeTool::IsReference(roots.First())) {
    return {&builder.model(roots.First(), fileName), {}};
  }
  Model& top = builder.addModel(PRO_MDL_ASSEMBLY, fileName);
  for (const TDF_Label& root : roots) builder.addComponent(top, root, fileName);
  return {&top, {}};
}

}  // namespace standin

// What the texts of an overlay file stand for: models, components by their paths, view matrices, colours.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "standin/cad/model.h"
#include "standin/step/overlay_json.h"

namespace standin {

// A component of the top model, however deep.
struct ComponentTarget {
  Model* owner = nullptr;  // the assembly that holds the component
  Feature* feature = nullptr;
  std::vector<int> path;  // component feature ids from the top model down
};

// Names within the tree below a top model. Letter case does not tell names apart. Failures are reported at `node`.
class OverlayNames {
 public:
  explicit OverlayNames(Model& top);

  const std::vector<Model*>& models() const { return models_; }
  Model& model(const JsonNode& node) const;  // the node's text names it; a part before an assembly
  Model& part(const JsonNode& node) const;
  // "unit_a/piston:2": names of models, ":n" for the n-th of several components with the name, ":*" for all of them;
  // "\" before a "/", ":" or "\" that belongs to a name.
  std::vector<ComponentTarget> components(const std::string& path, const JsonNode& node) const;

 private:
  Model* find(const std::wstring& name, ProMdlType type) const;

  Model& top_;
  std::vector<Model*> models_;
};

// A view as an object: "standard", or "direction" and "up", or "matrix".
Matrix viewMatrix(const JsonNode& node);
// "front", "back", "top", "bottom", "left", "right", "iso"; nothing for other names.
std::optional<Matrix> standardView(const std::string& name);

// "#rrggbb", or three numbers from 0 to 1.
Point colorFrom(const JsonNode& node);
std::wstring colorName(const Point& color);

}  // namespace standin

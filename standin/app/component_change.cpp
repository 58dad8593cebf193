#include "standin/app/component_change.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "standin/windows/code_page.h"

namespace standin {
namespace {

// The element of a placement where its translation begins.
constexpr std::size_t kTranslation = 12;

std::string statusText(const Feature& feature) {
  static const std::map<ProFeatStatus, const char*> kNames = {
      {PRO_FEAT_INVALID, "invalid"},
      {PRO_FEAT_ACTIVE, ""},
      {PRO_FEAT_INACTIVE, "inactive"},
      {PRO_FEAT_FAMTAB_SUPPRESSED, "suppressed by a family table"},
      {PRO_FEAT_SIMP_REP_SUPPRESSED, "suppressed by a representation"},
      {PRO_FEAT_PROG_SUPPRESSED, "suppressed by a program"},
      {PRO_FEAT_SUPPRESSED, "suppressed"},
      {PRO_FEAT_UNREGENERATED, "unregenerated"},
  };
  const auto found = kNames.find(feature.status);
  return found == kNames.end() ? "status unknown" : found->second;
}

const char* displayText(ProLayerDisplay display) {
  switch (display) {
    case PRO_LAYER_TYPE_NONE:
    case PRO_LAYER_TYPE_NORMAL:
      return "shown";
    case PRO_LAYER_TYPE_DISPLAY:
      return "isolated";
    case PRO_LAYER_TYPE_BLANK:
      return "blanked";
    case PRO_LAYER_TYPE_HIDDEN:
      return "hidden";
  }
  return "unknown";
}

}  // namespace

void moveComponent(Session& session, const Component& component, const std::array<double, 3>& shift) {
  for (std::size_t i = 0; i < shift.size(); ++i) component.feature->placement[kTranslation + i] += shift[i];
  session.touch(*component.owner);
}

void setComponentStatus(Session& session, const Component& component, ProFeatStatus status) {
  component.feature->status = status;
  session.touch(*component.owner);
}

void setComponentHidden(const Component& component, bool hidden) { component.feature->hidden = hidden; }

Appearance plainAppearance(const Point& colour) {
  std::array<long, 3> bytes = {};
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = std::lround(255 * colour[i]);
  Appearance appearance;
  appearance.color = colour;
  appearance.name = wideFromUtf8(fmt::format("colour_{:02x}{:02x}{:02x}", bytes[0], bytes[1], bytes[2]));
  return appearance;
}

void paintComponent(Session& session, const Component& component, const Appearance& appearance) {
  component.feature->appearance = appearance;
  session.touch(*component.owner);
}

void paintModel(Session& session, Model& model, const Appearance& appearance) {
  model.appearance = appearance;
  session.touch(model);
}

bool holdsFeature(const Layer& layer, const Feature& feature) {
  return std::find(layer.items.begin(), layer.items.end(), std::pair(PRO_LAYER_FEAT, feature.id)) != layer.items.end();
}

bool isShown(const Model& owner, const Feature& feature) {
  const bool blanked = std::any_of(owner.layers.begin(), owner.layers.end(), [&](const Layer& layer) {
    const bool off = layer.display == PRO_LAYER_TYPE_BLANK || layer.display == PRO_LAYER_TYPE_HIDDEN;
    return off && holdsFeature(layer, feature);
  });
  return feature.status == PRO_FEAT_ACTIVE && !feature.hidden && !blanked;
}

std::vector<std::string> componentRemarks(const Model& owner, const Feature& feature) {
  std::vector<std::string> parts;
  if (const std::string status = statusText(feature); !status.empty()) parts.push_back(status);
  if (feature.hidden) parts.emplace_back("hidden");
  for (const Layer& layer : owner.layers) {
    if (!holdsFeature(layer, feature)) continue;
    parts.push_back(fmt::format("layer {} {}", utf8FromWide(layer.name), displayText(layer.display)));
  }
  return parts;
}

}  // namespace standin

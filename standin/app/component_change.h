// What a user of the CAD system does to a component, with the version stamps that follow.
#pragma once

#include <array>

#include "standin/app/component_lookup.h"

namespace standin {

// In the length unit and the axes of the assembly that holds it.
void moveComponent(Session& session, const Component& component, const std::array<double, 3>& shift);

// PRO_FEAT_SUPPRESSED or, to resume it, PRO_FEAT_ACTIVE.
void setComponentStatus(Session& session, const Component& component, ProFeatStatus status);

// Only the display: the assembly counts as unchanged.
void setComponentHidden(const Component& component, bool hidden);

// An appearance of one colour, 0 to 1 each, named after it.
Appearance plainAppearance(const Point& colour);
void paintComponent(Session& session, const Component& component, const Appearance& appearance);
void paintModel(Session& session, Model& model, const Appearance& appearance);

bool holdsFeature(const Layer& layer, const Feature& feature);
// Neither suppressed nor hidden, and on no layer that is blanked or hidden.
bool isShown(const Model& owner, const Feature& feature);

// What is worth saying of a component besides its name: "suppressed", "hidden", "layer PIPES blanked". Empty for most.
std::vector<std::string> componentRemarks(const Model& owner, const Feature& feature);

}  // namespace standin

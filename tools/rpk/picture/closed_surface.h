// Tells a solid from a sheet.
#pragma once

#include <array>
#include <span>
#include <vector>

namespace rpk {

// The corners of a triangle in the order that has the outside counter-clockwise.
using Facet = std::array<std::array<float, 3>, 3>;

// Whether the facets together enclose a volume, but for gaps of less than about a hundredth. Faces of a solid are
// meshed one by one, so their borders need not share vertices, and single faces may be inside out: the answer is yes
// when either the facets' areas and moments add up as those of a closed surface do, or their borders meet. Coordinates
// are about -1 to 1.
bool enclosesVolume(std::span<const Facet> facets);

}  // namespace rpk

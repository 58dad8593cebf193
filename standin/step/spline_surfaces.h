// Open CASCADE's surfaces as B-splines.
#pragma once

#include <Geom_Surface.hxx>
#include <optional>

#include "standin/step/spline.h"

namespace standin {

// A surface over a box of its parameters, which stay what they are. Offsets and what else is no B-spline by nature are
// approximated. None when that fails, or when the result is not where the surface is.
std::optional<ExactSurface> surfaceSpline(const Handle(Geom_Surface) & surface, const ParameterBox& box);

}  // namespace standin

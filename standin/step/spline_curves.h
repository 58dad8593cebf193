// Open CASCADE's curves as B-splines.
#pragma once

#include <Geom2d_Curve.hxx>
#include <Geom_Curve.hxx>
#include <optional>

#include "standin/step/spline.h"

namespace standin {

// A curve in space over a range of its parameter, which stays what it is. Exact for lines, conics but hyperbolas, and
// B-splines, which go on beyond their ends; others are approximated. None when that fails.
std::optional<SplineCurve> spaceCurve(const Handle(Geom_Curve) & curve, const ParameterRange& range);

// A curve in a parameter plane. Its shape is kept, not always its parameter. None when it cannot be converted.
std::optional<PlaneCurve> planeCurve(const Handle(Geom2d_Curve) & curve, const ParameterRange& range);

// A range cut off where the curve ends that it is a range of.
ParameterRange withinCurve(const Handle(Geom_Curve) & curve, const ParameterRange& range);

}  // namespace standin

// Surfaces of revolution as B-splines whose parameters stay those of the original.
#pragma once

#include <Geom_BSplineSurface.hxx>
#include <Geom_Surface.hxx>
#include <TopoDS_Face.hxx>
#include <optional>

#include "standin/step/spline.h"

namespace standin {

// A cylinder, cone, sphere, torus or surface of revolution as a rational B-spline surface that spans a box of its
// parameters (which may cross a seam or exceed one turn; a sphere ends at its poles). Points at equal parameters agree
// to about 1e-8 of the radius, so curves in the parameter plane may be kept. None for other surfaces.
std::optional<ExactSurface> revolvedSpline(const Handle(Geom_Surface) & surface, const ParameterBox& box);

// The arc of the unit circle in x and y over a range of angles, in pieces short enough for the parameter to be the
// angle to 2e-9.
SplineCurve angularArc(const ParameterRange& angles);

// The face's surface of revolution over the face's own range of parameters, a little widened. Null for other surfaces.
Handle(Geom_BSplineSurface) revolvedBSpline(const TopoDS_Face& face);

// The same face, with its edges, on another surface with the same parameters; an edge gets its curve in the parameter
// plane of that surface beside those that it has.
TopoDS_Face faceOnSurface(const TopoDS_Face& face, const Handle(Geom_Surface) & surface);

}  // namespace standin

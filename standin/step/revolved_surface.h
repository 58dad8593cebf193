// Surfaces of revolution as B-splines whose parameters stay those of the original.
#pragma once

#include <Geom_BSplineSurface.hxx>
#include <TopoDS_Face.hxx>

namespace standin {

// The face's cylinder, cone, sphere, torus or surface of revolution as a rational B-spline surface that spans the
// face's own range of parameters (which may cross a seam or exceed one turn). Points at equal parameters agree to
// about 1e-8 of the radius, so curves in the parameter plane may be kept. Null for other surfaces.
Handle(Geom_BSplineSurface) revolvedBSpline(const TopoDS_Face& face);

// The same face, with its edges, on another surface with the same parameters; an edge gets its curve in the parameter
// plane of that surface beside those that it has.
TopoDS_Face faceOnSurface(const TopoDS_Face& face, const Handle(Geom_Surface) & surface);

}  // namespace standin

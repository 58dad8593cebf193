// From Open CASCADE's triangulation of a face to the mesh that the session hands out.
#pragma once

#include <TopoDS_Face.hxx>
#include <memory>

#include "standin/cad/model.h"

namespace standin {

// Appends the face's triangulation: lengths divided by `unit`, facets counter-clockwise seen from outside, the
// surface's own normal at every vertex (where it has none, the mean of the facets around it), parameters as they are
// on the surface. False when the face has no triangulation; then nothing was appended.
bool appendTriangulation(const TopoDS_Face& face, double unit, SurfaceMesh& mesh);

}  // namespace standin

// Triangles of a trimmed exact surface.
#pragma once

#include "tools/rpk/drawing.h"
#include "tools/rpk/exact/nurbs.h"

namespace rpk {

// Triangles with normals (Su x Sv) and the surface's parameters as texture coordinates. Chords stay near `chord`, in
// model units; a limit of steps keeps the work bounded for a chord that is much too fine. Vertices are not shared
// between triangles of different strips.
TriangleMesh exactMesh(const TrimmedSurface& trimmed, double chord);

}  // namespace rpk

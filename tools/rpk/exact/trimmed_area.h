// The area of a trimmed surface, from its control points and trims alone.
#pragma once

#include "tools/rpk/exact/nurbs.h"

namespace rpk {

// In square model units. By Green's theorem: with F(u, v) the integral of |Su x Sv| over u from the low end of the
// domain, the area is the sum over all loops of the integral of F dv along the loop, outer loops counter-clockwise and
// holes clockwise; both integrals by Gauss-Legendre in every knot span. Loops are taken as outer ones or holes by their
// flags.
double trimmedArea(const TrimmedSurface& trimmed);

}  // namespace rpk

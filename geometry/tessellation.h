// Surfaces to triangles: the chord height for a quality, and the attempts at one surface.
#pragma once

#include "platform/creo_handles.h"

namespace rendara {

// The length of the outline's diagonal in the part's length unit; 1.0 when it cannot be had, or is not a finite
// length above zero.
double partSize(ProPart part);

// A quality as it is used: brought to 0 ... 1; 0.2 when it is not a number.
double usableQuality(double quality);

// The largest allowed distance between a surface and its facets, in the unit of the size, for a usable quality:
// A - f B with A = 0.0005 size and A - B = 0.0000001 size, where f is 0 for a quality below 0.000001, else
// 1 + 0.2 ln(quality). So a quality of 1 gives 0.0000001 size, one of 0 gives 0.0005 size.
double chordHeight(double size, double quality);

// Tessellates the surfaces of one part with one quality.
class SurfaceTessellator {
 public:
  SurfaceTessellator(ProPart part, double quality);

  // The tessellation of a surface. When the attempt at the quality fails, finer chord heights are tried, then coarser
  // ones. Empty when all fail, or when the first attempt succeeds without a tessellation.
  Tessellation tessellate(ProSurface surface) const;

 private:
  Tessellation retry(ProSurface surface) const;

  ProPart part_;
  double size_;
  double quality_;
  TessellationInput input_;
};

}  // namespace rendara

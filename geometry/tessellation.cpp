#include "geometry/tessellation.h"

#include <algorithm>
#include <cmath>

namespace rendara {
namespace {

constexpr double kDefaultQuality = 0.2;
constexpr double kRetryStep = 0.1;

}  // namespace

double partSize(ProPart part) {
  Pro3dPnt outline[2] = {};
  if (ProSolidOutlineGet(part, outline) != PRO_TK_NO_ERROR) {
    return 1.0;
  }
  double squares = 0.0;
  for (int axis = 0; axis < 3; ++axis) {
    const double extent = outline[1][axis] - outline[0][axis];
    squares += extent * extent;
  }
  const double size = std::sqrt(squares);
  return std::isfinite(size) && size > 0.0 ? size : 1.0;
}

double usableQuality(double quality) { return std::isnan(quality) ? kDefaultQuality : std::clamp(quality, 0.0, 1.0); }

double chordHeight(double size, double quality) {
  const double coarsest = size * 0.01 * 0.05;
  const double range = coarsest - size * 0.01 * 0.00001;
  const double fineness = quality < 0.000001 ? 0.0 : 1.0 + 0.2 * std::log(quality);
  return coarsest - fineness * range;
}

SurfaceTessellator::SurfaceTessellator(ProPart part, double quality)
    : part_(part), size_(partSize(part)), quality_(usableQuality(quality)) {
  ProSurfacetessellationinputAlloc(input_.receive());
  ProSurfacetessellationinputChordheightSet(input_.get(), chordHeight(size_, quality_));
  ProSurfacetessellationinputUvprojectionSet(input_.get(), PRO_SRFTESS_DEFAULT_PROJECTION, nullptr);
}

Tessellation SurfaceTessellator::tessellate(ProSurface surface) const {
  Tessellation result;
  if (ProSurfaceTessellationGet(part_, surface, input_.get(), result.receive()) == PRO_TK_NO_ERROR) {
    return result;
  }
  return retry(surface);
}

Tessellation SurfaceTessellator::retry(ProSurface surface) const {
  TessellationInput input;
  ProSurfacetessellationinputAlloc(input.receive());
  Tessellation result;
  const auto attempt = [&](double quality) {
    ProSurfacetessellationinputChordheightSet(input.get(), chordHeight(size_, quality));
    if (ProSurfaceTessellationGet(part_, surface, input.get(), result.receive()) != PRO_TK_NO_ERROR) {
      result.reset();
    }
  };
  for (double quality = quality_ + kRetryStep; quality < 1.0 && !result; quality += kRetryStep) {
    attempt(quality);
  }
  for (double quality = quality_ - kRetryStep; quality >= 0.0 && !result; quality -= kRetryStep) {
    attempt(quality);
  }
  return result;
}

}  // namespace rendara

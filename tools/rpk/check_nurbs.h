// The check of one exact surface with its trimming curves.
#pragma once

#include <optional>

#include "tools/rpk/check_mesh.h"
#include "tools/rpk/check_reporter.h"

namespace rpk {

struct CheckedNumber {
  std::optional<double> value;
  Place place;
};

struct CheckedNurbs {
  CheckedNumber umin, umax, vmin, vmax, uorder, vorder;
  CheckedArray uknot, vknot, controlPoints;
  CheckedArray trimEdges, trimInside;
  CheckedArray edgeOrder, edgeKnotCount, edgeMin, edgeMax, edgeKnots, edgePoints;
  Place place;  // of the geometry block
};

// The widest gap between the end of one trimming curve and the beginning of the next, as a share of the diagonal of
// the surface's parameter box.
inline constexpr double kTrimGap = 1e-3;
// Bounds against the knots that they stand for, as a share of the range: bounds are text, knots are packed.
inline constexpr double kBoundError = 1e-9;

void checkNurbs(const CheckedNurbs& nurbs, CheckReporter& reporter);

}  // namespace rpk

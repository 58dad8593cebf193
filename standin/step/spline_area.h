// The area of a trimmed B-spline surface, from its poles and trims alone.
#pragma once

#include <vector>

#include "standin/step/spline.h"

namespace standin {

// A piece of a contour: a curve as it stands, or run through against its direction.
struct TrimPiece {
  const PlaneCurve* curve = nullptr;
  bool against = false;
};

// Signed: positive for contours that run counter-clockwise. To about 1e-4 of it.
double trimmedArea(const ExactSurface& surface, const std::vector<TrimPiece>& pieces);

// The area that the contours enclose in the parameter plane.
double parameterArea(const std::vector<TrimPiece>& pieces);

}  // namespace standin

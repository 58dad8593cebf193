// Placements and numbers in words.
#pragma once

#include <string>

#include "tools/rpk/scene_summary.h"

namespace rpk {

// Six significant digits; a number that is next to nothing is 0.
std::string numberText(double number);

// "(1, 2.5, 0)"
std::string vectorText(const Vector& vector);

// Apart from its translation, how a placement turns and stretches: "90 deg about z", "mirrored", "scaled by 2",
// "120 deg about (0.58 0.58 0.58), scaled by 2"; empty when it does neither.
std::string turnText(const Matrix& placement);

// Degrees between the orientations of two placements, 0 to 180; the lengths of their rows do not matter.
double degreesBetween(const Matrix& first, const Matrix& second);

Vector translationOf(const Matrix& placement);

// "#cc3319" of a colour whose parts go from 0 to 1.
std::string colourText(const Vector& colour);

}  // namespace rpk

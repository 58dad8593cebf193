// Measures of the sample compressor, in millimetres and degrees, and how its crank moves.
//
// Two cylinders lie opposite each other; the two throws stand at 180 degrees. So both pistons stand at the same height
// at every crank angle, and one sub-assembly serves both sides.
//
// Axes of the assembly: the crank turns about the line through (0, 0, kCrankHeight) along X, cylinder A points to +Y,
// cylinder B to -Y, Z is up, the underside of the base plate lies at z = 0. Cylinder B is cylinder A turned by 180
// degrees about Z. A cylinder unit's own axes: Z along the cylinder from the crank axis on, X along the crank axis.
#pragma once

#include <cmath>
#include <numbers>

namespace sample {

inline constexpr double kCrankRadius = 22;
inline constexpr double kRodLength = 85;  // between the axes of its two eyes
inline constexpr double kCrankHeight = 110;
inline constexpr double kThrowOffset = 18;  // of each throw and cylinder from the middle, along X: A +, B -
inline constexpr double kCrankAngle = 30;   // of throw A from +Y towards +Z, as the assembly is built

inline constexpr double kBoreRadius = 23;
inline constexpr double kWristPinRadius = 6;
inline constexpr double kCrankPinRadius = 8;
inline constexpr double kJournalRadius = 10;

inline constexpr double kBasePlateTop = 14;
inline constexpr double kWallHalfWidth = 50;   // of the crankcase along Y: where the barrels are bolted on
inline constexpr double kWallHalfLength = 58;  // of the crankcase along X
inline constexpr double kHeadFace = 128;       // along a cylinder unit's axis: where barrel and head meet
inline constexpr double kFlywheelPlace = -80;  // its middle on the crank axis
inline constexpr double kFlywheelRadius = 85;
inline constexpr double kTeeHeight = 205;  // middle of the tee above the base
inline constexpr double kTeeHalfSize = 12;

inline double radians(double degrees) { return degrees * std::numbers::pi / 180; }

// Distance of the wrist pin from the crank axis, for the angle between throw and cylinder.
inline double wristPinDistance(double crankAngle) {
  const double angle = radians(crankAngle);
  const double across = kCrankRadius * std::sin(angle);
  return kCrankRadius * std::cos(angle) + std::sqrt(kRodLength * kRodLength - across * across);
}

// Lean of the rod against its cylinder, in degrees: the direction from big to small eye, seen against the direction of
// the cylinder, turned the same way round as the crank.
inline double rodLean(double crankAngle) {
  return -std::asin(kCrankRadius * std::sin(radians(crankAngle)) / kRodLength) * 180 / std::numbers::pi;
}

}  // namespace sample

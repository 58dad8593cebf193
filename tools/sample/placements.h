// Vocabulary for placing components: a point p of a component stands at placement * p.
#pragma once

#include <gp_Ax1.hxx>
#include <gp_Dir.hxx>
#include <gp_Pnt.hxx>
#include <gp_Trsf.hxx>
#include <gp_Vec.hxx>

#include "tools/sample/mechanism.h"

namespace sample {

inline const gp_Dir kAlongX(1, 0, 0);
inline const gp_Dir kAlongZ(0, 0, 1);

inline gp_Trsf shift(double x, double y, double z) {
  gp_Trsf placement;
  placement.SetTranslation(gp_Vec(x, y, z));
  return placement;
}

// A turn about an axis through the origin, then a shift.
inline gp_Trsf turn(const gp_Dir& axis, double degrees, double x = 0, double y = 0, double z = 0) {
  gp_Trsf rotation;
  rotation.SetRotation(gp_Ax1(gp_Pnt(0, 0, 0), axis), radians(degrees));
  return shift(x, y, z) * rotation;
}

// Where the bodies of the mechanism stand in the assembly at an angle of the crank, in degrees.
struct MechanismPose {
  gp_Trsf crankDrive;
  gp_Trsf rodA;
  gp_Trsf rodB;
  gp_Trsf unitA;  // the cylinder units stand still
  gp_Trsf unitB;
  gp_Trsf piston;  // of piston and wrist pin in their unit, the same in both
};
MechanismPose mechanismPose(double crankAngle);

}  // namespace sample

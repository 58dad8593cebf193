// Points of the kernel as the session keeps them.
#pragma once

#include <gp_Pnt.hxx>
#include <gp_Pnt2d.hxx>
#include <gp_XYZ.hxx>

#include "standin/cad/model.h"

namespace standin {

inline Point pointFrom(const gp_XYZ& xyz) { return {xyz.X(), xyz.Y(), xyz.Z()}; }
inline Point pointFrom(const gp_Pnt& point) { return pointFrom(point.XYZ()); }
inline Point pointFrom(const gp_Pnt2d& point) { return {point.X(), point.Y(), 0.0}; }

}  // namespace standin

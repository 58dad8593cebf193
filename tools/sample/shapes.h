// Small vocabulary for building parts. Every function gives a new shape; lengths in millimetres.
#pragma once

#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>
#include <functional>
#include <gp_Dir.hxx>
#include <gp_Pnt.hxx>
#include <gp_Pnt2d.hxx>
#include <initializer_list>
#include <vector>

namespace sample {

inline const gp_Dir kX(1, 0, 0);
inline const gp_Dir kY(0, 1, 0);
inline const gp_Dir kZ(0, 0, 1);

TopoDS_Shape box(const gp_Pnt& low, const gp_Pnt& high);
TopoDS_Shape cylinder(const gp_Pnt& base, const gp_Dir& axis, double radius, double height);
// A regular hexagon's prism; `width` is the size of the spanner.
TopoDS_Shape hexagon(const gp_Pnt& base, const gp_Dir& axis, double width, double height);
// A full turn about an axis through `origin` of a closed outline of (radius, place along the axis).
TopoDS_Shape revolved(const gp_Pnt& origin, const gp_Dir& axis, const std::vector<gp_Pnt2d>& outline);
// A closed polygon in the plane through `origin` with normal `axis`, thickened by `height` along it.
TopoDS_Shape prism(const std::vector<gp_Pnt>& outline, const gp_Dir& axis, double height);

// Sums and differences; faces that continue each other become one.
TopoDS_Shape fused(const TopoDS_Shape& first, std::initializer_list<TopoDS_Shape> others);
TopoDS_Shape cut(const TopoDS_Shape& first, std::initializer_list<TopoDS_Shape> others);
TopoDS_Shape common(const TopoDS_Shape& first, const TopoDS_Shape& second);
TopoDS_Shape moved(const TopoDS_Shape& shape, double x, double y, double z);

gp_Pnt middle(const TopoDS_Edge& edge);
bool isStraight(const TopoDS_Edge& edge, const gp_Dir& along);
// Rounds the edges that `chosen` accepts; throws when none is.
TopoDS_Shape rounded(const TopoDS_Shape& shape, double radius, const std::function<bool(const TopoDS_Edge&)>& chosen);
TopoDS_Shape chamfered(const TopoDS_Shape& shape, double size, const std::function<bool(const TopoDS_Edge&)>& chosen);

// The one solid of a shape; throws unless there is exactly one, it is valid and its volume is positive.
TopoDS_Shape checkedSolid(const TopoDS_Shape& shape, const char* name);

}  // namespace sample

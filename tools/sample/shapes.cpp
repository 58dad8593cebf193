#include "tools/sample/shapes.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAlgoAPI_Common.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepCheck_Analyzer.hxx>
#include <BRepFilletAPI_MakeChamfer.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepGProp.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <GProp_GProps.hxx>
#include <ShapeUpgrade_UnifySameDomain.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopTools_ListOfShape.hxx>
#include <TopoDS.hxx>
#include <cmath>
#include <gp_Ax2.hxx>
#include <numbers>
#include <stdexcept>
#include <string>

namespace sample {
namespace {

TopoDS_Shape unified(const TopoDS_Shape& shape) {
  ShapeUpgrade_UnifySameDomain unify(shape, true, true, false);
  unify.Build();
  return unify.Shape();
}

template <typename Operation>
TopoDS_Shape combined(const TopoDS_Shape& first, std::initializer_list<TopoDS_Shape> others) {
  TopTools_ListOfShape arguments;
  arguments.Append(first);
  TopTools_ListOfShape tools;
  for (const TopoDS_Shape& other : others) {
    tools.Append(other);
  }
  Operation operation;
  operation.SetArguments(arguments);
  operation.SetTools(tools);
  operation.Build();
  if (!operation.IsDone()) {
    throw std::runtime_error("two shapes cannot be combined");
  }
  return unified(operation.Shape());
}

TopoDS_Face polygonFace(const std::vector<gp_Pnt>& outline) {
  BRepBuilderAPI_MakePolygon polygon;
  for (const gp_Pnt& point : outline) {
    polygon.Add(point);
  }
  polygon.Close();
  return BRepBuilderAPI_MakeFace(polygon.Wire(), true).Face();
}

template <typename Blend>
TopoDS_Shape blended(const TopoDS_Shape& shape, double size, const std::function<bool(const TopoDS_Edge&)>& chosen) {
  TopTools_IndexedMapOfShape edges;
  TopExp::MapShapes(shape, TopAbs_EDGE, edges);
  Blend blend(shape);
  for (int i = 1; i <= edges.Extent(); ++i) {
    const TopoDS_Edge& edge = TopoDS::Edge(edges(i));
    if (chosen(edge)) {
      blend.Add(size, edge);
    }
  }
  if (blend.NbContours() == 0) {
    throw std::runtime_error("no edge to blend");
  }
  return blend.Shape();
}

}  // namespace

TopoDS_Shape box(const gp_Pnt& low, const gp_Pnt& high) { return BRepPrimAPI_MakeBox(low, high).Shape(); }

TopoDS_Shape cylinder(const gp_Pnt& base, const gp_Dir& axis, double radius, double height) {
  return BRepPrimAPI_MakeCylinder(gp_Ax2(base, axis), radius, height).Shape();
}

TopoDS_Shape hexagon(const gp_Pnt& base, const gp_Dir& axis, double width, double height) {
  const gp_Ax2 axes(base, axis);
  const double radius = width / std::sqrt(3.0);
  std::vector<gp_Pnt> outline;
  for (int i = 0; i < 6; ++i) {
    const double angle = i * std::numbers::pi / 3;
    outline.push_back(base.Translated(gp_Vec(axes.XDirection()) * (radius * std::cos(angle)) +
                                      gp_Vec(axes.YDirection()) * (radius * std::sin(angle))));
  }
  return prism(outline, axis, height);
}

TopoDS_Shape revolved(const gp_Pnt& origin, const gp_Dir& axis, const std::vector<gp_Pnt2d>& outline) {
  const gp_Ax2 axes(origin, axis);
  std::vector<gp_Pnt> points;
  points.reserve(outline.size());
  for (const gp_Pnt2d& point : outline) {
    points.push_back(origin.Translated(gp_Vec(axes.XDirection()) * point.X() + gp_Vec(axis) * point.Y()));
  }
  return BRepPrimAPI_MakeRevol(polygonFace(points), gp_Ax1(origin, axis)).Shape();
}

TopoDS_Shape prism(const std::vector<gp_Pnt>& outline, const gp_Dir& axis, double height) {
  return BRepPrimAPI_MakePrism(polygonFace(outline), gp_Vec(axis) * height).Shape();
}

TopoDS_Shape fused(const TopoDS_Shape& first, std::initializer_list<TopoDS_Shape> others) {
  return combined<BRepAlgoAPI_Fuse>(first, others);
}

TopoDS_Shape cut(const TopoDS_Shape& first, std::initializer_list<TopoDS_Shape> others) {
  return combined<BRepAlgoAPI_Cut>(first, others);
}

TopoDS_Shape common(const TopoDS_Shape& first, const TopoDS_Shape& second) {
  return combined<BRepAlgoAPI_Common>(first, {second});
}

TopoDS_Shape moved(const TopoDS_Shape& shape, double x, double y, double z) {
  gp_Trsf move;
  move.SetTranslation(gp_Vec(x, y, z));
  return BRepBuilderAPI_Transform(shape, move, true).Shape();
}

gp_Pnt middle(const TopoDS_Edge& edge) {
  const BRepAdaptor_Curve curve(edge);
  return curve.Value((curve.FirstParameter() + curve.LastParameter()) / 2);
}

bool isStraight(const TopoDS_Edge& edge, const gp_Dir& along) {
  const BRepAdaptor_Curve curve(edge);
  return curve.GetType() == GeomAbs_Line && curve.Line().Direction().IsParallel(along, 1e-6);
}

TopoDS_Shape rounded(const TopoDS_Shape& shape, double radius, const std::function<bool(const TopoDS_Edge&)>& chosen) {
  return blended<BRepFilletAPI_MakeFillet>(shape, radius, chosen);
}

TopoDS_Shape chamfered(const TopoDS_Shape& shape, double size, const std::function<bool(const TopoDS_Edge&)>& chosen) {
  return blended<BRepFilletAPI_MakeChamfer>(shape, size, chosen);
}

TopoDS_Shape checkedSolid(const TopoDS_Shape& shape, const char* name) {
  TopTools_IndexedMapOfShape solids;
  TopExp::MapShapes(shape, TopAbs_SOLID, solids);
  if (solids.Extent() != 1) {
    throw std::runtime_error(std::string(name) + " consists of " + std::to_string(solids.Extent()) + " solids");
  }
  const TopoDS_Shape& solid = solids(1);
  if (!BRepCheck_Analyzer(solid).IsValid()) {
    throw std::runtime_error(std::string(name) + " is no valid solid");
  }
  GProp_GProps properties;
  BRepGProp::VolumeProperties(solid, properties);
  if (properties.Mass() <= 0) {
    throw std::runtime_error(std::string(name) + " is inside out");
  }
  return solid;
}

}  // namespace sample

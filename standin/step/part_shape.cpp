#include "standin/step/part_shape.h"

#include <BRepAdaptor_Surface.hxx>
#include <BRepBndLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <IMeshTools_Parameters.hxx>
#include <Poly_Triangulation.hxx>
#include <TopAbs_ShapeEnum.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_MapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Vertex.hxx>
#include <algorithm>
#include <cmath>

namespace standin {

namespace {

// Of the diagonal of the hull.
constexpr double kOutlineTolerance = 0.001;
// Radians between neighbouring facets: smaller costs several times the triangles, much larger exceeds the chord.
constexpr double kAngle = 0.5;
// Millimetres; the kernel refuses anything below its own confusion of points.
constexpr double kFinestDeflection = 1e-6;

// Adds what is below `shape` and not seen yet; gives the indices of the faces that were added.
std::vector<std::size_t> addFaces(const TopoDS_Shape& shape, TopTools_MapOfShape& seen, PartShape& part) {
  std::vector<std::size_t> added;
  for (TopExp_Explorer explorer(shape, TopAbs_FACE); explorer.More(); explorer.Next()) {
    if (!seen.Add(explorer.Current())) continue;
    added.push_back(part.faces.size());
    part.faces.push_back(TopoDS::Face(explorer.Current()));
  }
  return added;
}

bool holds(const Bnd_Box& outer, const Bnd_Box& inner) {
  if (outer.IsVoid() || inner.IsVoid()) return inner.IsVoid();
  const gp_XYZ below = inner.CornerMin().XYZ() - outer.CornerMin().XYZ();
  const gp_XYZ above = outer.CornerMax().XYZ() - inner.CornerMax().XYZ();
  return std::min({below.X(), below.Y(), below.Z(), above.X(), above.Y(), above.Z()}) >= 0.0;
}

Bnd_Box hullOf(const TopoDS_Shape& shape) {
  Bnd_Box hull;
  BRepBndLib::Add(shape, hull, false);
  hull.SetGap(0.0);
  return hull;
}

// The extremes of a free-form face or a torus cost as much as its mesh, or more.
bool hasCheapBox(const TopoDS_Face& face) {
  const GeomAbs_SurfaceType type = BRepAdaptor_Surface(face, false).GetType();
  return type == GeomAbs_Plane || type == GeomAbs_Cylinder || type == GeomAbs_Cone;
}

void growExactly(const TopoDS_Face& face, Bnd_Box& box) {
  Bnd_Box exact;
  BRepBndLib::AddOptimal(face, exact, false, false);
  exact.SetGap(0.0);
  box.Add(exact);
}

// Grows the box to the nodes of a mesh, which lie on the faces; by their exact boxes where there is no mesh.
void growByMesh(const std::vector<TopoDS_Face>& faces, double deflection, Bnd_Box& box) {
  const TopoDS_Shape shape = compoundOf(faces);
  triangulate(shape, deflection);
  for (const TopoDS_Face& face : faces) {
    TopLoc_Location location;
    const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(face, location);
    if (mesh.IsNull()) {
      growExactly(face, box);
      continue;
    }
    for (int i = 1; i <= mesh->NbNodes(); ++i) box.Add(mesh->Node(i).Transformed(location.Transformation()));
  }
  BRepTools::Clean(shape);
}

}  // namespace

PartShape collectFaces(const TopoDS_Shape& shape, double unit) {
  PartShape part;
  part.unit = unit;
  if (shape.IsNull()) return part;
  TopTools_MapOfShape seen;
  for (TopExp_Explorer solids(shape, TopAbs_SOLID); solids.More(); solids.Next()) {
    if (!addFaces(solids.Current(), seen, part).empty()) part.solids.push_back(solids.Current());
  }
  part.solidFaces = part.faces.size();
  const auto addQuilt = [&](const TopoDS_Shape& sheet) {
    std::vector<std::size_t> added = addFaces(sheet, seen, part);
    if (!added.empty()) part.quilts.push_back(std::move(added));
  };
  for (TopExp_Explorer shells(shape, TopAbs_SHELL, TopAbs_SOLID); shells.More(); shells.Next()) {
    addQuilt(shells.Current());
  }
  for (TopExp_Explorer loose(shape, TopAbs_FACE, TopAbs_SHELL); loose.More(); loose.Next()) addQuilt(loose.Current());
  return part;
}

void triangulate(const TopoDS_Shape& shape, double deflection) {
  BRepTools::Clean(shape);
  IMeshTools_Parameters parameters;
  parameters.Deflection = std::max(deflection, kFinestDeflection);
  parameters.Angle = kAngle;
  parameters.Relative = false;
  parameters.InParallel = true;
  const BRepMesh_IncrementalMesh run(shape, parameters);
}

TopoDS_Shape compoundOf(const std::vector<TopoDS_Face>& faces) {
  BRep_Builder builder;
  TopoDS_Compound compound;
  builder.MakeCompound(compound);
  for (const TopoDS_Face& face : faces) builder.Add(compound, face);
  return compound;
}

std::optional<std::array<Point, 2>> outlineOf(const PartShape& part) {
  Bnd_Box box;
  for (const TopoDS_Face& face : part.faces) {
    for (TopExp_Explorer vertices(face, TopAbs_VERTEX); vertices.More(); vertices.Next()) {
      box.Add(BRep_Tool::Pnt(TopoDS::Vertex(vertices.Current())));
    }
  }
  std::vector<TopoDS_Face> costly;
  for (const TopoDS_Face& face : part.faces) {
    if (holds(box, hullOf(face))) continue;
    if (hasCheapBox(face)) {
      growExactly(face, box);
    } else {
      costly.push_back(face);
    }
  }
  costly.erase(std::remove_if(costly.begin(), costly.end(), [&](const auto& face) { return holds(box, hullOf(face)); }),
               costly.end());
  if (!costly.empty()) {
    Bnd_Box hull = hullOf(compoundOf(costly));
    hull.Add(box);
    growByMesh(costly, kOutlineTolerance * std::sqrt(hull.SquareExtent()), box);
  }
  if (box.IsVoid() || box.IsOpen()) return std::nullopt;
  const gp_Pnt low = box.CornerMin();
  const gp_Pnt high = box.CornerMax();
  return std::array<Point, 2>{Point{low.X() / part.unit, low.Y() / part.unit, low.Z() / part.unit},
                              Point{high.X() / part.unit, high.Y() / part.unit, high.Z() / part.unit}};
}

}  // namespace standin

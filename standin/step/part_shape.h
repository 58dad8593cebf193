// The geometry behind the surfaces of one part, as Open CASCADE has it: in millimetres.
#pragma once

#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>
#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "standin/cad/model.h"

namespace standin {

struct PartShape {
  std::vector<TopoDS_Face> faces;  // in the order of Model::surfaces
  std::size_t solidFaces = 0;      // the first so many of the faces bound solids
  // The faces of each quilt, as indices in faces: a shell's faces, or one loose face.
  std::vector<std::vector<std::size_t>> quilts;
  std::vector<TopoDS_Shape> solids;
  double unit = 1.0;  // millimetres per model unit

  bool empty() const { return faces.empty(); }
};

// Sorts a shape's faces: those of solids first, then those of shells outside solids, then loose ones. A face that is
// met twice at the same place counts once, for what it was met in first. Curves and points are left out.
PartShape collectFaces(const TopoDS_Shape& shape, double unit);

// All faces in one compound, in their order.
TopoDS_Shape compoundOf(const std::vector<TopoDS_Face>& faces);

// Meshes the shape, after dropping what meshes it had, with an absolute deflection in millimetres (brought to the
// kernel's least where it is below). Faces are meshed in parallel once their edges are, so equal calls give equal
// meshes.
void triangulate(const TopoDS_Shape& shape, double deflection);

// The box of the faces in model units; none when there are no faces. Exact where flat, cylindrical and conical faces
// make it, else short of the exact one by a thousandth of the diagonal at most.
std::optional<std::array<Point, 2>> outlineOf(const PartShape& part);

}  // namespace standin

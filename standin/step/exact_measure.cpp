#include "standin/step/exact_measure.h"

#include <BRepBndLib.hxx>
#include <BRepGProp.hxx>
#include <Bnd_Box.hxx>
#include <GProp_GProps.hxx>
#include <TopLoc_Location.hxx>
#include <gp_Trsf.hxx>

#include "standin/step/part_shape.h"
#include "standin/step/step_mesher.h"

namespace standin {

namespace {

constexpr double kRelativeTolerance = 1e-5;

const PartShape* shapeOf(const Model& model) {
  const auto* mesher = dynamic_cast<const StepMesher*>(model.mesher.get());
  return mesher == nullptr ? nullptr : &mesher->shape();
}

gp_Trsf transformFrom(const Matrix& matrix, double unit) {
  gp_Trsf transform;
  transform.SetValues(matrix[0], matrix[4], matrix[8], matrix[12] * unit,  //
                      matrix[1], matrix[5], matrix[9], matrix[13] * unit,  //
                      matrix[2], matrix[6], matrix[10], matrix[14] * unit);
  return transform;
}

// In millimetres.
void addBox(const Model& model, const Matrix& placement, double& unit, Bnd_Box& box) {
  if (const PartShape* shape = shapeOf(model)) {
    unit = shape->unit;
    TopoDS_Shape faces = compoundOf(shape->faces);
    faces.Location(TopLoc_Location(transformFrom(placement, unit)), false);
    Bnd_Box own;
    BRepBndLib::AddOptimal(faces, own, false, false);
    own.SetGap(0.0);
    box.Add(own);
  }
  for (const Feature& feature : model.features) {
    if (feature.component != nullptr) {
      addBox(*feature.component, multiply(feature.placement, placement), unit, box);
    }
  }
}

}  // namespace

std::optional<PartMeasure> measurePart(const Model& part) {
  const PartShape* shape = shapeOf(part);
  if (shape == nullptr) return std::nullopt;
  PartMeasure measure;
  for (const TopoDS_Face& face : shape->faces) {
    GProp_GProps properties;
    BRepGProp::SurfaceProperties(face, properties, kRelativeTolerance);
    measure.surfaceAreas.push_back(properties.Mass() / (shape->unit * shape->unit));
    measure.area += measure.surfaceAreas.back();
  }
  for (const TopoDS_Shape& solid : shape->solids) {
    GProp_GProps properties;
    BRepGProp::VolumeProperties(solid, properties, kRelativeTolerance);
    measure.volume += properties.Mass() / (shape->unit * shape->unit * shape->unit);
  }
  measure.solids = shape->solids.size();
  return measure;
}

std::optional<std::array<Point, 2>> measureBox(const Model& model) {
  Bnd_Box box;
  double unit = 1.0;
  addBox(model, kIdentity, unit, box);
  if (box.IsVoid() || box.IsOpen()) return std::nullopt;
  const gp_Pnt low = box.CornerMin();
  const gp_Pnt high = box.CornerMax();
  return std::array<Point, 2>{Point{low.X() / unit, low.Y() / unit, low.Z() / unit},
                              Point{high.X() / unit, high.Y() / unit, high.Z() / unit}};
}

}  // namespace standin

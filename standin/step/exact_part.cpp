#include "standin/step/exact_part.h"

#include <BRepGProp.hxx>
#include <BRep_Tool.hxx>
#include <GProp_GProps.hxx>
#include <Geom_Surface.hxx>
#include <Standard_Failure.hxx>
#include <TopLoc_Location.hxx>
#include <TopTools_DataMapOfShapeInteger.hxx>
#include <algorithm>
#include <cmath>
#include <exception>
#include <gp_Trsf.hxx>
#include <stdexcept>
#include <string>
#include <utility>

#include "standin/step/face_loops.h"
#include "standin/step/part_shape.h"
#include "standin/step/spline_area.h"
#include "standin/step/spline_surfaces.h"

namespace standin {

namespace {

// Of a surface's range of parameters: ends of curves that are no farther apart are moved together.
constexpr double kMovedEnds = 1e-6;
// Shares of a face's area: what straight pieces in the gaps of its contours may add, and what a contour with gaps may
// be off by before it says nothing.
constexpr double kBridgedArea = 5e-4;
constexpr double kUsableArea = 0.05;
constexpr double kAreaTolerance = 1e-5;

struct ConvertedFace {
  ExactSurface surface;
  FaceLoops loops;
};

// From the surface's own place, in millimetres, to the part's, in model units.
void place(ExactSurface& surface, const TopLoc_Location& location, double unit) {
  const gp_Trsf transform = location.Transformation();
  for (Point& pole : surface.poles) {
    gp_XYZ xyz(pole[0], pole[1], pole[2]);
    transform.Transforms(xyz);
    pole = {xyz.X() / unit, xyz.Y() / unit, xyz.Z() / unit};
    for (const double coordinate : pole) {
      if (!std::isfinite(coordinate)) throw std::runtime_error("the surface is not finite");
    }
  }
}

// Closes the contours: with straight pieces, unless these change the area by more than they may and moved ends do
// better.
void closeLoops(const TopoDS_Face& face, double unit, ConvertedFace& converted, const ParameterBox& box) {
  if (widestGap(converted.loops, box) <= kMovedEnds) return joinEnds(converted.loops, box, 0.0);
  FaceLoops bridged = converted.loops;
  bridgeGaps(bridged, box, kMovedEnds);
  joinEnds(bridged, box, 0.0);
  GProp_GProps properties;
  BRepGProp::SurfaceProperties(face.Oriented(TopAbs_FORWARD), properties, kAreaTolerance);
  const double exact = std::abs(properties.Mass()) / (unit * unit);
  const auto error = [&](const FaceLoops& loops) {
    return std::abs(trimmedArea(converted.surface, trimsOf(loops)) - exact);
  };
  double best = error(bridged);
  if (best > kBridgedArea * exact) {
    FaceLoops moved = converted.loops;
    joinEnds(moved, box, 0.0);
    if (const double other = error(moved); other < best) {
      best = other;
      bridged = std::move(moved);
    }
  }
  if (!(best <= kUsableArea * exact)) throw std::runtime_error("the contours do not close");
  converted.loops = std::move(bridged);
}

ConvertedFace convertFace(const TopoDS_Face& face, double unit) {
  TopLoc_Location location;
  const Handle(Geom_Surface) surface = face.IsNull() ? Handle(Geom_Surface)() : BRep_Tool::Surface(face, location);
  if (surface.IsNull()) throw std::runtime_error("the face has no surface");
  ConvertedFace converted;
  converted.loops = faceLoops(face);
  const ParameterBox box = boxOf(converted.loops);
  std::optional<ExactSurface> spline = surfaceSpline(surface, box);
  if (!spline) throw std::runtime_error("the surface cannot be converted");
  converted.surface = std::move(*spline);
  place(converted.surface, location, unit);
  closeLoops(face, unit, converted, box);
  return converted;
}

// Files the curves of the faces' loops under their edges.
class EdgeList {
 public:
  std::vector<ExactContour> add(FaceLoops& loops, int surfaceId) {
    std::vector<ExactContour> contours;
    for (FaceLoop& loop : loops) {
      ExactContour& contour = contours.emplace_back();
      contour.traversal = loop.hole ? PRO_CONTOUR_TRAV_INTERNAL : PRO_CONTOUR_TRAV_EXTERNAL;
      for (LoopPiece& piece : loop.pieces) contour.edgeIds.push_back(add(piece, surfaceId));
    }
    return contours;
  }

  std::vector<ExactEdge> take() { return std::move(edges_); }

 private:
  int add(LoopPiece& piece, int surfaceId) {
    ExactEdge::Side side{surfaceId, piece.against ? 1 : -1, std::move(piece.curve)};
    if (!piece.edge.IsNull()) {
      // The last record of the edge has room for a second side, or the edge gets a further record.
      if (int* const index = latest_.ChangeSeek(piece.edge)) {
        ExactEdge& edge = edges_[static_cast<std::size_t>(*index)];
        if (edge.sides[1].surfaceId == PRO_VALUE_UNUSED) {
          edge.sides[1] = std::move(side);
          return edge.id;
        }
        *index = static_cast<int>(edges_.size());
      } else {
        latest_.Bind(piece.edge, static_cast<int>(edges_.size()));
      }
    }
    ExactEdge& edge = edges_.emplace_back();
    edge.id = static_cast<int>(edges_.size());
    edge.sides[0] = std::move(side);
    return edge.id;
  }

  std::vector<ExactEdge> edges_;
  TopTools_DataMapOfShapeInteger latest_;  // index of the last record of an edge
};

class PartConversion {
 public:
  PartConversion(const PartShape& shape, const std::vector<int>& ids, std::size_t foreignIds)
      : shape_(shape), ids_(ids), foreignIds_(foreignIds) {
    for (const int id : ids) foreignId_ = std::max(foreignId_, id);
  }

  ExactPart run() {
    for (std::size_t i = 0; i < shape_.solidFaces; ++i) add(i, part_.solid);
    for (const std::vector<std::size_t>& faces : shape_.quilts) {
      std::vector<ExactSurface>& quilt = part_.quilts.emplace_back();
      for (const std::size_t face : faces) add(face, quilt);
    }
    part_.edges = edges_.take();
    return std::move(part_);
  }

 private:
  void add(std::size_t index, std::vector<ExactSurface>& list) {
    std::string failure;
    try {
      ConvertedFace converted = convertFace(shape_.faces[index], shape_.unit);
      const int id = ids_.at(index);
      converted.surface.index = index;
      converted.surface.recordId = id;
      if (foreignIds_ != 0 && ++records_ % foreignIds_ == 0) converted.surface.recordId = ++foreignId_;
      converted.surface.contours = edges_.add(converted.loops, id);
      list.push_back(std::move(converted.surface));
      return;
    } catch (const Standard_Failure& thrown) {
      failure = thrown.GetMessageString();
    } catch (const std::exception& thrown) {
      failure = thrown.what();
    }
    part_.failures.emplace_back(index, failure.empty() ? "the conversion failed" : failure);
  }

  const PartShape& shape_;
  const std::vector<int>& ids_;
  const std::size_t foreignIds_;
  std::size_t records_ = 0;
  int foreignId_ = 0;
  EdgeList edges_;
  ExactPart part_;
};

}  // namespace

StepConverter::StepConverter(std::shared_ptr<const PartShape> shape, std::vector<int> surfaceIds)
    : shape_(std::move(shape)), surfaceIds_(std::move(surfaceIds)) {}

std::shared_ptr<const ExactPart> StepConverter::convert() {
  if (!kept_) kept_ = std::make_shared<const ExactPart>(PartConversion(*shape_, surfaceIds_, foreignIds_).run());
  return kept_;
}

void StepConverter::forget() { kept_.reset(); }

void StepConverter::setForeignIds(std::size_t every) {
  foreignIds_ = every;
  forget();
}

}  // namespace standin

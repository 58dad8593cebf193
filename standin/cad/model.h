// What the stand-in CAD session holds: parts and assemblies with everything that a CAD system knows of them.
//
// Lengths are in the model's own unit (Model::lengthUnit). Matrices are row-major with row vectors: a point times a
// matrix, rows 0 to 2 the axes, elements 12 to 14 the translation. Handles that the session gives out are addresses
// of these records, so they live in deques and are never moved.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/creo_toolkit.h"

namespace standin {

using Point = std::array<double, 3>;
using Matrix = std::array<double, 16>;
inline constexpr Matrix kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

struct Model;

struct Appearance {
  std::wstring name;
  Point color = {0.6, 0.6, 0.6};  // red, green, blue, 0 to 1, as the file gives them (not linear light)
  std::wstring texture;           // file name; looked up in the session's texture folders
};

// The tessellation of one surface in the part's coordinates. Normals and parameters are one per vertex or absent.
// Facet corners run counter-clockwise when seen from outside; indices are 0-based.
struct SurfaceMesh {
  std::vector<Point> vertices;
  std::vector<Point> normals;
  std::vector<std::array<double, 2>> params;
  std::vector<std::array<int, 3>> facets;
};

// Tessellates the surfaces of one part on request.
class PartMesher {
 public:
  virtual ~PartMesher() = default;
  // The mesh of Model::surfaces[surface] for a chord height in the model's length unit; null when it cannot be made,
  // with the reason in `failure`. The mesh may be shared with a cache and is not changed afterwards.
  virtual std::shared_ptr<const SurfaceMesh> mesh(std::size_t surface, double chordHeight, std::string& failure) = 0;
  // Frees what is kept for a faster answer.
  virtual void forget() {}
};

// A B-spline curve in the parameter plane of a surface.
struct PlaneCurve {
  ProEnttype type = PRO_ENT_B_SPLINE;  // any other: a curve that is not given as a B-spline
  int degree = 1;
  std::vector<double> knots;    // as many as poles and degree and 1 together
  std::vector<double> weights;  // one for each pole, or none
  std::vector<Point> poles;     // u, v, 0; not multiplied by the weights
};

// An edge between two surfaces, each of which it meets by a curve in that surface's parameter plane. A seam has the
// same surface on both sides; an edge that bounds one surface only (a rim, a pole) has no second side.
struct ExactEdge {
  struct Side {
    int surfaceId = PRO_VALUE_UNUSED;
    int direction = 0;  // 1: the surface's contour runs against the curve; else -1
    PlaneCurve curve;
  };
  int id = 0;
  std::array<Side, 2> sides;
};

struct ExactContour {
  ProContourTraversal traversal = PRO_CONTOUR_TRAV_EXTERNAL;
  std::vector<int> edgeIds;  // in the order in which the contour runs; a seam's stands twice
};

// A surface as a B-spline over the range of its parameters that it needs, with its contours in the parameter plane:
// outer ones counter-clockwise, holes clockwise, whatever side of the surface is outside.
struct ExactSurface {
  std::size_t index = 0;  // in Model::surfaces
  int recordId = 0;       // the id that its record carries, mostly that of the surface
  int uDegree = 1, vDegree = 1;
  std::vector<double> uKnots, vKnots;
  std::vector<double> weights;  // one for each pole, or none
  std::vector<Point> poles;     // v runs fastest; not multiplied by the weights
  std::vector<ExactContour> contours;
};

// All surfaces and edges of a part that could be converted; each list of surfaces in the order of their indices.
struct ExactPart {
  std::vector<ExactSurface> solid;
  std::vector<std::vector<ExactSurface>> quilts;  // of each quilt of the model, in their order
  std::vector<ExactEdge> edges;
  std::vector<std::pair<std::size_t, std::string>> failures;  // surfaces left out, by index, with the reason
};

// Converts the surfaces of one part on request.
class PartConverter {
 public:
  virtual ~PartConverter() = default;
  // Null when nothing can be converted. The result is not changed afterwards.
  virtual std::shared_ptr<const ExactPart> convert() = 0;
  // Frees what is kept for a faster answer.
  virtual void forget() {}
};

struct Feature {
  int id = 0;
  ProFeattype type = 0;
  ProFeatStatus status = PRO_FEAT_ACTIVE;
  bool hidden = false;
  // Component features (type PRO_FEAT_COMPONENT) only:
  Model* component = nullptr;    // null: the model is not in session
  Matrix placement = kIdentity;  // from the component's coordinates to the owner's
  std::optional<Appearance> appearance;
};

struct Surface {
  Model* owner = nullptr;
  std::size_t index = 0;  // in Model::surfaces
  int id = 0;             // unique among the model's surfaces
  int featureId = 0;
  bool inactive = false;
  bool hidden = false;
  std::optional<Appearance> appearance;
};

struct Quilt {
  Model* owner = nullptr;
  int id = 0;
  int featureId = 0;
  bool inactive = false;
  bool hidden = false;
  bool backup = false;
  std::vector<std::size_t> surfaces;  // indices in Model::surfaces
};

struct Layer {
  int id = 0;
  std::wstring name;
  ProLayerDisplay display = PRO_LAYER_TYPE_NORMAL;
  std::vector<std::pair<ProLayerType, int>> items;  // type and id
};

struct SimplifiedRep {
  struct Item {
    std::vector<int> path;  // component feature ids from the model down
    ProSimprepActionType action = PRO_SIMPREP_NONE;
  };
  int id = 0;  // PRO_SIMPREP_MASTER_REP for the master representation
  std::wstring name;
  ProSimprepActionType defaultAction = PRO_SIMPREP_INCLUDE;
  std::vector<Item> items;
};

struct View {
  std::wstring name;
  Matrix matrix = kIdentity;
};

// Finds records by their ids in constant time. Records that were added or renumbered since are noticed.
template <typename Record>
class IdIndex {
 public:
  // Null when there is no record of the id.
  Record* find(std::deque<Record>& records, int id) {
    if (records.size() < indexed_) {
      forget();
    }
    addNew(records);
    const auto found = positions_.find(id);
    if (found != positions_.end() && found->second < records.size() && records[found->second].id == id) {
      return &records[found->second];
    }
    for (Record& record : records) {
      if (record.id == id) {
        forget();
        return &record;
      }
    }
    return nullptr;
  }

 private:
  void addNew(const std::deque<Record>& records) {
    for (; indexed_ < records.size(); ++indexed_) {
      positions_.emplace(records[indexed_].id, indexed_);
    }
  }
  void forget() {
    positions_.clear();
    indexed_ = 0;
  }

  std::unordered_map<int, std::size_t> positions_;
  std::size_t indexed_ = 0;
};

struct Model {
  ProMdlType type = PRO_MDL_PART;
  std::wstring name;  // at most 31 characters; unique in the session among models of its type
  std::wstring lengthUnit = L"mm";
  std::deque<Feature> features;
  std::deque<Surface> surfaces;
  std::vector<std::size_t> solidSurfaces;  // indices in surfaces, in visiting order
  std::deque<Quilt> quilts;
  std::deque<Layer> layers;
  std::deque<SimplifiedRep> representations;
  std::deque<View> views;
  Matrix currentView = kIdentity;
  std::optional<Appearance> appearance;
  std::optional<std::array<Point, 2>> outline;  // of the model's own geometry, in its own coordinates
  std::uint64_t versionStamp = 1;               // rises with every change of the model
  std::shared_ptr<PartMesher> mesher;           // null when there are no surfaces
  std::shared_ptr<PartConverter> converter;     // null when there are no exact surfaces to be had

  int lastId = 0;  // the highest id given out by the functions below

  // Null when there is none of the id.
  Feature* feature(int id);
  Surface* surface(int id);
  Quilt* quilt(int id);
  Layer* layer(int id);
  // New records with an id that nothing in the model has.
  Feature& addFeature(ProFeattype featureType);
  Feature& addComponent(Model& component, const Matrix& placement);
  // A surface of the solid, or of a quilt when one is given.
  Surface& addSurface(int featureId, Quilt* quilt = nullptr);
  Quilt& addQuilt(int featureId);
  Layer& addLayer(const std::wstring& layerName);
  SimplifiedRep& addRepresentation(const std::wstring& representationName);

 private:
  IdIndex<Feature> featureIndex_;
  IdIndex<Surface> surfaceIndex_;
  IdIndex<Quilt> quiltIndex_;
  IdIndex<Layer> layerIndex_;
};

// The product of two placements: first `first`, then `second`.
Matrix multiply(const Matrix& first, const Matrix& second);
Point transformPoint(const Point& point, const Matrix& matrix);
// The placement that undoes another; the identity when that is singular.
Matrix inverse(const Matrix& matrix);

using Box = std::array<Point, 2>;
// Boxes that are known already, for calls that share sub-assemblies.
using BoxCache = std::unordered_map<const Model*, std::optional<Box>>;
// A box around the model's own outline and the boxes of all its active components, in its own coordinates; none when
// it holds no geometry. Turned components are enclosed by their turned boxes, so that each model is looked at once.
std::optional<Box> boundingBox(const Model& model);
std::optional<Box> boundingBox(const Model& model, BoxCache& cache);

}  // namespace standin

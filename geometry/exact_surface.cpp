#include "geometry/exact_surface.h"

#include <cstddef>
#include <span>

#include "scene/vntScene_api.h"

namespace rendara {
namespace {

// A B-spline surface as the CAD system holds it: v runs fastest among the control points. The views are the record's.
struct SurfaceView {
  int degree[2] = {};
  std::span<const double> uKnots;
  std::span<const double> vKnots;
  const double* weights = nullptr;  // null when the surface is not rational
  const ProVector* points = nullptr;
  std::size_t uCount = 0;
  std::size_t vCount = 0;
};

// The control points along a direction; 0 when there cannot be any.
std::size_t pointCount(int knotCount, int degree) {
  const auto count = std::ptrdiff_t{knotCount} - degree - 1;
  return degree > 0 && count > degree ? static_cast<std::size_t>(count) : 0;
}

bool readSurface(ProSurfacedata* record, SurfaceView& surface) {
  SurfaceRecord read;
  double* uKnots = nullptr;
  double* vKnots = nullptr;
  double* weights = nullptr;
  ProVector* points = nullptr;
  int uKnotCount = 0;
  int vKnotCount = 0;
  int count = 0;
  if (!readRecord(record, read) ||
      ProBsplinesrfdataGet(&read.shape, surface.degree, &uKnots, &vKnots, &weights, &points, &uKnotCount, &vKnotCount,
                           &count) != PRO_TK_NO_ERROR ||
      uKnots == nullptr || vKnots == nullptr || points == nullptr) {
    return false;
  }
  surface.uCount = pointCount(uKnotCount, surface.degree[0]);
  surface.vCount = pointCount(vKnotCount, surface.degree[1]);
  if (surface.uCount == 0 || surface.vCount == 0 || count < 0 ||
      surface.uCount > static_cast<std::size_t>(count) / surface.vCount) {
    return false;
  }
  surface.uKnots = {uKnots, static_cast<std::size_t>(uKnotCount)};
  surface.vKnots = {vKnots, static_cast<std::size_t>(vKnotCount)};
  surface.weights = weights;
  surface.points = points;
  return true;
}

void writeArray(vntScene_api& scene, const char* name, std::span<const double> values) {
  const SceneArray array = {values.data(), static_cast<int>(values.size())};
  scene.parameter(name, arrayOf(kDouble), &array);
}

// The range in which a spline of a degree is defined.
void writeRange(vntScene_api& scene, const char* least, const char* most, std::span<const double> knots, int degree) {
  const auto end = static_cast<std::size_t>(degree);
  scene.parameter(least, kDouble, &knots[end]);
  scene.parameter(most, kDouble, &knots[knots.size() - end - 1]);
}

void writeSurface(vntScene_api& scene, const SurfaceView& surface, ExactSurfaceBuffers& buffers) {
  writeRange(scene, "umin", "umax", surface.uKnots, surface.degree[0]);
  writeRange(scene, "vmin", "vmax", surface.vKnots, surface.degree[1]);
  const int orders[2] = {surface.degree[0] + 1, surface.degree[1] + 1};
  scene.parameter("uorder", kInt, &orders[0]);
  scene.parameter("vorder", kInt, &orders[1]);
  writeArray(scene, "uknot", surface.uKnots);
  writeArray(scene, "vknot", surface.vKnots);
  // The renderer wants u to run fastest.
  buffers.setSurfacePoints(surface.points, surface.weights, surface.uCount, surface.vCount);
  writeArray(scene, "Pw", buffers.surfacePoints);
}

}  // namespace

bool readRecord(ProSurfacedata* data, SurfaceRecord& record) {
  ProSrftype type = PRO_SRF_NONE;
  ProUvParam low{};
  ProUvParam high{};
  ProSurfaceOrient orient = PRO_SURF_ORIENT_NONE;
  return ProSurfacedataGet(data, &type, low, high, &orient, &record.shape, &record.id) == PRO_TK_NO_ERROR;
}

void writeExactSurface(vntScene_api& scene, ProSurfacedata* record, ExactSurfaceBuffers& buffers) {
  scene.beginGeometry("nurbs");
  SurfaceView surface;
  if (readSurface(record, surface)) {
    writeSurface(scene, surface, buffers);
  }
  buffers.writeTrims(scene);
  scene.endGeometry();
}

}  // namespace rendara

// One surface record as a geometry block of the scene.
#pragma once

#include "geometry/exact_buffers.h"
#include "platform/creo_toolkit.h"

namespace rendara {

class vntScene_api;

// What a surface record says of itself; the shape's arrays are the record's.
struct SurfaceRecord {
  int id = PRO_VALUE_UNUSED;
  ProSurfaceshapedata shape{};
};

// False when the record cannot be read.
bool readRecord(ProSurfacedata* data, SurfaceRecord& record);

// Writes the record's B-spline surface and the collected trims as one geometry block of type "nurbs" into the open
// object. When the record cannot be read as a B-spline the surface's values are left out. `buffers` hold the trims.
void writeExactSurface(vntScene_api& scene, ProSurfacedata* record, ExactSurfaceBuffers& buffers);

}  // namespace rendara

#include "geometry/surface_collection.h"

#include "geometry/filters.h"

namespace rendara {
namespace {

ProError addSurface(ProSurface surface, ProError, ProAppData data) {
  auto& collection = *static_cast<SurfaceCollection*>(data);
  return collection.guard.run([&] {
    int id = 0;
    ProSurfaceIdGet(surface, &id);
    collection.ids.insert(id);
    collection.surfaces.push_back(surface);
    return PRO_TK_NO_ERROR;
  });
}

ProError addQuilt(ProQuilt quilt, ProError, ProAppData data) {
  ProQuiltSurfaceVisit(quilt, addSurface, acceptSurface, data);
  return PRO_TK_NO_ERROR;
}

}  // namespace

void collectSurfaces(ProPart part, SurfaceCollection& collection) {
  collection.part = part;
  ProSolidSurfaceVisit(part, addSurface, acceptSurface, &collection);
  collection.guard.rethrow();
  ProSolidQuiltVisit(part, addQuilt, acceptQuilt, &collection);
  collection.guard.rethrow();
}

}  // namespace rendara

// The surfaces of a part that are exported, in the order in which the CAD system visits them.
#pragma once

#include <set>
#include <vector>

#include "platform/creo_handles.h"

namespace rendara {

struct SurfaceCollection {
  std::vector<ProSurface> surfaces;  // one that belongs to the solid and to a quilt stands here twice
  std::set<int> ids;
  ProPart part = nullptr;
  VisitGuard guard;
};

// The solid's surfaces, then those of the quilts.
void collectSurfaces(ProPart part, SurfaceCollection& collection);

}  // namespace rendara

// A small model for the live link: BOLT.prt three times, the last time in a sub-assembly, and CASE.prt, whose surface
// is a fine grid.
#pragma once

#include <string>
#include <utility>

#include "standin/cad/session.h"
#include "tests/support/test_session.h"

namespace rendara::testing {

// A square of steps times steps fields; with 120 its script is sent in several blocks.
inline standin::Model& addGridPart(standin::Session& session, const std::wstring& name, int steps = 120) {
  standin::SurfaceMesh mesh;
  for (int v = 0; v <= steps; ++v) {
    for (int u = 0; u <= steps; ++u) {
      const double x = u;
      const double y = v;
      mesh.vertices.push_back({x, y, 0});
      mesh.normals.push_back({0, 0, 1});
      mesh.params.push_back({x / steps, y / steps});
      const int corner = v * (steps + 1) + u;
      if (u < steps && v < steps) {
        mesh.facets.push_back({corner, corner + 1, corner + steps + 2});
        mesh.facets.push_back({corner, corner + steps + 2, corner + steps + 1});
      }
    }
  }
  standin::Model& part = session.addModel(PRO_MDL_PART, name);
  const double size = steps;
  part.outline = standin::Box{standin::Point{0, 0, 0}, standin::Point{size, size, 1}};
  standin::test::addMeshedSurface(part, std::move(mesh), part.addFeature(917).id);
  return part;
}

// An assembly of two bolts, the casing, and a sub-assembly with another bolt, as the current model.
inline standin::Model& addTop(standin::Session& session, standin::Model& bolt, standin::Model& casing) {
  using standin::test::translation;
  standin::Model& cover = standin::test::addAssembly(session, L"COVER", {{&bolt, translation(0, 0, 5)}});
  standin::Model& top = standin::test::addAssembly(session, L"TOP",
                                                   {{&bolt, translation(10, 0, 0)},
                                                    {&bolt, translation(30, 0, 0)},
                                                    {&casing, standin::kIdentity},
                                                    {&cover, translation(0, 20, 0)}});
  standin::test::openModel(session, top);
  return top;
}

}  // namespace rendara::testing

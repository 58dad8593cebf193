// Assemblies of any number of placements, three levels deep, made of 50 parts of six strips of squares each.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "standin/cad/session.h"

namespace benchmarks {

// The same strip of squares for every surface.
class StripMesher : public standin::PartMesher {
 public:
  explicit StripMesher(int squares) : mesh_(std::make_shared<standin::SurfaceMesh>()) {
    for (int corner = 0; corner <= squares; ++corner) {
      const double x = 8.0 * corner / squares;
      mesh_->vertices.insert(mesh_->vertices.end(), {{x, 0, 0}, {x, 8, 0}});
      mesh_->params.insert(mesh_->params.end(), {{x, 0}, {x, 1}});
    }
    for (int at = 0; at < 2 * squares; at += 2) {
      mesh_->facets.insert(mesh_->facets.end(), {{at, at + 2, at + 3}, {at, at + 3, at + 1}});
    }
    mesh_->normals.assign(mesh_->vertices.size(), {0, 0, 1});
  }
  std::shared_ptr<const standin::SurfaceMesh> mesh(std::size_t, double, std::string&) override { return mesh_; }

 private:
  std::shared_ptr<standin::SurfaceMesh> mesh_;
};

inline constexpr int kDistinctParts = 50;

inline std::vector<standin::Model*> generateParts(standin::Session& session, int squares = 1) {
  const auto mesher = std::make_shared<StripMesher>(squares);
  std::vector<standin::Model*> parts;
  for (int part = 0; part < kDistinctParts; ++part) {
    standin::Model& model = session.addModel(PRO_MDL_PART, L"part_" + std::to_wstring(part));
    const int feature = model.addFeature(917).id;
    for (int surface = 0; surface < 6; ++surface) {
      model.addSurface(feature);
    }
    model.mesher = mesher;
    model.outline = {{{0, 0, 0}, {8, 8, 8}}};
    parts.push_back(&model);
  }
  return parts;
}

// An assembly three levels deep: groups of groups of placed parts.
inline standin::Model& generateAssembly(standin::Session& session, const std::vector<standin::Model*>& parts,
                                        int placements) {
  constexpr int kPerUnit = 50;
  constexpr int kUnitsPerGroup = 20;
  standin::Model& top = session.addModel(PRO_MDL_ASSEMBLY, L"generated");
  standin::Model* group = nullptr;
  standin::Model* unit = nullptr;
  for (int placed = 0; placed < placements; ++placed) {
    const auto place = [&](double step) {
      standin::Matrix matrix = standin::kIdentity;
      matrix[12] = step;
      return matrix;
    };
    if (placed % (kPerUnit * kUnitsPerGroup) == 0) {
      group = &session.addModel(PRO_MDL_ASSEMBLY, L"group_" + std::to_wstring(placed));
      top.addComponent(*group, place(placed));
    }
    if (placed % kPerUnit == 0) {
      unit = &session.addModel(PRO_MDL_ASSEMBLY, L"unit_" + std::to_wstring(placed));
      group->addComponent(*unit, place(placed));
    }
    unit->addComponent(*parts[static_cast<std::size_t>(placed % kDistinctParts)], place(placed));
  }
  return top;
}

}  // namespace benchmarks

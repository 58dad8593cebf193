// Small models in memory for tests, without a STEP file.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "standin/cad/session.h"

namespace standin::test {

// Hands out meshes that are set beforehand, and writes down what it was asked.
class FixedMesher : public PartMesher {
 public:
  struct Request {
    std::size_t surface;
    double chordHeight;
  };

  std::vector<SurfaceMesh> meshes;  // by index in Model::surfaces; a surface past the end fails
  // True when an attempt must fail; unset, none does.
  std::function<bool(std::size_t surface, double chordHeight)> fails;
  std::vector<Request> requests;
  int timesForgotten = 0;

  std::shared_ptr<const SurfaceMesh> mesh(std::size_t surface, double chordHeight, std::string& failure) override {
    requests.push_back({surface, chordHeight});
    if (surface >= meshes.size() || (fails && fails(surface, chordHeight))) {
      failure = "set to fail";
      return nullptr;
    }
    return std::make_shared<const SurfaceMesh>(meshes[surface]);
  }
  void forget() override { ++timesForgotten; }
};

// The mesher of a model made by the functions below.
inline FixedMesher& mesherOf(Model& model) { return dynamic_cast<FixedMesher&>(*model.mesher); }

inline Matrix translation(double x, double y, double z) { return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1}; }

// About the z axis, counter-clockwise seen from above.
inline Matrix rotationZ(double degrees) {
  const double angle = degrees * 3.14159265358979323846 / 180.0;
  return {std::cos(angle), std::sin(angle), 0, 0, -std::sin(angle), std::cos(angle), 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
}

// A flat mesh of four corners, counter-clockwise seen from where the normal points.
inline SurfaceMesh quadMesh(const std::array<Point, 4>& corners, const Point& normal) {
  SurfaceMesh mesh;
  mesh.vertices.assign(corners.begin(), corners.end());
  mesh.normals.assign(4, normal);
  mesh.params = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  mesh.facets = {{0, 1, 2}, {0, 2, 3}};
  return mesh;
}

// One more surface of a model (of the quilt, when one is given) with its mesh.
inline Surface& addMeshedSurface(Model& model, SurfaceMesh mesh, int featureId, Quilt* quilt = nullptr) {
  if (!model.mesher) {
    model.mesher = std::make_shared<FixedMesher>();
  }
  Surface& surface = model.addSurface(featureId, quilt);
  mesherOf(model).meshes.resize(surface.index + 1);
  mesherOf(model).meshes[surface.index] = std::move(mesh);
  return surface;
}

// A box from the origin to `size`: one feature, six flat solid surfaces in the order -x, +x, -y, +y, -z, +z, each of
// four vertices and two facets.
inline Model& addBoxPart(Session& session, const std::wstring& name, const Point& size) {
  Model& part = session.addModel(PRO_MDL_PART, name);
  part.outline = std::array<Point, 2>{Point{0, 0, 0}, size};
  const int featureId = part.addFeature(917).id;  // a protrusion
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const std::size_t u = (axis + 1) % 3;
    const std::size_t v = (axis + 2) % 3;
    for (const bool far : {false, true}) {
      Point normal{};
      normal[axis] = far ? 1.0 : -1.0;
      std::array<Point, 4> corners{};
      for (std::size_t corner = 0; corner < 4; ++corner) {
        const bool alongU = corner == 1 || corner == 2;
        const bool alongV = corner >= 2;
        corners[corner][axis] = far ? size[axis] : 0.0;
        corners[corner][u] = (far ? alongU : alongV) ? size[u] : 0.0;
        corners[corner][v] = (far ? alongV : alongU) ? size[v] : 0.0;
      }
      addMeshedSurface(part, quadMesh(corners, normal), featureId);
    }
  }
  return part;
}

inline Model& addBoxPart(Session& session, const std::wstring& name, double size = 10.0) {
  return addBoxPart(session, name, Point{size, size, size});
}

// An assembly of components, each with its placement.
inline Model& addAssembly(Session& session, const std::wstring& name,
                          const std::vector<std::pair<Model*, Matrix>>& components = {}) {
  Model& assembly = session.addModel(PRO_MDL_ASSEMBLY, name);
  for (const auto& [component, placement] : components) {
    assembly.addComponent(*component, placement);
  }
  return assembly;
}

// Makes the model the current one, in the mode of its type.
inline void openModel(Session& session, Model& model) {
  session.current = &model;
  session.mode = model.type == PRO_MDL_ASSEMBLY ? PRO_MODE_ASSEMBLY
                 : model.type == PRO_MDL_PART   ? PRO_MODE_PART
                                                : PRO_MODE_DRAWING;
}

// The models' handles as the toolkit's operations take them.
inline ProSolid solid(Model& model) { return reinterpret_cast<ProSolid>(&model); }
inline ProSurface handle(Surface& surface) { return reinterpret_cast<ProSurface>(&surface); }
inline ProQuilt handle(Quilt& quilt) { return reinterpret_cast<ProQuilt>(&quilt); }

}  // namespace standin::test

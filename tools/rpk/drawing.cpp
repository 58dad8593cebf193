#include "tools/rpk/drawing.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace rpk {
namespace {

const Material* materialOf(const Object& object) { return object.material ? &*object.material : nullptr; }

void appendOwn(const Group& group, std::vector<DrawnObject>& drawn) {
  for (const Object& object : group.objects) {
    if (object.drawn()) drawn.push_back({&object, materialOf(object)});
  }
  for (const auto& child : group.children) {
    if (child->materialGroup()) appendOwn(*child, drawn);
  }
}

bool singleMaterial(const std::vector<DrawnObject>& drawn) {
  const auto name = [](const DrawnObject& entry) {
    return entry.material ? std::string_view(entry.material->name) : std::string_view();
  };
  return std::all_of(drawn.begin(), drawn.end(),
                     [&](const DrawnObject& entry) { return name(entry) == name(drawn.front()); });
}

void collectPlaced(const Group& group, const Matrix& around, const std::function<Matrix(const Group&)>& placementOf,
                   std::vector<PlacedGroup>& placed) {
  const Matrix placement = multiply(placementOf(group), around);
  if (group.holdsGeometry() || group.reference()) placed.push_back({&group, placement});
  for (const auto& child : group.children) {
    if (!child->materialGroup()) collectPlaced(*child, placement, placementOf, placed);
  }
}

bool allFinite(const std::vector<float>& values) {
  return std::all_of(values.begin(), values.end(), [](float value) { return std::isfinite(value); });
}

// A mesh's values of one kind, when there are enough of them and all are numbers; else nothing.
std::vector<float> perVertex(const ArrayView& array, std::size_t count) {
  std::vector<float> values = array.floats();
  if (values.size() < count || !allFinite(values)) return {};
  values.resize(count);
  return values;
}

}  // namespace

std::vector<DrawnObject> drawnObjects(const Group& group) {
  std::vector<DrawnObject> drawn;
  if (group.holdsGeometry()) {
    appendOwn(group, drawn);
    return drawn;
  }
  const Object* reference = group.reference();
  if (!reference || !reference->sourceGroup) return drawn;
  appendOwn(*reference->sourceGroup, drawn);
  if (reference->material && singleMaterial(drawn)) {
    for (DrawnObject& entry : drawn) entry.material = &*reference->material;
  }
  return drawn;
}

const Group* geometryHolder(const Group& group) {
  if (group.holdsGeometry()) return &group;
  const Object* reference = group.reference();
  return reference ? reference->sourceGroup : nullptr;
}

std::vector<PlacedGroup> placedGroups(const Scene& scene) {
  return placedGroups(scene, [](const Group& group) { return group.placement.value_or(kIdentity); });
}

std::vector<PlacedGroup> placedGroups(const Scene& scene, const std::function<Matrix(const Group&)>& placementOf) {
  std::vector<PlacedGroup> placed;
  for (const auto& group : scene.groups) collectPlaced(*group, kIdentity, placementOf, placed);
  return placed;
}

TriangleMesh copyMesh(const MeshView& view) {
  TriangleMesh mesh;
  mesh.positions = view.vertices.floats();
  mesh.positions.resize(mesh.positions.size() / 3 * 3);
  const std::size_t vertices = mesh.vertexCount();
  mesh.normals = perVertex(view.normals, vertices * 3);
  mesh.uvs = perVertex(view.uvs, vertices * 2);
  const auto usable = [&](std::int32_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= vertices) return false;
    const float* position = mesh.positions.data() + static_cast<std::size_t>(index) * 3;
    return std::isfinite(position[0]) && std::isfinite(position[1]) && std::isfinite(position[2]);
  };
  const std::vector<std::int32_t> indices = view.triangles.integers();
  mesh.indices.reserve(indices.size());
  for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
    if (!usable(indices[i]) || !usable(indices[i + 1]) || !usable(indices[i + 2])) {
      ++mesh.leftOut;
      continue;
    }
    for (std::size_t corner = 0; corner < 3; ++corner) {
      mesh.indices.push_back(static_cast<std::uint32_t>(indices[i + corner]));
    }
  }
  return mesh;
}

double areaOf(const TriangleMesh& mesh) {
  double twice = 0;
  for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3) {
    const auto corner = [&](std::size_t number) {
      return mesh.positions.data() + 3 * std::size_t{mesh.indices[i + number]};
    };
    const float* from = corner(0);
    Vector a{}, b{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
      a[axis] = double{corner(1)[axis]} - double{from[axis]};
      b[axis] = double{corner(2)[axis]} - double{from[axis]};
    }
    twice += std::hypot(a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]);
  }
  return twice / 2;
}

double unitsPerMetre(const Scene& scene) {
  const std::string_view text = scene.option("meter_scale");
  double units = 0;
  std::from_chars(text.data(), text.data() + text.size(), units);
  return std::isfinite(units) && units > 0 ? units : 1;
}

}  // namespace rpk

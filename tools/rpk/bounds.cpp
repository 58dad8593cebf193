#include "tools/rpk/bounds.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <vector>

#include "tools/rpk/drawing.h"
#include "tools/rpk/little_endian.h"

namespace rpk {
namespace {

bool finite(const Vector& point) {
  return std::all_of(point.begin(), point.end(), [](double v) { return std::isfinite(v); });
}

template <typename Action>
void forEachVertex(const ArrayView& array, const Action& action) {
  if (array.tag() == 'c' || array.tag() == 'f') {
    const char* value = array.bytes().data();
    for (std::size_t left = array.count() / 3; left > 0; --left, value += 12) {
      action(Vector{static_cast<double>(loadLittleEndian<float>(value)),
                    static_cast<double>(loadLittleEndian<float>(value + 4)),
                    static_cast<double>(loadLittleEndian<float>(value + 8))});
    }
    return;
  }
  const std::vector<double> values = array.doubles();
  for (std::size_t i = 0; i + 2 < values.size(); i += 3) action(Vector{values[i], values[i + 1], values[i + 2]});
}

// Each axis becomes another axis, so that a box stays a box.
bool keepsBoxes(const Matrix& placement) {
  for (std::size_t i = 0; i < 3; ++i) {
    int inRow = 0;
    int inColumn = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      inRow += placement[i * 4 + k] != 0 ? 1 : 0;
      inColumn += placement[k * 4 + i] != 0 ? 1 : 0;
    }
    if (inRow != 1 || inColumn != 1) return false;
  }
  return true;
}

// What one group's geometry is made of, in its own coordinates.
struct Source {
  std::vector<ArrayView> meshes;
  std::uint64_t vertices = 0;
  Box box;
};

class BoxFinder {
 public:
  explicit BoxFinder(std::uint64_t mostVertices) : vertices_(mostVertices) {}

  SceneBox found;

  void include(const Source& source, const Matrix& placement) {
    if (source.box.empty()) return;
    const Box around = placed(source.box, placement);
    if (found.box.contains(around)) return;
    if (keepsBoxes(placement) || source.vertices > vertices_) {
      found.exact = found.exact && keepsBoxes(placement);
      found.box.include(around.low);
      found.box.include(around.high);
      return;
    }
    vertices_ -= source.vertices;
    for (const ArrayView& mesh : source.meshes) {
      forEachVertex(mesh, [&](const Vector& vertex) {
        if (finite(vertex)) found.box.include(transformPoint(vertex, placement));
      });
    }
  }

  static void add(const Object& object, Source& source) {
    if (object.mesh.vertices.bytes().empty()) return;
    source.meshes.push_back(object.mesh.vertices);
    forEachVertex(object.mesh.vertices, [&](const Vector& vertex) {
      ++source.vertices;
      source.box.include(vertex);
    });
  }

 private:
  static Box placed(const Box& box, const Matrix& placement) {
    Box around;
    for (unsigned corner = 0; corner < 8; ++corner) {
      around.include(
          transformPoint({(corner & 1U) != 0 ? box.high[0] : box.low[0], (corner & 2U) != 0 ? box.high[1] : box.low[1],
                          (corner & 4U) != 0 ? box.high[2] : box.low[2]},
                         placement));
    }
    return around;
  }

  std::uint64_t vertices_;  // that may still be looked at
};

}  // namespace

Vector Box::size() const {
  if (empty()) return {};
  return {high[0] - low[0], high[1] - low[1], high[2] - low[2]};
}

void Box::include(const Vector& point) {
  if (!finite(point)) return;
  for (std::size_t i = 0; i < 3; ++i) {
    low[i] = std::min(low[i], point[i]);
    high[i] = std::max(high[i], point[i]);
  }
}

bool Box::contains(const Box& other) const {
  for (std::size_t i = 0; i < 3; ++i) {
    if (other.low[i] < low[i] || other.high[i] > high[i]) return false;
  }
  return true;
}

SceneBox sceneBox(const Scene& scene, std::uint64_t mostVertices) {
  BoxFinder finder(mostVertices);
  Source loose;
  for (const Object& object : scene.objects) BoxFinder::add(object, loose);
  finder.include(loose, kIdentity);
  std::unordered_map<const Group*, Source> sources;
  for (const PlacedGroup& placed : placedGroups(scene)) {
    const Group* holder = geometryHolder(*placed.group);
    if (!holder) continue;
    const auto [entry, isNew] = sources.try_emplace(holder);
    if (isNew) {
      for (const DrawnObject& drawn : drawnObjects(*holder)) BoxFinder::add(*drawn.object, entry->second);
    }
    finder.include(entry->second, placed.placement);
  }
  return finder.found;
}

}  // namespace rpk

// A model made ready for rays: every part built once, however often it is placed.
#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <span>

#include "tools/rpk/picture/picture_model.h"
#include "tools/rpk/picture/vec3.h"

namespace rpk {

// How far the scene reaches along a direction, in model units from the origin.
struct Reach {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
};

// What a ray meets. Vectors are those of the scene, of length 1, and point to the outside of the part.
struct SurfacePoint {
  float distance = 0;
  Vec3 faceNormal;  // of the triangle
  Vec3 normal;      // smoothed over the surface by its vertex normals
  std::size_t instance = 0;
  std::size_t material = 0;  // of the model, or kNoMaterial
  bool solid = false;        // the part encloses a volume: its inside should not be seen
  bool twoSided = false;     // the vectors point to either side
  float u = 0;
  float v = 0;
  float textureScale = 0;  // area in u and v over area in space; 0 without texture coordinates
};
inline constexpr std::size_t kNoMaterial = std::numeric_limits<std::size_t>::max();

// Triangles with indices or coordinates that are not usable are left out, and so are placements that are not finite or
// flatten what they place. Triangles without an area show nothing and do not count.
class PictureScene {
 public:
  // Throws std::runtime_error when the rays' library cannot be set up, std::bad_alloc when memory is short.
  explicit PictureScene(PictureModel model);
  ~PictureScene();
  PictureScene(PictureScene&&) noexcept;
  PictureScene& operator=(PictureScene&&) noexcept;

  // Moves the instances: one placement for each of the model's. Costs little; the parts stay as they are built.
  void place(std::span<const Matrix> placements);

  const PictureModel& model() const;  // its meshes are taken out
  std::size_t placedInstances() const;
  std::size_t triangleCount() const;  // of all placed instances
  std::size_t leftOut() const;        // triangles (once for each part) and placements
  bool empty() const { return placedInstances() == 0; }

  Vector centre() const;  // of the bounding box
  double radius() const;  // of the sphere around the bounding box; above 0 unless the scene is empty
  // Exact for the vertices unless there are very many; then of the parts' bounding boxes.
  Reach reach(const Vector& direction) const;

  // Rays run in a space of their own, in which the sphere around the scene has its centre at 0 and radius 1: a point p
  // of the model is (p - centre) / radius there. Both may be called by several threads at once.
  bool closest(const Vec3& origin, const Vec3& direction, SurfacePoint& point) const;
  bool blocked(const Vec3& origin, const Vec3& direction, float distance) const;

 private:
  class Rays;
  std::unique_ptr<Rays> rays_;
};

}  // namespace rpk

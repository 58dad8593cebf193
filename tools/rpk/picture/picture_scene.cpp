#include "tools/rpk/picture/picture_scene.h"

#include <embree3/rtcore.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "tools/rpk/picture/picture_part.h"

namespace rpk {
namespace {

// Owns one reference to an object of the rays' library.
template <typename Object, void (*release)(Object)>
class Handle {
 public:
  explicit Handle(Object object = nullptr) : object_(object) {}
  Handle(Handle&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() {
    if (object_) release(object_);
  }
  Object get() const { return object_; }

 private:
  Object object_;
};
using DeviceHandle = Handle<RTCDevice, rtcReleaseDevice>;
using SceneHandle = Handle<RTCScene, rtcReleaseScene>;
using GeometryHandle = Handle<RTCGeometry, rtcReleaseGeometry>;

using Matrix3 = std::array<double, 9>;

std::optional<Matrix3> inverseTransposed(const Matrix& m) {
  Matrix3 cofactors = {};
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      const std::size_t r1 = (i + 1) % 3 * 4;
      const std::size_t r2 = (i + 2) % 3 * 4;
      const std::size_t c1 = (j + 1) % 3;
      const std::size_t c2 = (j + 2) % 3;
      cofactors[i * 3 + j] = m[r1 + c1] * m[r2 + c2] - m[r1 + c2] * m[r2 + c1];
    }
  }
  const double determinant = m[0] * cofactors[0] + m[1] * cofactors[1] + m[2] * cofactors[2];
  double volume = 1;
  for (std::size_t i = 0; i < 12; i += 4) volume *= std::hypot(m[i], m[i + 1], m[i + 2]);
  if (!(volume > 0) || !(std::abs(determinant) > 1e-7 * volume)) return std::nullopt;
  for (double& value : cofactors) value /= determinant;
  return cofactors;
}

Matrix scaledAt(double scale, const Vector& shift) {
  return {scale, 0, 0, 0, 0, scale, 0, 0, 0, 0, scale, 0, shift[0], shift[1], shift[2], 1};
}

bool affine(const Matrix& m) {
  return std::all_of(m.begin(), m.end(), [](double value) { return std::isfinite(value) && std::abs(value) < 1e30; }) &&
         m[3] == 0 && m[7] == 0 && m[11] == 0 && m[15] == 1;
}

// Row vectors' matrix as the library wants it: column by column of a 3 × 4 matrix for column vectors, which is the same
// order.
std::array<float, 12> toColumns(const Matrix& m) {
  std::array<float, 12> columns = {};
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t i = 0; i < 3; ++i) columns[row * 3 + i] = static_cast<float>(m[row * 4 + i]);
  }
  return columns;
}

struct PlacedPart {
  std::size_t instance = 0;
  const PreparedPart* part = nullptr;
  Matrix fromPart = kIdentity;  // from the prepared part to the model
  std::array<Vec3, 3> edges;    // from the prepared part to the rays' space, without the shift: rows of a 3 × 3 matrix
  std::array<Vec3, 3> normals;  // the same for normals
};

Vec3 turned(const Vec3& v, const std::array<Vec3, 3>& rows) { return rows[0] * v.x + rows[1] * v.y + rows[2] * v.z; }

}  // namespace

class PictureScene::Rays {
 public:
  explicit Rays(PictureModel source);
  void place(std::span<const Matrix> placements);
  Reach reach(const Vector& direction) const;
  bool closest(const Vec3& origin, const Vec3& direction, SurfacePoint& point) const;
  bool blocked(const Vec3& origin, const Vec3& direction, float distance) const;

  PictureModel model;
  std::vector<PlacedPart> placed;
  std::size_t triangles = 0;
  std::size_t leftOut = 0;
  Vector centre = {0, 0, 0};
  double radius = 0;

 private:
  void fail(const char* what) const;
  SceneHandle buildPart(const PreparedPart& part) const;
  void placeParts(std::span<const Matrix> placements);
  void findBounds();
  void buildTop();
  void describe(const RTCRayHit& hit, SurfacePoint& point) const;

  DeviceHandle device_;
  std::vector<PreparedPart> parts_;
  std::vector<SceneHandle> partScenes_;
  SceneHandle top_;
};

// Built by one thread: which of two triangles in the same place is met must not depend on the order in which several
// threads come to them.
PictureScene::Rays::Rays(PictureModel source) : model(std::move(source)), device_(rtcNewDevice("threads=1")) {
  if (!device_.get()) fail("cannot be set up");
  for (PicturePart& part : model.parts) {
    parts_.push_back(preparePart(part));
    part.meshes.clear();
    partScenes_.push_back(buildPart(parts_.back()));
  }
  std::vector<Matrix> placements;
  for (const PictureInstance& instance : model.instances) placements.push_back(instance.placement);
  place(placements);
}

void PictureScene::Rays::fail(const char* what) const {
  const RTCError error = rtcGetDeviceError(device_.get());
  if (error == RTC_ERROR_OUT_OF_MEMORY) throw std::bad_alloc();
  throw std::runtime_error(std::string("drawing: the rays' library ") + what + " (error " + std::to_string(error) +
                           ")");
}

SceneHandle PictureScene::Rays::buildPart(const PreparedPart& part) const {
  SceneHandle scene(rtcNewScene(device_.get()));
  rtcSetSceneFlags(scene.get(), RTC_SCENE_FLAG_ROBUST);
  for (std::size_t i = 0; i < part.meshes.size(); ++i) {
    const PreparedMesh& mesh = part.meshes[i];
    if (mesh.indices.empty()) continue;
    const GeometryHandle geometry(rtcNewGeometry(device_.get(), RTC_GEOMETRY_TYPE_TRIANGLE));
    rtcSetSharedGeometryBuffer(geometry.get(), RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, mesh.positions.data(), 0,
                               3 * sizeof(float), mesh.vertexCount());
    rtcSetSharedGeometryBuffer(geometry.get(), RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, mesh.indices.data(), 0,
                               3 * sizeof(std::uint32_t), mesh.triangleCount());
    rtcCommitGeometry(geometry.get());
    rtcAttachGeometryByID(scene.get(), geometry.get(), static_cast<unsigned>(i));
  }
  rtcCommitScene(scene.get());
  if (rtcGetDeviceError(device_.get()) != RTC_ERROR_NONE) throw std::runtime_error("drawing: a part cannot be built");
  return scene;
}

void PictureScene::Rays::place(std::span<const Matrix> placements) {
  placeParts(placements);
  findBounds();
  buildTop();
}

void PictureScene::Rays::placeParts(std::span<const Matrix> placements) {
  placed.clear();
  triangles = 0;
  leftOut = 0;
  for (const PreparedPart& part : parts_) leftOut += part.leftOut;
  for (std::size_t i = 0; i < std::min(placements.size(), model.instances.size()); ++i) {
    const std::size_t index = model.instances[i].part;
    if (index >= parts_.size() || parts_[index].triangleCount() == 0) continue;
    PlacedPart entry;
    entry.instance = i;
    entry.part = &parts_[index];
    entry.fromPart = multiply(scaledAt(entry.part->scale, entry.part->centre), placements[i]);
    if (!affine(entry.fromPart) || !inverseTransposed(entry.fromPart)) {
      ++leftOut;
      continue;
    }
    triangles += entry.part->triangleCount();
    placed.push_back(entry);
  }
}

void PictureScene::Rays::findBounds() {
  centre = {0, 0, 0};
  Vector half = {0, 0, 0};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    Vector direction = {0, 0, 0};
    direction[axis] = 1;
    const Reach along = reach(direction);
    if (placed.empty()) continue;
    centre[axis] = (along.low + along.high) / 2;
    half[axis] = (along.high - along.low) / 2;
  }
  radius = std::hypot(half[0], half[1], half[2]);
}

void PictureScene::Rays::buildTop() {
  top_ = SceneHandle(rtcNewScene(device_.get()));
  rtcSetSceneFlags(top_.get(), RTC_SCENE_FLAG_ROBUST);
  const double factor = radius > 0 ? 1 / radius : 1;
  const Matrix toRays = scaledAt(factor, {-centre[0] * factor, -centre[1] * factor, -centre[2] * factor});
  for (std::size_t i = 0; i < placed.size(); ++i) {
    PlacedPart& entry = placed[i];
    const Matrix matrix = multiply(entry.fromPart, toRays);
    const std::array<float, 12> columns = toColumns(matrix);
    const Matrix3 normals = inverseTransposed(entry.fromPart).value_or(Matrix3{1, 0, 0, 0, 1, 0, 0, 0, 1});
    // Only directions of normals matter; their length is brought near 1 so that it fits a float.
    double longest = 0;
    for (const double value : normals) longest = std::max(longest, std::abs(value));
    for (std::size_t row = 0; row < 3; ++row) {
      entry.edges[row] = {columns[row * 3], columns[row * 3 + 1], columns[row * 3 + 2]};
      entry.normals[row] = {static_cast<float>(normals[row * 3] / longest),
                            static_cast<float>(normals[row * 3 + 1] / longest),
                            static_cast<float>(normals[row * 3 + 2] / longest)};
    }
    const GeometryHandle geometry(rtcNewGeometry(device_.get(), RTC_GEOMETRY_TYPE_INSTANCE));
    const std::size_t part = static_cast<std::size_t>(entry.part - parts_.data());
    rtcSetGeometryInstancedScene(geometry.get(), partScenes_[part].get());
    rtcSetGeometryTransform(geometry.get(), 0, RTC_FORMAT_FLOAT3X4_COLUMN_MAJOR, columns.data());
    rtcCommitGeometry(geometry.get());
    rtcAttachGeometryByID(top_.get(), geometry.get(), static_cast<unsigned>(i));
  }
  rtcCommitScene(top_.get());
  if (rtcGetDeviceError(device_.get()) != RTC_ERROR_NONE)
    throw std::runtime_error("drawing: the scene cannot be built");
}

Reach PictureScene::Rays::reach(const Vector& direction) const {
  constexpr double kMostVertices = 5e7;
  double vertices = 0;
  for (const PlacedPart& entry : placed) vertices += 3 * static_cast<double>(entry.part->triangleCount());
  Reach result;
  for (const PlacedPart& entry : placed) {
    // The direction as the part sees it: the reach of a point p is p × local + shift.
    Vector local = {};
    for (std::size_t row = 0; row < 3; ++row) {
      for (std::size_t i = 0; i < 3; ++i) local[row] += entry.fromPart[row * 4 + i] * direction[i];
    }
    double shift = 0;
    for (std::size_t i = 0; i < 3; ++i) shift += entry.fromPart[12 + i] * direction[i];
    const auto extend = [&](double x, double y, double z) {
      const double along = x * local[0] + y * local[1] + z * local[2] + shift;
      result.low = std::min(result.low, along);
      result.high = std::max(result.high, along);
    };
    if (vertices > kMostVertices) {
      for (int corner = 0; corner < 8; ++corner) {
        extend((corner & 1) != 0 ? 1 : -1, (corner & 2) != 0 ? 1 : -1, (corner & 4) != 0 ? 1 : -1);
      }
      continue;
    }
    for (const PreparedMesh& mesh : entry.part->meshes) {
      for (const std::uint32_t vertex : mesh.indices) {
        const Vec3 position = mesh.position(vertex);
        extend(position.x, position.y, position.z);
      }
    }
  }
  return result;
}

bool PictureScene::Rays::closest(const Vec3& origin, const Vec3& direction, SurfacePoint& point) const {
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  context.flags = RTC_INTERSECT_CONTEXT_FLAG_COHERENT;
  RTCRayHit hit = {};
  hit.ray = {
      origin.x, origin.y, origin.z, 0, direction.x, direction.y, direction.z, 0, std::numeric_limits<float>::infinity(),
      ~0U,      0,        0};
  hit.hit.geomID = RTC_INVALID_GEOMETRY_ID;
  hit.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
  rtcIntersect1(top_.get(), &context, &hit);
  if (hit.hit.geomID == RTC_INVALID_GEOMETRY_ID || hit.hit.instID[0] >= placed.size()) return false;
  describe(hit, point);
  return true;
}

void PictureScene::Rays::describe(const RTCRayHit& hit, SurfacePoint& point) const {
  const PlacedPart& entry = placed[hit.hit.instID[0]];
  const PreparedMesh& mesh = entry.part->meshes[hit.hit.geomID];
  const std::uint32_t* corners = mesh.indices.data() + std::size_t{hit.hit.primID} * 3;
  const std::array<float, 3> weights = {1 - hit.hit.u - hit.hit.v, hit.hit.u, hit.hit.v};
  const Vec3 outward = mesh.outward(hit.hit.primID);
  point = {};
  point.distance = hit.ray.tfar;
  point.faceNormal = unit(turned(unit(outward, {}), entry.normals), {0, 0, 1});
  point.normal = point.faceNormal;
  if (!mesh.normals.empty()) {
    Vec3 smooth;
    for (std::size_t i = 0; i < 3; ++i) smooth = smooth + mesh.vertexNormal(corners[i]) * weights[i];
    point.normal = unit(turned(smooth, entry.normals), point.faceNormal);
  }
  point.instance = entry.instance;
  const std::vector<std::size_t>& materials = model.instances[entry.instance].materials;
  point.material = hit.hit.geomID < materials.size() ? materials[hit.hit.geomID] : kNoMaterial;
  if (point.material >= model.materials.size()) point.material = kNoMaterial;
  point.solid = entry.part->solid;
  point.twoSided = entry.part->twoSided;
  if (mesh.uvs.empty()) return;
  std::array<std::array<float, 2>, 3> uv;
  for (std::size_t i = 0; i < 3; ++i) {
    uv[i] = {mesh.uvs[std::size_t{corners[i]} * 2], mesh.uvs[std::size_t{corners[i]} * 2 + 1]};
    point.u += uv[i][0] * weights[i];
    point.v += uv[i][1] * weights[i];
  }
  const Vec3 a = mesh.position(corners[0]);
  const Vec3 first = turned(mesh.position(corners[1]) - a, entry.edges);
  const Vec3 second = turned(mesh.position(corners[2]) - a, entry.edges);
  const float area = length(cross(first, second));
  const float uvArea =
      std::abs((uv[1][0] - uv[0][0]) * (uv[2][1] - uv[0][1]) - (uv[2][0] - uv[0][0]) * (uv[1][1] - uv[0][1]));
  point.textureScale = area > 0 ? uvArea / area : 0;
}

bool PictureScene::Rays::blocked(const Vec3& origin, const Vec3& direction, float distance) const {
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  RTCRay ray = {origin.x, origin.y, origin.z, 0, direction.x, direction.y, direction.z, 0, distance, ~0U, 0, 0};
  rtcOccluded1(top_.get(), &context, &ray);
  return ray.tfar < 0;
}

PictureScene::PictureScene(PictureModel model) : rays_(std::make_unique<Rays>(std::move(model))) {}
PictureScene::~PictureScene() = default;
PictureScene::PictureScene(PictureScene&&) noexcept = default;
PictureScene& PictureScene::operator=(PictureScene&&) noexcept = default;

void PictureScene::place(std::span<const Matrix> placements) { rays_->place(placements); }
const PictureModel& PictureScene::model() const { return rays_->model; }
std::size_t PictureScene::placedInstances() const { return rays_->placed.size(); }
std::size_t PictureScene::triangleCount() const { return rays_->triangles; }
std::size_t PictureScene::leftOut() const { return rays_->leftOut; }
Vector PictureScene::centre() const { return rays_->centre; }
double PictureScene::radius() const { return rays_->radius; }
Reach PictureScene::reach(const Vector& direction) const { return rays_->reach(direction); }
bool PictureScene::closest(const Vec3& origin, const Vec3& direction, SurfacePoint& point) const {
  return rays_->closest(origin, direction, point);
}
bool PictureScene::blocked(const Vec3& origin, const Vec3& direction, float distance) const {
  return rays_->blocked(origin, direction, distance);
}

}  // namespace rpk

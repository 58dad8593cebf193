// A package as a tree in memory: groups with placements, objects, cameras. For tests and summaries.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/rpk/group_flags.h"
#include "tools/rpk/package_counts.h"
#include "tools/rpk/package_reader.h"

namespace rpk {

// Row by row, for row vectors: a point becomes point × matrix; elements 12 to 14 are the translation.
using Matrix = std::array<double, 16>;
inline constexpr Matrix kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
using Vector = std::array<double, 3>;

// first × second: with row vectors the first is applied first.
Matrix multiply(const Matrix& first, const Matrix& second);
Vector transformPoint(const Vector& point, const Matrix& matrix);

struct Shader {
  std::string type;                           // "vnt_diffuse"
  std::string parameter;                      // whose value it is, for an inner shader
  std::map<std::string, std::string> values;  // as text, the last of each name: "0.8 0.2 0.2"; strings without quotes
  std::vector<Shader> inner;
  // The inner shader that is the value of a parameter, or null.
  const Shader* find(std::string_view parameterName) const;
};

struct Material {
  std::string name;
  Shader surface;
  std::optional<Vector> colour;  // "diffuse" of the surface shader
  std::string texture;           // file of the inner diffuse shader, empty when plain
};

// Views into the range that was read; empty arrays where the file has none.
struct MeshView {
  ArrayView vertices;   // x y z
  ArrayView normals;    // x y z
  ArrayView uvs;        // u v
  ArrayView triangles;  // three indices into the vertices, from 0
  std::size_t vertexCount() const { return vertices.count() / 3; }
  std::size_t triangleCount() const { return triangles.count() / 3; }
};

struct Group;

struct Object {
  std::string name;
  std::string geometryType;                   // "triangles", "nurbs", "instance", empty when the object has no geometry
  MeshView mesh;                              // for "triangles"
  std::map<std::string, ArrayView> arrays;    // every array of the geometry, by name
  std::map<std::string, std::string> values;  // every other parameter of the geometry, as text
  std::optional<Material> material;
  std::string source;                  // for "instance": the name it refers to
  const Group* sourceGroup = nullptr;  // the last group of that name with geometry that ended before; or null

  bool drawn() const { return geometryType == "triangles" || geometryType == "nurbs"; }
};

struct Animation {
  std::string type;  // "fbx_animation"
  std::string name;
  std::map<std::string, std::string> values;  // "start_time", "duration", "folder", as text
  std::vector<Matrix> matrices;
  std::vector<std::int32_t> timestamps;  // milliseconds
};

struct Group {
  std::string name;
  std::uint32_t flags = 0;
  bool hasFlags = false;
  std::optional<Matrix> placement;  // relative to the enclosing group
  std::vector<std::unique_ptr<Group>> children;
  std::vector<Object> objects;
  std::vector<Animation> animations;
  const Group* parent = nullptr;
  Place place;

  bool assembly() const { return (flags & kAssemblyGroupFlag) != 0; }
  bool materialGroup() const { return (flags & kMaterialGroupFlag) != 0; }
  // Meshes or exact surfaces of its own, directly or in groups of one material.
  bool holdsGeometry() const;
  // The reference that stands for its geometry, or null.
  const Object* reference() const;
  // The first child of that name, or null.
  const Group* child(std::string_view childName) const;
  // Own placement and those of all groups around it.
  Matrix placementInScene() const;
};

struct Camera {
  std::string name;
  std::map<std::string, std::string> values;  // "position", "fov", "projection" …, as text
  std::optional<Matrix> transform;
  std::optional<Shader> environment;  // "reflection map"
};

struct Scene {
  std::vector<std::string> headers;                          // comment lines of the form //---...---
  int headerVariant = 0;                                     // 7 of "//---vantor:dal:7---"; 0 without such a line
  std::vector<std::string> modules;                          // names of the load blocks, in order
  std::vector<std::pair<std::string, std::string>> options;  // of all load blocks, in order
  std::vector<std::unique_ptr<Group>> groups;                // at the top
  std::vector<Object> objects;                               // outside any group
  std::vector<Camera> cameras;                               // wherever they stand
  std::vector<Material> materials;                           // defined outside objects
  std::size_t faultCount = 0;
  std::vector<Fault> faults;

  // The value of an option, empty without it.
  std::string_view option(std::string_view name) const;
  const Camera* camera(std::string_view name) const;
  // The first group of that name, in the order of the file, at any depth; or null.
  const Group* find(std::string_view name) const;
  // All groups, outer before inner, in the order of the file.
  std::vector<const Group*> allGroups() const;
};

// The scene holds views into `bytes`, which must outlive it.
Scene readScene(std::string_view bytes, const ReadLimits& limits = {});

}  // namespace rpk

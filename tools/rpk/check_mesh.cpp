#include "tools/rpk/check_mesh.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "tools/rpk/check_arrays.h"
#include "tools/rpk/little_endian.h"

namespace rpk {
namespace {

constexpr std::size_t kBlock = 256;  // triangles whose working set stays in the nearest cache
constexpr std::size_t kVectorBytes = 12;
constexpr std::size_t kTriangleBytes = 12;
// Bytes of a mesh that may have become resident before its pages are handed back.
constexpr std::size_t kResidentStep = 64U << 20;
// What one access to a page that is not resident brings in, at most.
constexpr std::size_t kFaultBytes = 64U << 10;

using Corners = std::array<std::int32_t, 3 * kBlock>;
using Values = std::array<double, kBlock>;

struct Sums {
  std::uint64_t degenerate = 0;
  std::uint64_t against = 0;
  double area = 0;
  double areaAgainst = 0;
};

// Two edges of each triangle, and the sum of its corners' normals.
struct Facets {
  std::array<Values, 3> first;
  std::array<Values, 3> second;
  std::array<Values, 3> normal;
  Values area;
  Values along;  // facet normal times sum of the normals: below zero where they look away from each other
};

struct Range {
  std::int32_t least = std::numeric_limits<std::int32_t>::max();
  std::int32_t most = std::numeric_limits<std::int32_t>::min();
};

Range rangeOf(const std::int32_t* values, std::size_t count) {
  Range range;
  for (std::size_t i = 0; i < count; ++i) {
    range.least = std::min(range.least, values[i]);
    range.most = std::max(range.most, values[i]);
  }
  return range;
}

void loadIntegers(const char* bytes, std::size_t count, std::int32_t* values) {
  for (std::size_t i = 0; i < count; ++i) values[i] = loadLittleEndian<std::int32_t>(bytes + i * 4);
}

double component(const char* vectors, std::int32_t index, std::size_t axis) {
  return static_cast<double>(
      loadLittleEndian<float>(vectors + static_cast<std::size_t>(index) * kVectorBytes + axis * 4));
}

void gatherEdges(const char* vertices, const Corners& corners, std::size_t count, Facets& facets) {
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      const double from = component(vertices, corners[3 * i], axis);
      facets.first[axis][i] = component(vertices, corners[3 * i + 1], axis) - from;
      facets.second[axis][i] = component(vertices, corners[3 * i + 2], axis) - from;
    }
  }
}

void gatherNormals(const char* normals, const Corners& corners, std::size_t count, Facets& facets) {
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      facets.normal[axis][i] = component(normals, corners[3 * i], axis) + component(normals, corners[3 * i + 1], axis) +
                               component(normals, corners[3 * i + 2], axis);
    }
  }
}

// Plain loops over arrays, so that the compiler takes several triangles at once.
void measure(Facets& facets, std::size_t count) {
  const auto& [ax, ay, az] = facets.first;
  const auto& [bx, by, bz] = facets.second;
  const auto& [nx, ny, nz] = facets.normal;
  for (std::size_t i = 0; i < count; ++i) {
    const double x = ay[i] * bz[i] - az[i] * by[i];
    const double y = az[i] * bx[i] - ax[i] * bz[i];
    const double z = ax[i] * by[i] - ay[i] * bx[i];
    facets.area[i] = 0.5 * std::sqrt(x * x + y * y + z * z);
    facets.along[i] = x * nx[i] + y * ny[i] + z * nz[i];
  }
}

void add(const Facets& facets, std::size_t count, Sums& sums) {
  double area = 0;
  for (std::size_t i = 0; i < count; ++i) {
    area += facets.area[i];
    if (facets.area[i] == 0) ++sums.degenerate;
    if (facets.along[i] < 0) {
      ++sums.against;
      sums.areaAgainst += facets.area[i];
    }
  }
  sums.area += area;
}

// Goes through the triangles of a mesh, packed or as text, in blocks.
class FacetPass {
 public:
  FacetPass(const CheckedMesh& mesh, CheckReporter& reporter)
      : mesh_(mesh),
        reporter_(reporter),
        vertexCount_(static_cast<std::int64_t>(mesh.vertices.count / 3)),
        measured_(mesh.vertices.usable && mesh.vertices.finite && mesh.vertices.view.packed()),
        againstNormals_(mesh.normals.given && mesh.normals.usable && mesh.normals.finite &&
                        mesh.normals.view.packed() && mesh.normals.count / 3 >= mesh.vertices.count / 3) {}

  void run() {
    if (mesh_.triangles.view.packed()) {
      runPacked();
    } else {
      runText();
    }
    reportIndices();
    reportFacets();
  }

 private:
  void runPacked();
  void runText();
  void block(std::size_t firstIndex, std::size_t count);
  // Leaves out the triangles whose corners are no vertices, and counts these indices.
  std::size_t dropOutside(std::size_t firstIndex, std::size_t count);
  void outside(std::int32_t index, const char* where, std::size_t position);
  void noteTouched(const Range& range, std::size_t count);
  void reportIndices();
  void reportFacets();

  const CheckedMesh& mesh_;
  CheckReporter& reporter_;
  std::int64_t vertexCount_;
  bool measured_;
  bool againstNormals_;
  Corners corners_{};
  Facets facets_{};
  Sums sums_;
  std::uint64_t outside_ = 0;
  std::int32_t firstOutside_ = 0;
  std::size_t firstPosition_ = 0;
  const char* firstWhere_ = nullptr;
  std::size_t touched_ = 0;
};

void FacetPass::runPacked() {
  const std::string_view bytes = mesh_.triangles.view.bytes();
  const std::size_t indices = mesh_.triangles.count;
  for (std::size_t at = 0; at < indices; at += 3 * kBlock) {
    const std::size_t count = std::min(3 * kBlock, indices - at);
    loadIntegers(bytes.data() + at * 4, count, corners_.data());
    block(at, count);
  }
}

void FacetPass::runText() {
  NumberCursor cursor(mesh_.triangles.view);
  std::array<std::int32_t, 3> triangle{};
  std::size_t position = 0;
  while (const auto value = cursor.next()) {
    const auto index = static_cast<std::int32_t>(*value);
    if (index < 0 || index >= vertexCount_) outside(index, cursor.last(), position);
    triangle[position++ % 3] = index;
    const bool whole = position % 3 == 0;
    if (whole && (triangle[0] == triangle[1] || triangle[1] == triangle[2] || triangle[2] == triangle[0])) {
      ++sums_.degenerate;
    }
  }
}

void FacetPass::block(std::size_t firstIndex, std::size_t count) {
  Range range = rangeOf(corners_.data(), count);
  std::size_t triangles = count / 3;
  if (range.least < 0 || range.most >= vertexCount_) {
    triangles = dropOutside(firstIndex, count);
    range = rangeOf(corners_.data(), triangles * 3);
  }
  if (!measured_ || triangles == 0) return;
  gatherEdges(mesh_.vertices.view.bytes().data(), corners_, triangles, facets_);
  if (againstNormals_) gatherNormals(mesh_.normals.view.bytes().data(), corners_, triangles, facets_);
  measure(facets_, triangles);
  add(facets_, triangles, sums_);
  noteTouched(range, triangles);
}

std::size_t FacetPass::dropOutside(std::size_t firstIndex, std::size_t count) {
  const char* bytes = mesh_.triangles.view.bytes().data();
  std::size_t kept = 0;
  for (std::size_t i = 0; i < count; i += 3) {
    bool inside = i + 3 <= count;
    for (std::size_t corner = i; corner < std::min(i + 3, count); ++corner) {
      const std::int32_t index = corners_[corner];
      if (index >= 0 && index < vertexCount_) continue;
      outside(index, bytes + (firstIndex + corner) * 4, firstIndex + corner);
      inside = false;
    }
    if (!inside) continue;
    std::copy_n(corners_.begin() + static_cast<std::ptrdiff_t>(i), 3,
                corners_.begin() + static_cast<std::ptrdiff_t>(3 * kept));
    ++kept;
  }
  return kept;
}

void FacetPass::outside(std::int32_t index, const char* where, std::size_t position) {
  if (outside_++ > 0) return;
  firstOutside_ = index;
  firstWhere_ = where;
  firstPosition_ = position;
}

// A mesh of any size is gone through in bounded memory: where its triangles jump about, pages come in again and again.
void FacetPass::noteTouched(const Range& range, std::size_t count) {
  const auto span = static_cast<std::size_t>(range.most - range.least + 1) * 2 * kVectorBytes;
  touched_ += std::min(span, 6 * count * kFaultBytes) + count * kTriangleBytes;
  if (touched_ < kResidentStep) return;
  touched_ = 0;
  for (const CheckedArray* array : {&mesh_.vertices, &mesh_.normals, &mesh_.triangles}) {
    reporter_.passed(array->view.bytes());
  }
}

void FacetPass::reportIndices() {
  if (outside_ == 0) return;
  reporter_.report(CheckKind::kIndexOutOfRange,
                   reporter_.placeOf(mesh_.triangles.view, mesh_.triangles.place, firstWhere_),
                   fmt::format("{} of {} indices name none of the {} vertices; the first is {} in triangle {}",
                               outside_, mesh_.triangles.count, vertexCount_, firstOutside_, firstPosition_ / 3));
}

void FacetPass::reportFacets() {
  if (sums_.degenerate > 0) {
    reporter_.report(CheckKind::kDegenerateTriangles, mesh_.place,
                     fmt::format("{} of {} triangles have no area", sums_.degenerate, mesh_.triangles.count / 3));
  }
  if (againstNormals_ && sums_.areaAgainst > kSliverShare * sums_.area) {
    reporter_.report(CheckKind::kFacetsAgainstNormals, mesh_.place,
                     fmt::format("{} of {} triangles, {:.2g} of the area, look against their normals", sums_.against,
                                 mesh_.triangles.count / 3, sums_.areaAgainst / sums_.area));
  }
}

void checkMultiple(const CheckedArray& array, std::string_view name, std::size_t multiple, CheckReporter& reporter) {
  // A count of vectors is checked by the reader.
  if (!array.given || !array.usable || array.count % multiple == 0 || array.view.tag() == 'c') return;
  reporter.report(CheckKind::kWrongCount, array.place,
                  fmt::format("\"{}\" has {} values, no multiple of {}", name, array.count, multiple));
}

void checkEven(const CheckedArray& array, std::string_view what, std::size_t width, std::size_t vertices,
               CheckReporter& reporter) {
  if (!array.given || !array.usable || array.count / width == vertices) return;
  reporter.report(CheckKind::kUnevenCounts, array.place,
                  fmt::format("{} {} for {} vertices", array.count / width, what, vertices));
}

}  // namespace

std::uint64_t checkMesh(const CheckedMesh& mesh, CheckReporter& reporter) {
  checkMultiple(mesh.vertices, "vertices", 3, reporter);
  checkMultiple(mesh.normals, "normals", 3, reporter);
  checkMultiple(mesh.uvs, "uv_tex", 2, reporter);
  checkMultiple(mesh.triangles, "triangles", 3, reporter);
  const std::size_t vertices = mesh.vertices.count / 3;
  if (mesh.vertices.given && mesh.vertices.usable) {
    checkEven(mesh.normals, "normals", 3, vertices, reporter);
    checkEven(mesh.uvs, "pairs of texture coordinates", 2, vertices, reporter);
    if (mesh.triangles.given && mesh.triangles.usable) FacetPass(mesh, reporter).run();
  }
  return mesh.triangles.count / 3;
}

}  // namespace rpk

// All that is done with the bytes of a package, for damaged and random ones: it must end, stay within the bytes and
// keep its promises.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>
#include <string_view>

#include "tools/rpk/check.h"
#include "tools/rpk/drawing.h"
#include "tools/rpk/exact/exact_check.h"
#include "tools/rpk/exact/exact_mesh.h"
#include "tools/rpk/exact/exact_parts.h"
#include "tools/rpk/package_counts.h"
#include "tools/rpk/package_reader.h"
#include "tools/rpk/scene_summary.h"

namespace rpk_test {

// Counts what is open, and reads every array in every way.
class BalanceVisitor : public rpk::PackageVisitor {
 public:
  explicit BalanceVisitor(std::string_view range) : range_(range) {}
  void openBlock(const rpk::Block& block) override {
    ++depth_;
    look(block.place);
  }
  void closeBlock(const rpk::BlockEnd& end) override {
    if (--depth_ < 0) promisesKept_ = false;
    look(end.place);
  }
  void parameter(const rpk::Parameter& parameter) override {
    look(parameter.place);
    if (!parameter.array) return;
    values_ += parameter.array->doubles().size() + parameter.array->floats().size();
    values_ += parameter.array->integers().size();
  }
  void fault(const rpk::Fault& fault) override { look(fault.place); }
  bool promisesKept() const { return promisesKept_ && depth_ == 0; }

 private:
  void look(const rpk::Place& place) { promisesKept_ = promisesKept_ && place.offset <= range_.size(); }

  std::string_view range_;
  int depth_ = 0;
  std::size_t values_ = 0;
  bool promisesKept_ = true;
};

struct Reading {
  bool promisesKept = true;
  std::size_t exactSurfaces = 0;  // that could be read
  rpk::CheckReport check;
};

inline bool isSafe(const rpk::TriangleMesh& mesh) {
  return std::all_of(mesh.indices.begin(), mesh.indices.end(),
                     [&](std::uint32_t index) { return index < mesh.vertexCount(); });
}

inline bool allFinite(const std::vector<float>& values) {
  return std::all_of(values.begin(), values.end(), [](float value) { return std::isfinite(value); });
}

// Evaluates and meshes every exact surface that can be read, and counts these.
inline bool exactSurfacesAreSafe(const rpk::Scene& scene, std::size_t& count) {
  constexpr double kChord = 0.05;
  const rpk::ExactReport report = rpk::checkExact(scene, rpk::exactTolerance(1));
  const rpk::ExactSums sums = rpk::sumOf(rpk::exactParts(scene));
  bool safe = report.sound <= report.surfaces && sums.sound <= sums.surfaces && std::isfinite(sums.area);
  for (const rpk::PlacedGroup& placed : rpk::placedGroups(scene)) {
    if (!placed.group->holdsGeometry()) continue;
    for (const rpk::DrawnObject& drawn : rpk::drawnObjects(*placed.group)) {
      if (drawn.object->geometryType != "nurbs") continue;
      const auto trimmed = rpk::readTrimmedSurface(*drawn.object);
      if (!trimmed) continue;
      ++count;
      const rpk::TriangleMesh mesh = rpk::exactMesh(*trimmed, kChord);
      safe = safe && isSafe(mesh) && allFinite(mesh.positions) && allFinite(mesh.normals) && allFinite(mesh.uvs);
    }
  }
  return safe;
}

inline bool meshesAreSafe(const rpk::Scene& scene) {
  std::set<const rpk::Object*> seen;
  for (const rpk::PlacedGroup& placed : rpk::placedGroups(scene)) {
    for (const rpk::DrawnObject& drawn : rpk::drawnObjects(*placed.group)) {
      if (!seen.insert(drawn.object).second) continue;
      if (!isSafe(rpk::copyMesh(drawn.object->mesh))) return false;
    }
  }
  return true;
}

inline Reading readEverything(std::string_view bytes) {
  Reading reading;
  BalanceVisitor balance(bytes);
  const std::size_t faults = rpk::readPackage(bytes, balance);
  const rpk::PackageCounts counts = rpk::countPackage(bytes);
  const rpk::ByteCounts& kinds = counts.bytes;
  const rpk::Scene scene = rpk::readScene(bytes);
  std::size_t passed = 0;
  reading.check = rpk::checkPackage(bytes, {}, [&](std::string_view range) {
    if (range.data() < bytes.data() || range.data() + range.size() > bytes.data() + bytes.size()) ++passed;
  });
  reading.promisesKept = balance.promisesKept() && counts.faultCount == faults && scene.faultCount == faults &&
                         reading.check.count(rpk::CheckKind::kSyntax) == faults && passed == 0 &&
                         kinds.mesh + kinds.nurbs + kinds.animation + kinds.text == bytes.size() &&
                         meshesAreSafe(scene) && exactSurfacesAreSafe(scene, reading.exactSurfaces);
  for (const rpk::Finding& finding : reading.check.findings) {
    reading.promisesKept = reading.promisesKept && finding.place.offset <= bytes.size();
  }
  return reading;
}

}  // namespace rpk_test

// All that is done with the bytes of a package, for damaged and random ones: it must end, stay within the bytes and
// keep its promises.
#pragma once

#include <set>
#include <string_view>

#include "tools/rpk/check.h"
#include "tools/rpk/drawing.h"
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
  rpk::CheckReport check;
};

inline bool meshesAreSafe(const rpk::Scene& scene) {
  std::set<const rpk::Object*> seen;
  for (const rpk::PlacedGroup& placed : rpk::placedGroups(scene)) {
    for (const rpk::DrawnObject& drawn : rpk::drawnObjects(*placed.group)) {
      if (!seen.insert(drawn.object).second) continue;
      const rpk::TriangleMesh mesh = rpk::copyMesh(drawn.object->mesh);
      for (const std::uint32_t index : mesh.indices) {
        if (index >= mesh.vertexCount()) return false;
      }
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
                         meshesAreSafe(scene);
  for (const rpk::Finding& finding : reading.check.findings) {
    reading.promisesKept = reading.promisesKept && finding.place.offset <= bytes.size();
  }
  return reading;
}

}  // namespace rpk_test

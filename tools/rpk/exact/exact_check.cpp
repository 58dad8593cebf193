#include "tools/rpk/exact/exact_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "tools/rpk/drawing.h"
#include "tools/rpk/exact/trim_loops.h"
#include "tools/rpk/exact/trimmed_area.h"
#include "tools/rpk/vector_math.h"

namespace rpk {
namespace {

constexpr std::size_t kMostFindings = 100;
constexpr std::size_t kPolygonSteps = 8;

// The parameters that a surface's trims enclose, a little widened.
struct ParameterBox {
  Parameter2 low{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
  Parameter2 high{-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};

  void add(const Parameter2& point) {
    for (std::size_t i = 0; i < 2; ++i) {
      low[i] = std::min(low[i], point[i]);
      high[i] = std::max(high[i], point[i]);
    }
  }
  void widen() {
    for (std::size_t i = 0; i < 2; ++i) {
      const double margin = 0.02 * (high[i] - low[i]);
      low[i] -= margin;
      high[i] += margin;
    }
  }
  bool holds(const Parameter2& point) const {
    return point[0] >= low[0] && point[0] <= high[0] && point[1] >= low[1] && point[1] <= high[1];
  }
};

ParameterBox boxOf(const TrimmedSurface& trimmed) {
  ParameterBox box;
  for (const TrimLoop& loop : trimmed.loops) {
    for (const Parameter2& corner : samplePolygon(chainLoop(loop), kPolygonSteps)) box.add(corner);
  }
  if (trimmed.loops.empty()) {
    box.add({trimmed.surface.uMin(), trimmed.surface.vMin()});
    box.add({trimmed.surface.uMax(), trimmed.surface.vMax()});
  }
  box.widen();
  return box;
}

// The exact surfaces of one group beside its mesh.
class GroupCheck {
 public:
  // `number` is that of the next surface in the part.
  GroupCheck(const Group& group, std::string path, std::size_t& number, double size, double tolerance,
             ExactReport& report)
      : group_(group),
        path_(std::move(path)),
        number_(number),
        size_(size),
        tolerance_(tolerance * size),
        report_(report) {}

  void run() {
    for (const Object& object : group_.objects) {
      if (object.geometryType == "nurbs") readSurface(object);
    }
    if (surfaces_.empty()) return;
    for (const Object& object : group_.objects) {
      if (object.geometryType == "triangles") checkMesh(object.mesh);
    }
  }

 private:
  void readSurface(const Object& object) {
    const std::size_t number = number_++;
    JudgedSurface judged = judgeSurface(object);
    ++report_.surfaces;
    if (judged.sound()) ++report_.sound;
    for (std::string& fault : judged.faults) find(number, std::move(fault));
    if (!judged.trimmed) return;
    boxes_.push_back(boxOf(*judged.trimmed));
    surfaces_.push_back(std::move(*judged.trimmed));
  }

  void checkMesh(const MeshView& mesh) {
    ++report_.groups;
    const std::vector<float> positions = mesh.vertices.floats();
    const std::vector<float> uvs = mesh.uvs.floats();
    const std::size_t count = std::min(positions.size() / 3, uvs.size() / 2);
    std::size_t last = 0;
    std::size_t strays = 0;
    double widest = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const Vector position = {positions[3 * i], positions[3 * i + 1], positions[3 * i + 2]};
      const double away = nearest(position, {uvs[2 * i], uvs[2 * i + 1]}, last);
      if (away <= tolerance_) continue;
      ++strays;
      widest = std::max(widest, away);
    }
    report_.vertices += count;
    report_.strayVertices += strays;
    if (strays == 0) return;
    report_.widestStray = std::max(report_.widestStray, widest / size_);
    find(std::nullopt, fmt::format("{} of {} vertices of the mesh lie off the exact surfaces, by up to {:.3g}", strays,
                                   count, widest));
  }

  // The distance from the surface that the vertex belongs to: the one of the vertex before it, or one further on in
  // the list, else any.
  double nearest(const Vector& position, const Parameter2& uv, std::size_t& last) const {
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t step = 0; step < surfaces_.size(); ++step) {
      const std::size_t index = (last + step) % surfaces_.size();
      if (!boxes_[index].holds(uv)) continue;
      const double away = distance(surfaces_[index].surface.at(uv[0], uv[1]).position, position);
      least = std::min(least, away);
      if (away <= tolerance_) {
        last = index;
        break;
      }
    }
    return least;
  }

  void find(std::optional<std::size_t> number, std::string what) {
    if (report_.findings.size() >= kMostFindings) return;
    report_.findings.push_back({number ? fmt::format("{} / surface {}", path_, *number) : path_, std::move(what)});
  }

  const Group& group_;
  std::string path_;
  std::size_t& number_;
  double size_;
  double tolerance_;
  ExactReport& report_;
  std::vector<TrimmedSurface> surfaces_;
  std::vector<ParameterBox> boxes_;
};

void growByMeshes(const Group& group, Vector& low, Vector& high) {
  for (const Object& object : group.objects) {
    const std::vector<float> positions = object.mesh.vertices.floats();
    for (std::size_t i = 0; i < positions.size(); ++i) {
      const double value = positions[i];
      low[i % 3] = std::min(low[i % 3], value);
      high[i % 3] = std::max(high[i % 3], value);
    }
  }
  for (const auto& child : group.children) {
    if (child->materialGroup()) growByMeshes(*child, low, high);
  }
}

void checkPart(const Group& group, const std::string& path, double tolerance, ExactReport& report) {
  Vector low = {1e300, 1e300, 1e300};
  Vector high = {-1e300, -1e300, -1e300};
  growByMeshes(group, low, high);
  const double size = high[0] >= low[0] ? distance(low, high) : 1;
  std::size_t number = 0;
  GroupCheck(group, path, number, size, tolerance, report).run();
  for (const auto& child : group.children) {
    if (child->materialGroup()) GroupCheck(*child, path, number, size, tolerance, report).run();
  }
}

void checkGroups(const Group& group, const std::string& around, double tolerance, ExactReport& report) {
  const std::string path = around.empty() ? group.name : around + " / " + group.name;
  if (group.holdsGeometry()) checkPart(group, path, tolerance, report);
  for (const auto& child : group.children) {
    if (!child->materialGroup()) checkGroups(*child, path, tolerance, report);
  }
}

}  // namespace

bool ExactFacts::sound() const { return widestGap <= kLoopGap && flagsHold && area > 0 && std::isfinite(area); }

ExactFacts exactFacts(const TrimmedSurface& trimmed) {
  ExactFacts facts;
  const NurbsSurface& surface = trimmed.surface;
  const double side = std::max(surface.uMax() - surface.uMin(), surface.vMax() - surface.vMin());
  std::vector<Polygon> polygons;
  for (const TrimLoop& loop : trimmed.loops) {
    const ChainedLoop chain = chainLoop(loop);
    facts.widestGap = std::max(facts.widestGap, chain.gap / side);
    polygons.push_back(samplePolygon(chain, kPolygonSteps));
  }
  const std::vector<bool> flags = flagsThatHold(trimmed.loops, polygons);
  facts.flagsHold = std::all_of(flags.begin(), flags.end(), [](bool holds) { return holds; });
  facts.area = trimmedArea(trimmed);
  return facts;
}

JudgedSurface judgeSurface(const Object& object) {
  JudgedSurface judged;
  std::string unreadable;
  judged.trimmed = readTrimmedSurface(object, &unreadable);
  if (!judged.trimmed) {
    judged.faults.push_back(std::move(unreadable));
    return judged;
  }
  const ExactFacts& facts = judged.facts = exactFacts(*judged.trimmed);
  if (!(facts.widestGap <= kLoopGap)) {
    judged.faults.push_back(fmt::format("a loop is open by {:.3g} of the domain", facts.widestGap));
  }
  if (!facts.flagsHold) judged.faults.emplace_back("a loop is marked as the opposite of what its place says");
  if (!(facts.area > 0) || !std::isfinite(facts.area)) {
    judged.faults.push_back(fmt::format("the area within the trims is {:g}", facts.area));
  }
  return judged;
}

ExactReport checkExact(const Scene& scene, double tolerance) {
  ExactReport report;
  for (const auto& group : scene.groups) checkGroups(*group, {}, tolerance, report);
  return report;
}

double exactTolerance(double quality) {
  constexpr double kCoarsest = 0.0005;
  constexpr double kFinest = 0.0000001;
  const double share = quality < 0.000001 ? 0 : 1 + 0.2 * std::log(std::min(quality, 1.0));
  return 3 * (kCoarsest - share * (kCoarsest - kFinest)) + 1e-6;
}

}  // namespace rpk

#include "tools/rpk/exact/exact_parts.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cmath>
#include <unordered_map>
#include <utility>

#include "tools/rpk/drawing.h"

namespace rpk {
namespace {

using Objects = std::vector<const Object*>;

bool isExact(const Object& object) { return object.geometryType == "nurbs"; }

std::size_t exactCount(const Objects& objects) {
  std::size_t count = 0;
  for (const Object* object : objects) count += isExact(*object) ? 1 : 0;
  return count;
}

// What is to be evaluated, with the parts that it makes.
struct Work {
  std::vector<std::pair<ExactPart, Objects>> parts;
  std::size_t surfaces = 0;

  void add(const Group* group, Objects objects) {
    const std::size_t count = exactCount(objects);
    if (count == 0) return;
    surfaces += count;
    ExactPart& part = parts.emplace_back(ExactPart(), std::move(objects)).first;
    part.group = group;
    part.places = group ? 0 : 1;
  }
};

Work workOf(const Scene& scene) {
  Work work;
  Objects loose;
  for (const Object& object : scene.objects) loose.push_back(&object);
  work.add(nullptr, std::move(loose));
  const std::vector<PlacedGroup> placed = placedGroups(scene);
  for (const PlacedGroup& place : placed) {
    if (!place.group->holdsGeometry()) continue;
    Objects objects;
    for (const DrawnObject& drawn : drawnObjects(*place.group)) objects.push_back(drawn.object);
    work.add(place.group, std::move(objects));
  }
  std::unordered_map<const Group*, ExactPart*> partOf;
  for (auto& [part, objects] : work.parts) partOf.emplace(part.group, &part);
  for (const PlacedGroup& place : placed) {
    const auto found = partOf.find(geometryHolder(*place.group));
    if (found != partOf.end() && found->first) ++found->second->places;
  }
  return work;
}

void evaluate(ExactPart& part, const Objects& objects, const std::function<void()>& surfaceDone) {
  ExactSums& sums = part.sums;
  for (const Object* object : objects) {
    if (!isExact(*object)) {
      sums.meshArea += areaOf(copyMesh(object->mesh));
      continue;
    }
    const JudgedSurface judged = judgeSurface(*object);
    if (std::isfinite(judged.facts.area)) sums.area += judged.facts.area;
    if (judged.sound()) {
      ++sums.sound;
    } else {
      part.unsound.push_back({sums.surfaces, fmt::format("{}", fmt::join(judged.faults, "; "))});
    }
    ++sums.surfaces;
    surfaceDone();
  }
}

}  // namespace

void ExactSums::add(const ExactSums& other) {
  surfaces += other.surfaces;
  sound += other.sound;
  area += other.area;
  meshArea += other.meshArea;
}

std::optional<double> ExactSums::meshExcess() const {
  if (!(area > 0) || !(meshArea > 0)) return std::nullopt;
  return (meshArea / area - 1) * 100;
}

std::vector<ExactPart> exactParts(const Scene& scene, const SurfacesDone& progress) {
  Work work = workOf(scene);
  std::size_t done = 0;
  std::vector<ExactPart> parts;
  for (auto& [part, objects] : work.parts) {
    evaluate(part, objects, [&] {
      ++done;
      if (progress) progress(done, work.surfaces);
    });
    parts.push_back(std::move(part));
  }
  return parts;
}

ExactSums sumOf(const std::vector<ExactPart>& parts) {
  ExactSums sums;
  for (const ExactPart& part : parts) sums.add(part.sums);
  return sums;
}

}  // namespace rpk

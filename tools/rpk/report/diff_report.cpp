#include "tools/rpk/report/diff_report.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "tools/rpk/report/display_text.h"

namespace rpk {
namespace {

using Json = nlohmann::ordered_json;
using Counts = std::array<std::uint64_t, kDifferenceKinds>;

Counts countKinds(const std::vector<Difference>& differences) {
  Counts counts{};
  for (const Difference& difference : differences) ++counts[static_cast<std::size_t>(difference.kind)];
  return counts;
}

// "3 differences: 1 moved, 2 recoloured"
std::string summary(const std::vector<Difference>& differences) {
  const Counts counts = countKinds(differences);
  std::vector<std::string> parts;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts[i] == 0) continue;
    parts.push_back(fmt::format("{} {}", grouped(counts[i]), differenceKindName(static_cast<DifferenceKind>(i))));
  }
  return fmt::format("{}: {}", counted(differences.size(), "difference", "differences"), fmt::join(parts, ", "));
}

Json countsJson(const DrawnCounts& counts) {
  return {{"vertices", counts.vertices}, {"triangles", counts.triangles}, {"surfaces", counts.surfaces}};
}

Json differenceJson(const Difference& difference) {
  Json json = {{"kind", differenceKindName(difference.kind)},
               {"path", jsonText(difference.path)},
               {"what", jsonText(difference.what)}};
  switch (difference.kind) {
    case DifferenceKind::kMoved:
      json["distance"] = difference.distance;
      json["degrees"] = difference.degrees;
      break;
    case DifferenceKind::kAdded:
      json["after"] = countsJson(difference.after);
      break;
    case DifferenceKind::kRemoved:
      json["before"] = countsJson(difference.before);
      break;
    case DifferenceKind::kRemeshed:
      json["before"] = countsJson(difference.before);
      json["after"] = countsJson(difference.after);
      break;
    default:
      break;
  }
  return json;
}

}  // namespace

std::string diffText(const std::vector<Difference>& differences, const DiffedFiles& files) {
  if (differences.empty()) {
    return fmt::format("{} and {} are the same{}\n", displayText(files.first), displayText(files.second),
                       files.sameBytes ? ", byte for byte" : "");
  }
  std::size_t widest = 0;
  for (const Difference& difference : differences) {
    widest = std::max(widest, differenceKindName(difference.kind).size());
  }
  std::string text;
  for (const Difference& difference : differences) {
    text += fmt::format("{:{}}", differenceKindName(difference.kind), widest + 2);
    if (!difference.path.empty()) text += displayText(difference.path) + ": ";
    text += displayText(difference.what) + '\n';
  }
  return text + summary(differences) + '\n';
}

nlohmann::ordered_json diffJson(const std::vector<Difference>& differences, const DiffedFiles& files) {
  Json json;
  json["first"] = jsonText(files.first);
  json["second"] = jsonText(files.second);
  json["same"] = differences.empty();
  json["same_bytes"] = files.sameBytes;
  json["counts"] = Json::object();
  const Counts counts = countKinds(differences);
  for (std::size_t i = 0; i < counts.size(); ++i) {
    if (counts[i] > 0) json["counts"][std::string(differenceKindName(static_cast<DifferenceKind>(i)))] = counts[i];
  }
  json["differences"] = Json::array();
  for (const Difference& difference : differences) json["differences"].push_back(differenceJson(difference));
  return json;
}

}  // namespace rpk

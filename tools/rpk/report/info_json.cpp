#include "tools/rpk/report/info_json.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <unordered_map>

#include "tools/rpk/drawing.h"
#include "tools/rpk/report/display_text.h"
#include "tools/rpk/report/placement_text.h"

namespace rpk {
namespace {

using Json = nlohmann::ordered_json;

Json matrixJson(const std::optional<Matrix>& matrix) { return matrix ? Json(*matrix) : Json(nullptr); }

Json listJson(const std::vector<std::string>& texts) {
  Json list = Json::array();
  for (const std::string& text : texts) list.push_back(jsonText(text));
  return list;
}

Json valuesJson(const std::map<std::string, std::string>& values) {
  Json json = Json::object();
  for (const auto& [name, value] : values) json[jsonText(name)] = jsonText(value);
  return json;
}

Json countsJson(const PackageInfo& info) {
  const PackageCounts& counts = info.counts;
  return {{"groups", counts.groups},
          {"assemblies", info.assemblies},
          {"occurrences", counts.occurrences},
          {"material_groups", info.materialGroups},
          {"objects", counts.objects},
          {"meshes", info.meshes},
          {"references", counts.references},
          {"vertices", counts.vertices},
          {"triangles", counts.triangles},
          {"triangles_placed", counts.trianglesPlaced},
          {"surfaces", counts.nurbsObjects},
          {"trimmed_surfaces", info.trims.trimmed},
          {"trim_loops", info.trims.loops},
          {"trim_curves", info.trims.curves},
          {"materials", info.materials.size()},
          {"cameras", counts.cameras},
          {"animations", counts.animations}};
}

Json boxJson(const PackageInfo& info) {
  const Box& box = info.box.box;
  if (box.empty()) return nullptr;
  const auto metres = [&](Vector values) {
    for (double& value : values) value /= info.unitsPerMetre;
    return values;
  };
  return {{"low", box.low},
          {"high", box.high},
          {"size", box.size()},
          {"low_metres", metres(box.low)},
          {"high_metres", metres(box.high)},
          {"size_metres", metres(box.size())},
          {"exact", info.box.exact}};
}

Json camerasJson(const Scene& scene) {
  Json list = Json::array();
  for (const Camera& camera : scene.cameras) {
    list.push_back({{"name", jsonText(camera.name)},
                    {"values", valuesJson(camera.values)},
                    {"transform", matrixJson(camera.transform)},
                    {"environment", camera.environment ? Json(jsonText(camera.environment->type)) : Json(nullptr)}});
  }
  return list;
}

Json materialsJson(const PackageInfo& info) {
  Json list = Json::array();
  for (const MaterialUse& use : info.materials) {
    const Material& material = use.material;
    list.push_back({{"name", jsonText(material.name)},
                    {"shader", jsonText(material.surface.type)},
                    {"colour", material.colour ? Json(colourText(*material.colour)) : Json(nullptr)},
                    {"texture", material.texture.empty() ? Json(nullptr) : Json(jsonText(material.texture))},
                    {"objects", use.objects}});
  }
  return list;
}

Json animationsJson(const PackageInfo& info) {
  Json list = Json::array();
  for (const Group* group : info.animated) {
    for (const Animation& animation : group->animations) {
      list.push_back({{"group", jsonText(groupPath(*group))},
                      {"type", jsonText(animation.type)},
                      {"name", jsonText(animation.name)},
                      {"values", valuesJson(animation.values)},
                      {"matrices", animation.matrices.size()},
                      {"timestamps", animation.timestamps.size()}});
    }
  }
  return list;
}

Json exactJson(const ExactSums& sums) {
  const std::optional<double> excess = sums.meshExcess();
  return {{"surfaces", sums.surfaces},
          {"sound", sums.sound},
          {"area", sums.area},
          {"mesh_area", sums.meshArea},
          {"difference_percent", excess ? Json(*excess) : Json(nullptr)}};
}

Json exactJson(const std::vector<ExactPart>& parts) {
  const ExactSums sums = sumOf(parts);
  Json json = exactJson(sums);
  json["sound_share"] =
      sums.surfaces == 0 ? Json(nullptr) : Json(static_cast<double>(sums.sound) / static_cast<double>(sums.surfaces));
  json["unsound"] = Json::array();
  for (const ExactPart& part : parts) {
    for (const UnsoundSurface& surface : part.unsound) {
      json["unsound"].push_back({{"group", part.group ? Json(jsonText(groupPath(*part.group))) : Json(nullptr)},
                                 {"surface", surface.number},
                                 {"what", surface.what}});
    }
  }
  return json;
}

using ExactByHolder = std::unordered_map<const Group*, const ExactPart*>;

ExactByHolder exactByHolder(const PackageInfo& info) {
  ExactByHolder parts;
  if (!info.exact) return parts;
  for (const ExactPart& part : *info.exact) parts.emplace(part.group, &part);
  return parts;
}

Json groupsJson(const PackageInfo& info, const ExactByHolder& exact, const std::vector<std::unique_ptr<Group>>& groups,
                std::size_t depth) {
  Json list = Json::array();
  if (depth == 0) return list;
  for (const auto& group : groups) {
    Json json = {{"name", jsonText(group->name)},
                 {"kind", groupKindName(groupKind(*group))},
                 {"flags", group->hasFlags ? Json(group->flags) : Json(nullptr)},
                 {"placement", matrixJson(group->placement)},
                 {"triangles", info.trianglesAt(*group)}};
    if (const Object* reference = group->reference()) json["source"] = jsonText(reference->source);
    const Group* holder = group->materialGroup() ? nullptr : geometryHolder(*group);
    const auto part = exact.find(holder);
    if (holder && part != exact.end()) json["exact"] = exactJson(part->second->sums);
    json["groups"] = groupsJson(info, exact, group->children, depth - 1);
    list.push_back(std::move(json));
  }
  return list;
}

Json faultsJson(const Scene& scene) {
  Json list = Json::array();
  for (const Fault& fault : scene.faults) {
    list.push_back({{"line", fault.place.line},
                    {"offset", fault.place.offset},
                    {"path", jsonText(fault.path)},
                    {"what", jsonText(fault.what)}});
  }
  return list;
}

}  // namespace

nlohmann::ordered_json infoJson(const PackageInfo& info, std::string_view file, std::size_t depth) {
  const Scene& scene = info.scene;
  Json json;
  json["file"] = jsonText(file);
  json["bytes"] = info.fileBytes;
  const ByteCounts& bytes = info.counts.bytes;
  json["content"] = {
      {"mesh", bytes.mesh}, {"exact", bytes.nurbs}, {"animation", bytes.animation}, {"text", bytes.text}};
  json["variant"] = scene.headerVariant;
  json["headers"] = listJson(scene.headers);
  json["modules"] = listJson(scene.modules);
  json["options"] = Json::object();
  // The first of a name counts.
  for (const auto& [name, value] : scene.options) json["options"].emplace(jsonText(name), jsonText(value));
  json["units_per_metre"] = info.unitsPerMetre;
  json["counts"] = countsJson(info);
  json["box"] = boxJson(info);
  json["cameras"] = camerasJson(scene);
  json["materials"] = materialsJson(info);
  json["animations"] = animationsJson(info);
  if (info.exact) json["exact"] = exactJson(*info.exact);
  json["groups"] = groupsJson(info, exactByHolder(info), scene.groups, depth);
  json["fault_count"] = scene.faultCount;
  json["faults"] = faultsJson(scene);
  return json;
}

}  // namespace rpk

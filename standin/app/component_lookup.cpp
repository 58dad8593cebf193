#include "standin/app/component_lookup.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <cwctype>
#include <optional>
#include <utility>

#include "standin/app/failure.h"
#include "standin/windows/code_page.h"
#include "tools/terminal/suggestion.h"

namespace standin {
namespace {

std::wstring lowered(std::wstring text) {
  for (wchar_t& character : text) character = static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(character)));
  return text;
}

std::optional<int> asId(const std::string& text) {
  int id = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return id;
}

// The name without an extension, and the type that the extension says.
std::pair<std::wstring, std::optional<ProMdlType>> splitName(const std::string& text) {
  std::wstring name = lowered(wideFromUtf8(text));
  const auto cut = [&name](const wchar_t* extension) {
    const bool ends = name.size() > 4 && name.compare(name.size() - 4, 4, extension) == 0;
    if (ends) name.resize(name.size() - 4);
    return ends;
  };
  if (cut(L".prt")) return {name, PRO_MDL_PART};
  if (cut(L".asm")) return {name, PRO_MDL_ASSEMBLY};
  return {name, std::nullopt};
}

bool isNamed(const Model& model, const std::string& text) {
  if (lowered(model.name) == lowered(wideFromUtf8(text))) return true;
  const auto [name, type] = splitName(text);
  return type == model.type && lowered(model.name) == name;
}

bool isComponent(const Feature& feature) { return feature.type == PRO_FEAT_COMPONENT; }

std::vector<std::string> componentNames(const Model& owner) {
  std::vector<std::string> names;
  for (const Feature& feature : owner.features) {
    if (isComponent(feature) && feature.component) names.push_back(utf8FromWide(feature.component->name));
  }
  return names;
}

// One step of a path.
struct Step {
  std::string name;  // without escapes
  std::optional<int> id;
  std::optional<int> occurrence;  // from 1
};

[[noreturn]] void failAmbiguous(const Model& owner, const Step& step, const std::vector<Feature*>& found) {
  std::vector<int> ids;
  ids.reserve(found.size());
  for (const Feature* feature : found) ids.push_back(feature->id);
  throw Failure(ExitCode::kUsage,
                fmt::format("{} holds \"{}\" {} times: say which by its id, one of {}, or by {}:n", displayName(owner),
                            step.name, ids.size(), fmt::join(ids, ", "), step.name));
}

Feature& findStep(Model& owner, const Step& step) {
  std::vector<Feature*> found;
  for (Feature& feature : owner.features) {
    if (!isComponent(feature)) continue;
    if (step.id && feature.id == *step.id) return feature;
    if (feature.component && isNamed(*feature.component, step.name)) found.push_back(&feature);
  }
  if (found.empty()) {
    throw Failure(ExitCode::kUsage, fmt::format("{} has no component \"{}\"{}", displayName(owner), step.name,
                                                terminal::didYouMean(step.name, componentNames(owner))));
  }
  if (!step.occurrence) {
    if (found.size() > 1) failAmbiguous(owner, step, found);
    return *found.front();
  }
  if (*step.occurrence < 1 || static_cast<std::size_t>(*step.occurrence) > found.size()) {
    throw Failure(ExitCode::kUsage, fmt::format("{} has no component \"{}:{}\": it is placed {} times",
                                                displayName(owner), step.name, *step.occurrence, found.size()));
  }
  return *found[static_cast<std::size_t>(*step.occurrence) - 1];
}

std::vector<Step> splitPath(const std::string& path) {
  std::vector<Step> steps(1);
  std::size_t colon = std::string::npos;  // of the step being read, in its name
  const auto finishStep = [&] {
    Step& step = steps.back();
    if (colon != std::string::npos) {
      step.occurrence = asId(step.name.substr(colon + 1));
      if (step.occurrence) step.name.resize(colon);
    } else {
      step.id = asId(step.name);
    }
    colon = std::string::npos;
  };
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (path[i] == '/') {
      finishStep();
      steps.emplace_back();
      continue;
    }
    if (path[i] == ':') colon = steps.back().name.size();
    if (path[i] == '\\' && i + 1 < path.size()) ++i;
    steps.back().name += path[i];
  }
  finishStep();
  steps.erase(std::remove_if(steps.begin(), steps.end(), [](const Step& step) { return step.name.empty(); }),
              steps.end());
  return steps;
}

}  // namespace

std::string displayName(const Model& model) {
  return utf8FromWide(model.name) + (model.type == PRO_MDL_ASSEMBLY ? ".asm" : ".prt");
}

Component findComponent(Model& top, const std::string& path) {
  Component result;
  Model* owner = &top;
  for (const Step& step : splitPath(path)) {
    if (!owner) {
      throw Failure(ExitCode::kUsage,
                    fmt::format("{}: component {} has no model in session", path, result.path.back()));
    }
    result.owner = owner;
    result.feature = &findStep(*owner, step);
    result.path.push_back(result.feature->id);
    owner = result.feature->component;
  }
  if (!result.feature) throw Failure(ExitCode::kUsage, "a component path is expected, such as 3/5");
  return result;
}

bool isComponentPath(const std::string& text) {
  const std::vector<Step> steps = splitPath(text);
  return steps.size() > 1 || (steps.size() == 1 && (steps.front().id || steps.front().occurrence));
}

Model* findModelByName(Session& session, const std::string& name) {
  for (const auto& model : session.models()) {
    if (isNamed(*model, name)) return model.get();
  }
  return nullptr;
}

Model& requireModel(Session& session, const std::string& name) {
  if (Model* model = findModelByName(session, name)) return *model;
  std::vector<std::string> names;
  for (const auto& model : session.models()) names.push_back(utf8FromWide(model->name));
  throw Failure(ExitCode::kUsage, fmt::format("no model \"{}\" in session{}", name, terminal::didYouMean(name, names)));
}

}  // namespace standin

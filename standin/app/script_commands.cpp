// What each command of a script does; the table of the commands is in script.cpp.
#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cwchar>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "standin/app/component_change.h"
#include "standin/app/component_lookup.h"
#include "standin/app/misuse.h"
#include "standin/app/script.h"
#include "standin/windows/code_page.h"
#include "tools/terminal/suggestion.h"

namespace standin {
namespace {

double parseNumber(const std::string& text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
    failUsage(fmt::format("\"{}\" is not a number", text));
  }
  return value;
}

std::string remarks(const Model& owner, const Feature& feature) {
  const std::vector<std::string> parts = componentRemarks(owner, feature);
  return parts.empty() ? std::string() : fmt::format("  ({})", fmt::join(parts, ", "));
}

void printComponents(std::ostream& output, const Model& owner, std::size_t depth, std::size_t limit) {
  if (depth > limit) return;
  for (const Feature& feature : owner.features) {
    if (feature.type != PRO_FEAT_COMPONENT) continue;
    const std::string name = feature.component ? displayName(*feature.component) : "model not in session";
    fmt::print(output, "{:{}}{}  {}{}\n", "", 2 * depth, feature.id, name, remarks(owner, feature));
    if (feature.component) printComponents(output, *feature.component, depth + 1, limit);
  }
}

void collectModels(Model& model, std::set<Model*>& models) {
  if (!models.insert(&model).second) return;
  for (const Feature& feature : model.features) {
    if (feature.component) collectModels(*feature.component, models);
  }
}

Layer* findLayer(Model& model, const std::wstring& name) {
  const auto found =
      std::find_if(model.layers.begin(), model.layers.end(), [&](const Layer& layer) { return layer.name == name; });
  return found == model.layers.end() ? nullptr : &*found;
}

struct NamedMode {
  const char* name;
  ProMode mode;
};
constexpr std::array<NamedMode, 5> kModes = {{{"none", PRO_MODE_UNUSED},
                                              {"section", PRO_MODE_SECTION},
                                              {"part", PRO_MODE_PART},
                                              {"drawing", PRO_MODE_DRAWING},
                                              {"assembly", PRO_MODE_ASSEMBLY}}};

const char* modeName(ProMode mode) {
  for (const NamedMode& named : kModes) {
    if (named.mode == mode) return named.name;
  }
  return "unknown";
}

}  // namespace

Model& Script::current() {
  if (!bench_.session().current) failUsage("no model is open");
  return *bench_.session().current;
}

void Script::open(const Arguments& arguments) {
  std::optional<std::filesystem::path> overlay;
  if (arguments.size() > 1) overlay = arguments[1];
  bench_.open(arguments[0], overlay);
  fmt::print(output_, "opened {}\n", displayName(current()));
}

void Script::close(const Arguments&) {
  current();
  bench_.session().current = nullptr;
  bench_.session().mode = PRO_MODE_UNUSED;
}

void Script::tree(const Arguments& arguments) {
  std::size_t limit = PRO_MAX_ASSEM_LEVEL;
  if (!arguments.empty()) {
    const std::string& text = arguments[0];
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), limit);
    if (error != std::errc() || end != text.data() + text.size()) failUsage(fmt::format("\"{}\" is not a depth", text));
  }
  fmt::print(output_, "{}\n", displayName(current()));
  printComponents(output_, current(), 1, limit);
}

void Script::answer(const Arguments& arguments) {
  const bool opens = arguments[0] == "open";
  const bool bareCancel = arguments.size() == 1 && arguments[0] == "cancel";
  if (!bareCancel && (arguments.size() != 2 || (!opens && arguments[0] != "save"))) {
    failUsage("usage: answer save|open PATH|cancel");
  }
  Session& session = bench_.session();
  std::deque<FileAnswer>& answers = opens ? session.openAnswers : session.fileAnswers;
  answers.push_back(arguments.back() == "cancel" ? FileAnswer() : bench_.resolve(arguments.back()));
}

void Script::dialog(const Arguments& arguments) {
  const std::string& what = arguments[1];
  DialogStep step;
  step.line = line_;
  if (what == "set" && arguments.size() >= 4) {
    step.kind = DialogStep::Kind::set;
    step.value = fmt::format("{}", fmt::join(arguments.begin() + 3, arguments.end(), " "));
  } else if (what == "press" && arguments.size() == 3) {
    step.kind = DialogStep::Kind::press;
  } else if (what == "show" && arguments.size() == 2) {
    step.kind = DialogStep::Kind::show;
  } else {
    failUsage("usage: dialog NAME set COMPONENT VALUE | press COMPONENT | show");
  }
  if (arguments.size() > 2) step.component = arguments[2];
  dialogSteps_.add(arguments[0], std::move(step));
}

void Script::representation(const Arguments& arguments) {
  auto& answers = bench_.session().representationAnswers;
  const std::string& name = arguments[0];
  if (name == "cancel") {
    answers.emplace_back(std::nullopt);
    return;
  }
  if (name == "master") {
    answers.emplace_back(std::wstring());
    return;
  }
  std::vector<std::string> names = {"master"};
  for (const SimplifiedRep& candidate : current().representations) names.push_back(utf8FromWide(candidate.name));
  if (std::find(names.begin(), names.end(), name) == names.end()) {
    failUsage(fmt::format("{} has no representation \"{}\"{}", displayName(current()), name,
                          terminal::didYouMean(name, names)));
  }
  answers.emplace_back(wideFromUtf8(name));
}

void Script::pick(const Arguments& arguments) {
  if (arguments[0] == "cancel") {
    bench_.session().selectionAnswers.emplace_back(std::nullopt);
    return;
  }
  std::vector<std::vector<int>> paths;
  for (const std::string& argument : arguments) {
    paths.push_back(argument == "top" ? std::vector<int>() : findComponent(current(), argument).path);
  }
  bench_.session().selectionAnswers.emplace_back(std::move(paths));
}

void Script::move(const Arguments& arguments) {
  const Component component = findComponent(current(), arguments[0]);
  std::array<double, 3> shift = {};
  for (std::size_t i = 0; i < shift.size(); ++i) shift[i] = parseNumber(arguments[i + 1]);
  moveComponent(bench_.session(), component, shift);
}

void Script::setStatus(const std::string& path, ProFeatStatus status) {
  setComponentStatus(bench_.session(), findComponent(current(), path), status);
}

void Script::suppress(const Arguments& arguments) { setStatus(arguments[0], PRO_FEAT_SUPPRESSED); }

void Script::resume(const Arguments& arguments) { setStatus(arguments[0], PRO_FEAT_ACTIVE); }

void Script::hide(const Arguments& arguments) { setComponentHidden(findComponent(current(), arguments[0]), true); }

void Script::unhide(const Arguments& arguments) { setComponentHidden(findComponent(current(), arguments[0]), false); }

void Script::addToLayer(const std::string& name, const std::string& path) {
  const Component component = findComponent(current(), path);
  const std::wstring wide = wideFromUtf8(name);
  Layer* found = findLayer(*component.owner, wide);
  Layer& target = found ? *found : component.owner->addLayer(wide);
  if (!holdsFeature(target, *component.feature)) target.items.emplace_back(PRO_LAYER_FEAT, component.feature->id);
}

void Script::showLayer(const std::string& name, ProLayerDisplay display) {
  std::set<Model*> models;
  collectModels(current(), models);
  std::vector<std::string> names;
  bool any = false;
  for (Model* model : models) {
    for (Layer& candidate : model->layers) {
      names.push_back(utf8FromWide(candidate.name));
      if (names.back() != name) continue;
      candidate.display = display;
      any = true;
    }
  }
  if (!any) {
    failUsage(fmt::format("{} has no layer \"{}\"{}", displayName(current()), name, terminal::didYouMean(name, names)));
  }
}

void Script::layer(const Arguments& arguments) {
  const std::string& what = arguments[1];
  if (what == "add" && arguments.size() == 3) {
    addToLayer(arguments[0], arguments[2]);
  } else if (what == "blank" && arguments.size() == 2) {
    showLayer(arguments[0], PRO_LAYER_TYPE_BLANK);
  } else if (what == "show" && arguments.size() == 2) {
    showLayer(arguments[0], PRO_LAYER_TYPE_NORMAL);
  } else {
    failUsage("usage: layer NAME blank | show | add PATH");
  }
}

void Script::colour(const Arguments& arguments) {
  Point colour = {};
  for (std::size_t i = 0; i < colour.size(); ++i) {
    colour[i] = parseNumber(arguments[i + 1]);
    if (colour[i] < 0 || colour[i] > 1) failUsage("a colour's numbers go from 0 to 1");
  }
  if (isComponentPath(arguments[0])) {
    paintComponent(bench_.session(), findComponent(current(), arguments[0]), plainAppearance(colour));
    return;
  }
  paintModel(bench_.session(), requireModel(bench_.session(), arguments[0]), plainAppearance(colour));
}

void Script::touch(const Arguments& arguments) { bench_.session().touch(requireModel(bench_.session(), arguments[0])); }

void Script::rename(const Arguments& arguments) {
  Model& model = requireModel(bench_.session(), arguments[0]);
  bench_.session().renameModel(model, wideFromUtf8(arguments[1]));
  fmt::print(output_, "renamed to {}\n", displayName(model));
}

void Script::set(const Arguments& arguments) {
  SettingsFile settings(settingsFile_);
  if (arguments.empty()) {
    for (const SettingsFile::Setting& setting : SettingsFile::settings()) {
      fmt::print(output_, "{:<18} {:<20} {:<10} ({})\n", setting.name, setting.element, settings.text(setting.name),
                 setting.values);
    }
    return;
  }
  if (arguments.size() != 2) failUsage("usage: set [NAME VALUE]");
  settings.set(arguments[0], arguments[1]);
  settings.save();
  // The plug-in reads its settings when it starts and at no other time.
  if (!bench_.plugin().loaded()) return;
  bench_.plugin().unload(bench_.session());
  fmt::print(output_, "the plug-in starts anew with this at its next command; what it held is forgotten\n");
}

void Script::commands(const Arguments&) {
  bench_.plugin().load();
  Session& session = bench_.session();
  for (const Command& command : session.commands()) {
    const auto label = session.message(command.messageFile, command.labelKey);
    const std::string text = label ? utf8FromWide(*label) : fmt::format("no text for {}", command.labelKey);
    fmt::print(output_, "{:<22} \"{}\"  {}\n", command.name, text, command.icons.empty() ? "" : command.icons.back());
  }
}

// The quotes of the name may be left out.
void Script::run(const Arguments& arguments) { runCommand(fmt::format("{}", fmt::join(arguments, " "))); }

void Script::render(const Arguments&) { runCommand("Rendara Render"); }

void Script::update(const Arguments&) { runCommand("Rendara Update"); }

void Script::tellDialogs() {
  output_ << dialogSteps_.takeText();
  if (const auto failed = dialogSteps_.takeFailure()) {
    line_ = failed->line;
    failUsage(failed->message);
  }
}

CommandReport Script::runWithDialogs(const std::string& name) {
  struct UserSide {
    UserSide(Session& owner, DialogSteps& steps)
        : session(owner), before(std::exchange(owner.onDialog, [&steps](Dialog& open) { steps.answer(open); })) {}
    ~UserSide() { session.onDialog = std::move(before); }
    UserSide(const UserSide&) = delete;
    UserSide& operator=(const UserSide&) = delete;
    Session& session;
    std::function<void(Dialog&)> before;
  };
  const UserSide userSide(bench_.session(), dialogSteps_);
  try {
    CommandReport report = bench_.run(name);
    tellDialogs();
    return report;
  } catch (const Failure&) {
    tellDialogs();
    throw;
  }
}

void Script::runCommand(const std::string& name) {
  const CommandReport report = runWithDialogs(name);
  if (!report.printed.empty()) fmt::print(output_, "the plug-in says \"{}\"\n", report.printed);
  if (report.result != 0) fmt::print(output_, "the command gave {}\n", report.result);
  for (const WrittenPackage& package : report.packages) {
    fmt::print(output_, "wrote {}", package.path.string());
    if (package.counts) {
      const rpk::PackageCounts& counts = *package.counts;
      fmt::print(output_, ": {} occurrences, {} references, {} triangles", counts.occurrences, counts.references,
                 counts.triangles);
    }
    fmt::print(output_, "\n");
  }
}

void Script::mode(const Arguments& arguments) {
  if (arguments.empty()) {
    fmt::print(output_, "{}\n", modeName(bench_.session().mode));
    return;
  }
  std::vector<std::string> names;
  for (const NamedMode& named : kModes) {
    names.emplace_back(named.name);
    if (arguments[0] != named.name) continue;
    bench_.session().mode = named.mode;
    return;
  }
  failUsage(fmt::format("no mode \"{}\"{}", arguments[0], terminal::didYouMean(arguments[0], names)));
}

void Script::status(const Arguments&) {
  Session& session = bench_.session();
  fmt::print(output_, "model: {}\n", session.current ? displayName(*session.current) : "none");
  fmt::print(output_, "mode: {}\n", modeName(session.mode));
  fmt::print(output_, "plug-in: {}\n", bench_.plugin().loaded() ? "loaded" : "not loaded");
  fmt::print(output_,
             "waiting answers: {} to file dialogs, {} to selections, {} to representations, {} steps in dialogs\n",
             session.fileAnswers.size() + session.openAnswers.size(), session.selectionAnswers.size(),
             session.representationAnswers.size(), dialogSteps_.waiting());
  const std::vector<std::string> misuse = notedMisuse(session);
  fmt::print(output_, "misuse: {}\n", misuse.size());
  for (const std::string& line : misuse) fmt::print(output_, "  {}\n", line);
}

}  // namespace standin

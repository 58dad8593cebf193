#include "tools/rpk/check_script.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <string>

#include "tools/rpk/check_grammar.h"

namespace rpk {
namespace {

// The lines of the header in their order; the title alone may be missing, and the id line tells a file from a link.
enum HeaderLine { kVariantLine, kImportLine, kIdLine, kTitleLine };
constexpr std::array<std::string_view, 4> kHeaderLines = {"//---vantor:dal:", "//---import:dal:1---", "//---id:1---",
                                                          "// This is a Rendara scene file"};

constexpr std::array<std::string_view, 8> kRenderOptions = {
    "import_mode",          "import_merge_groups", "import_merge_objects", "import_adjust_environment",
    "import_keep_original", "import_up_vector",    "meter_scale",          "ext"};
constexpr std::array<std::string_view, 9> kExportOptions = {"import_mode",
                                                            "import_merge_groups",
                                                            "import_merge_objects",
                                                            "import_keep_original",
                                                            "import_adjust_environment",
                                                            "import_adjust_camera",
                                                            "import_up_vector",
                                                            "meter_scale",
                                                            "ext"};
constexpr std::array<std::string_view, 9> kUpdateOptions = {"import_mode",
                                                            "import_merge_groups",
                                                            "import_merge_objects",
                                                            "import_adjust_environment",
                                                            "import_adjust_camera",
                                                            "import_keep_original",
                                                            "import_up_vector",
                                                            "meter_scale",
                                                            "ext"};

constexpr std::string_view kExactSurfaceModule = "vntgeometry_nurbs.so";
constexpr std::string_view kOptionsModule = "vntrtopt.so";

int headerLine(std::string_view text) {
  if (text.starts_with(kHeaderLines[kVariantLine])) return kVariantLine;
  const auto* const found = std::find(kHeaderLines.begin() + 1, kHeaderLines.end(), text);
  return found == kHeaderLines.end() ? -1 : static_cast<int>(found - kHeaderLines.begin());
}

}  // namespace

void ScriptCheck::comment(const Comment& comment, bool atTop) {
  const int line = headerLine(comment.text);
  if (line < 0) {
    if (comment.header())
      reporter_.report(CheckKind::kUnknownKeyword, comment.place, "a header line that is not known");
    return;
  }
  if (!atTop || headerEnded_) {
    reporter_.report(CheckKind::kHeaderOrder, comment.place, "a line of the header behind the header");
    return;
  }
  if (has(line)) {
    reporter_.report(CheckKind::kHeaderOrder, comment.place, "a line of the header for the second time");
  } else if (line < lastLine_) {
    reporter_.report(CheckKind::kHeaderOrder, comment.place,
                     fmt::format("this line belongs before {}", kHeaderLines[static_cast<std::size_t>(lastLine_)]));
  }
  seenLines_ |= 1U << static_cast<unsigned>(line);
  lastLine_ = std::max(lastLine_, line);
  if (line == kVariantLine) checkVariant(comment.text, comment.place);
}

void ScriptCheck::checkVariant(std::string_view text, const Place& place) {
  const std::string_view number = text.substr(kHeaderLines[kVariantLine].size());
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), variant_);
  const std::string_view rest(end, static_cast<std::size_t>(number.data() + number.size() - end));
  if (error != std::errc() || rest != "---" || (variant_ != 4 && variant_ != 5 && variant_ != 7)) {
    reporter_.report(CheckKind::kBadValue, place, "the variant in the header is none of 4, 5 and 7");
    variant_ = 0;
  }
  variantPlace_ = place;
}

void ScriptCheck::endHeader() {
  if (headerEnded_) return;
  headerEnded_ = true;
  for (const int line : {kVariantLine, kImportLine}) {
    if (has(line)) continue;
    reporter_.report(CheckKind::kHeaderOrder, {},
                     fmt::format("the header lacks {}", kHeaderLines[static_cast<std::size_t>(line)]));
  }
  if (variant_ == 5 && !has(kIdLine)) {
    reporter_.report(CheckKind::kHeaderOrder, variantPlace_,
                     "variant 5 is that of a file, whose header has an id line");
  } else if (variant_ == 4 && has(kIdLine)) {
    reporter_.report(CheckKind::kHeaderOrder, variantPlace_, "variant 4 is that of a live link, without an id line");
  }
}

void ScriptCheck::openTopBlock(const Block& block) {
  endHeader();
  if (block.keyword == "group") scene_ = true;
  if (block.keyword != "load") return;
  if (scene_) {
    reporter_.report(CheckKind::kMisplacedBlock, block.place, "a load block behind the scene's first group");
  }
  if (block.name() == kOptionsModule) optionsModule_ = true;
  if (block.name() == kExactSurfaceModule) {
    exactSurfaceModule_ = true;
    if (optionsModule_) {
      reporter_.report(CheckKind::kOptionOrder, block.place, "this module is loaded before the import options");
    }
  }
}

void ScriptCheck::option(std::string_view name, const Place& place) {
  const ParameterRule* rule = findParameterRule(Vocabulary::kImport, name);
  const bool repeated =
      std::any_of(options_.begin(), options_.end(), [&](const Option& option) { return option.name == name; });
  if (rule && !repeated) options_.push_back({rule->name, place});
}

ScriptCheck::Command ScriptCheck::command() const {
  if (has(kIdLine) || variant_ == 5) return Command::kExport;
  if (variant_ == 4) return Command::kRender;
  const bool camera = std::any_of(options_.begin(), options_.end(),
                                  [](const Option& option) { return option.name == "import_adjust_camera"; });
  return camera ? Command::kUpdate : Command::kRender;
}

void ScriptCheck::closeOptions(const Place& place) {
  std::span<const std::string_view> order = kRenderOptions;
  std::string_view who = "Render";
  if (command() == Command::kExport) {
    order = kExportOptions;
    who = "Export";
  } else if (command() == Command::kUpdate) {
    order = kUpdateOptions;
    who = "Update";
  }
  std::ptrdiff_t furthest = -1;
  for (const Option& option : options_) {
    const auto rank = std::find(order.begin(), order.end(), option.name) - order.begin();
    if (rank == static_cast<std::ptrdiff_t>(order.size())) {
      reporter_.report(CheckKind::kOptionOrder, option.place, fmt::format("{} does not send {}", who, option.name));
    } else if (rank < furthest) {
      reporter_.report(CheckKind::kOptionOrder, option.place,
                       fmt::format("{} stands before {} in what {} sends", option.name,
                                   order[static_cast<std::size_t>(furthest)], who));
    } else {
      furthest = rank;
    }
  }
  std::string missing;
  for (const std::string_view name : order) {
    if (std::none_of(options_.begin(), options_.end(), [&](const Option& option) { return option.name == name; })) {
      missing += fmt::format("{}{}", missing.empty() ? "" : ", ", name);
    }
  }
  if (!missing.empty()) reporter_.report(CheckKind::kMissingOption, place, "not there: " + missing);
  options_.clear();
}

void ScriptCheck::end() {
  endHeader();
  if (!scene_) {
    reporter_.report(CheckKind::kNoScene, {}, "no group stands at the top");
    return;
  }
  if (!optionsModule_)
    reporter_.report(CheckKind::kMissingOption, {}, fmt::format("no load block \"{}\"", kOptionsModule));
  if (has(kIdLine) && !exactSurfaceModule_) {
    reporter_.report(CheckKind::kMissingOption, {}, fmt::format("no load block \"{}\"", kExactSurfaceModule));
  }
}

}  // namespace rpk

#include "tools/rpk/app/check_command.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>

#include "tools/rpk/app/package_input.h"
#include "tools/rpk/check.h"
#include "tools/rpk/exact/exact_check.h"
#include "tools/rpk/report/display_text.h"
#include "tools/terminal/progress.h"

namespace rpk {
namespace {

struct CheckArguments {
  std::string file;
  bool json = false;
  bool quiet = false;
  bool strict = false;
  bool exact = false;
  double quality = 0.2;
  std::size_t most = CheckLimits().findingsOfOneKind;
};

void writeText(std::ostream& out, const std::string& file, const CheckReport& report) {
  std::array<std::uint64_t, kCheckKinds> listed{};
  for (const Finding& finding : report.findings) {
    ++listed[static_cast<std::size_t>(finding.kind)];
    fmt::print(out, "{}:{} (offset {}){}{}: {}: {} [{}]\n", file, finding.place.line, finding.place.offset,
               finding.path.empty() ? "" : " ", finding.path, severityName(checkSeverity(finding.kind)), finding.what,
               checkKindName(finding.kind));
  }
  for (std::size_t i = 0; i < kCheckKinds; ++i) {
    if (report.counts[i] <= listed[i]) continue;
    fmt::print(out, "{}: {} more [{}]\n", file, report.counts[i] - listed[i], checkKindName(static_cast<CheckKind>(i)));
  }
  fmt::print(out, "{}: {}, {}, {} in {}, {}, {}, {}\n", file,
             counted(report.count(Severity::kFault), "fault", "faults"),
             counted(report.count(Severity::kWarning), "warning", "warnings"),
             counted(report.count(Severity::kNote), "note", "notes"), counted(report.groups, "group", "groups"),
             counted(report.meshes, "mesh", "meshes"), counted(report.triangles, "triangle", "triangles"),
             counted(report.surfaces, "exact surface", "exact surfaces"));
}

void writeExactText(std::ostream& out, const std::string& file, const ExactReport& report) {
  for (const ExactFinding& finding : report.findings) {
    fmt::print(out, "{}: {}: fault: {}\n", file, displayText(finding.path), finding.what);
  }
  fmt::print(out, "{}: {} of {} sound, {} of {} vertices of meshes on them\n", file, report.sound,
             counted(report.surfaces, "exact surface", "exact surfaces"), report.vertices - report.strayVertices,
             report.vertices);
}

nlohmann::ordered_json exactJson(const ExactReport& report) {
  nlohmann::ordered_json json;
  json["surfaces"] = report.surfaces;
  json["sound"] = report.sound;
  json["vertices"] = report.vertices;
  json["strayVertices"] = report.strayVertices;
  json["widestStray"] = report.widestStray;
  json["findings"] = nlohmann::ordered_json::array();
  for (const ExactFinding& finding : report.findings) {
    json["findings"].push_back({{"path", finding.path}, {"what", finding.what}});
  }
  return json;
}

// File names need not be text in UTF-8; what is none is replaced.
void writeJson(std::ostream& out, const std::string& file, const CheckReport& report,
               const std::optional<ExactReport>& exact, bool good) {
  nlohmann::ordered_json json;
  json["file"] = file;
  json["good"] = good;
  json["faults"] = report.count(Severity::kFault);
  json["warnings"] = report.count(Severity::kWarning);
  json["notes"] = report.count(Severity::kNote);
  json["groups"] = report.groups;
  json["meshes"] = report.meshes;
  json["triangles"] = report.triangles;
  json["surfaces"] = report.surfaces;
  json["counts"] = nlohmann::ordered_json::object();
  for (std::size_t i = 0; i < kCheckKinds; ++i) {
    if (report.counts[i] > 0) json["counts"][std::string(checkKindName(static_cast<CheckKind>(i)))] = report.counts[i];
  }
  json["findings"] = nlohmann::ordered_json::array();
  for (const Finding& finding : report.findings) {
    json["findings"].push_back({{"severity", severityName(checkSeverity(finding.kind))},
                                {"kind", checkKindName(finding.kind)},
                                {"line", finding.place.line},
                                {"offset", finding.place.offset},
                                {"path", finding.path},
                                {"what", finding.what}});
  }
  if (exact) json["exact"] = exactJson(*exact);
  out << json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
}

ExitCode check(const CheckArguments& options, std::ostream& out) {
  const MappedFile file = openPackage(options.file);
  terminal::Progress progress(options.quiet ? nullptr : stderr);
  progress.begin();
  CheckLimits limits;
  limits.findingsOfOneKind = options.most;
  const char* const start = file.bytes().data();
  const CheckReport report = checkPackage(file.bytes(), limits, [&](std::string_view passed) {
    file.drop(passed);
    const auto until = static_cast<std::size_t>(passed.data() + passed.size() - start);
    progress.show(fmt::format("Checking {} %", until * 100 / file.bytes().size()));
  });
  progress.end();
  std::optional<ExactReport> exact;
  if (options.exact) exact = checkExact(readScene(file.bytes()), exactTolerance(options.quality));
  const bool good = report.count(Severity::kFault) == 0 && (!options.strict || report.count(Severity::kWarning) == 0) &&
                    (!exact || exact->good());
  if (options.json) {
    writeJson(out, options.file, report, exact, good);
  } else if (!options.quiet) {
    writeText(out, options.file, report);
    if (exact) writeExactText(out, options.file, *exact);
  }
  return good ? ExitCode::kDone : ExitCode::kFound;
}

}  // namespace

void addCheckCommand(CLI::App& program, Work& work) {
  CLI::App* command =
      program.add_subcommand("check", "Looks for everything in a package that a renderer stumbles over");
  const auto options = std::make_shared<CheckArguments>();
  command->add_option("FILE", options->file, "The package")->required();
  command->add_flag("--json", options->json, "Findings and counts as JSON");
  command->add_flag("--quiet", options->quiet, "Nothing but the exit status (and what --json asks for)");
  command->add_flag("--strict", options->strict, "Warnings count as faults");
  command->add_flag("--exact", options->exact,
                    "Exact surfaces, too: closed loops, outer loops and holes, areas, meshes that lie on them");
  command->add_option("--quality", options->quality, "With --exact: the quality that the meshes were made at, 0 to 1")
      ->check(CLI::Range(0.0, 1.0))
      ->capture_default_str();
  command->add_option("--most", options->most, "Findings of one kind that are listed; the rest is counted")
      ->capture_default_str();
  command->callback([options, &work] { work = [options](std::ostream& out) { return check(*options, out); }; });
}

}  // namespace rpk

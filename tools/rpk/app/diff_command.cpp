#include "tools/rpk/app/diff_command.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "tools/rpk/app/package_input.h"
#include "tools/rpk/diff.h"
#include "tools/rpk/report/diff_report.h"
#include "tools/rpk/report/display_text.h"

namespace rpk {
namespace {

struct DiffArguments {
  std::string first;
  std::string second;
  double tolerance = 0;
  std::vector<std::string> without;
  bool all = false;
  bool json = false;
  bool quiet = false;
};

std::vector<std::string> kindNames() {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < kDifferenceKinds; ++i) {
    names.emplace_back(differenceKindName(static_cast<DifferenceKind>(i)));
  }
  return names;
}

DiffOptions diffOptions(const DiffArguments& options) {
  DiffOptions result;
  result.tolerance = options.tolerance;
  if (options.all) result.without.clear();
  for (std::size_t i = 0; i < kDifferenceKinds; ++i) {
    const auto kind = static_cast<DifferenceKind>(i);
    for (const std::string& name : options.without) {
      if (name == differenceKindName(kind)) result.without.insert(kind);
    }
  }
  return result;
}

bool tellFaults(const std::string& file, const Scene& scene) {
  if (scene.faultCount == 0) return false;
  fmt::print(std::cerr, "rpk: {}: {}, the first in line {}: {}; compared is what could be read\n", file,
             counted(scene.faultCount, "fault", "faults"), scene.faults.front().place.line,
             displayText(scene.faults.front().what));
  return true;
}

ExitCode diff(const DiffArguments& options, std::ostream& out) {
  const MappedFile first = openPackage(options.first);
  const MappedFile second = openPackage(options.second);
  const Scene before = readScene(first.bytes());
  const Scene after = readScene(second.bytes());
  const std::vector<Difference> differences = diffScenes(before, after, diffOptions(options));
  const DiffedFiles files = {options.first, options.second, first.bytes() == second.bytes()};
  if (options.json) {
    out << diffJson(differences, files).dump(2) << '\n';
  } else if (!options.quiet) {
    out << diffText(differences, files);
  }
  const bool faultyFirst = tellFaults(options.first, before);
  const bool faultySecond = tellFaults(options.second, after);
  return differences.empty() && !faultyFirst && !faultySecond ? ExitCode::kDone : ExitCode::kFound;
}

}  // namespace

void addDiffCommand(CLI::App& program, Work& work) {
  CLI::App* command = program.add_subcommand("diff", "Tells what two packages differ in, group by group");
  const auto options = std::make_shared<DiffArguments>();
  command->add_option("FIRST", options->first, "A package")->required();
  command->add_option("SECOND", options->second, "Another one")->required();
  command->add_option("--tolerance", options->tolerance, "Placements whose numbers differ by no more are the same")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  command->add_option("--without", options->without, "A kind of difference that does not count, such as camera")
      ->check(CLI::IsMember(kindNames()))
      ->expected(1)
      ->take_all();
  command->add_flag("--all", options->all, "Also what is drawn alike but written otherwise");
  command->add_flag("--json", options->json, "The differences as JSON");
  command->add_flag("--quiet", options->quiet, "Nothing but the exit status (and what --json asks for)");
  command->callback([options, &work] { work = [options](std::ostream& out) { return diff(*options, out); }; });
}

}  // namespace rpk

#include "tools/rpk/app/info_command.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "tools/rpk/app/package_input.h"
#include "tools/rpk/info.h"
#include "tools/rpk/report/display_text.h"
#include "tools/rpk/report/info_json.h"
#include "tools/rpk/report/info_text.h"

namespace rpk {
namespace {

struct Options {
  std::string file;
  TreeOptions tree;
  bool json = false;
};

ExitCode info(const Options& options, std::ostream& out) {
  const MappedFile file = openPackage(options.file);
  const PackageInfo info = gatherInfo(file.bytes());
  if (options.json) {
    out << infoJson(info, options.file, options.tree.depth).dump(2) << '\n';
  } else {
    out << infoText(info, options.file, options.tree);
  }
  if (info.scene.faultCount == 0) return ExitCode::kDone;
  fmt::print(std::cerr, "rpk: {}: {}, the first in line {}: {}; told is what could be read\n", options.file,
             counted(info.scene.faultCount, "fault", "faults"), info.scene.faults.front().place.line,
             displayText(info.scene.faults.front().what));
  return ExitCode::kFound;
}

}  // namespace

void addInfoCommand(CLI::App& program, Work& work) {
  CLI::App* command = program.add_subcommand("info", "Tells what a package holds");
  const auto options = std::make_shared<Options>();
  command->add_option("FILE", options->file, "The package")->required();
  command->add_option("--depth", options->tree.depth, "Levels of the tree of groups that are shown; 0: no tree");
  command->add_flag("--each", options->tree.each, "Every group on a line of its own, also those that repeat");
  command->add_flag("--json", options->json, "All of it as JSON, with the whole placements");
  command->callback([options, &work] { work = [options](std::ostream& out) { return info(*options, out); }; });
}

}  // namespace rpk

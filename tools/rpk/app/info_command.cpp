#include "tools/rpk/app/info_command.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "tools/rpk/app/package_input.h"
#include "tools/rpk/info.h"
#include "tools/rpk/report/display_text.h"
#include "tools/rpk/report/info_json.h"
#include "tools/rpk/report/info_text.h"
#include "tools/terminal/progress.h"

namespace rpk {
namespace {

struct InfoArguments {
  std::string file;
  TreeOptions tree;
  bool json = false;
  bool exact = false;
};

std::vector<ExactPart> evaluated(const Scene& scene) {
  terminal::Progress progress(stderr);
  progress.begin();
  return exactParts(scene, [&](std::size_t done, std::size_t all) {
    progress.show(fmt::format("Evaluating exact surfaces {} %", done * 100 / all));
  });
}

ExitCode info(const InfoArguments& options, std::ostream& out) {
  const MappedFile file = openPackage(options.file);
  PackageInfo info = gatherInfo(file.bytes());
  if (options.exact) info.exact = evaluated(info.scene);
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
  const auto options = std::make_shared<InfoArguments>();
  command->add_option("FILE", options->file, "The package")->required();
  command->add_option("--depth", options->tree.depth, "Levels of the tree of groups that are shown; 0: no tree");
  command->add_flag("--each", options->tree.each, "Every group on a line of its own, also those that repeat");
  command->add_flag("--json", options->json, "All of it as JSON, with the whole placements");
  command->add_flag("--exact", options->exact,
                    "Evaluates the exact surfaces: which are sound, their area beside that of the meshes");
  command->callback([options, &work] { work = [options](std::ostream& out) { return info(*options, out); }; });
}

}  // namespace rpk

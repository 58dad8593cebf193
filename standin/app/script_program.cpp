#include "standin/app/script_program.h"

#include <fmt/format.h>

#include <cerrno>
#include <fstream>
#include <iostream>
#include <system_error>

#include "standin/app/misuse.h"
#include "standin/app/plugin_host.h"
#include "standin/app/scratch_directory.h"
#include "standin/app/script.h"
#include "standin/app/system.h"
#include "standin/app/workbench.h"

namespace standin {
namespace {

std::ifstream openScript(const std::filesystem::path& file) {
  std::error_code ignored;
  std::ifstream lines(file);
  const bool folder = std::filesystem::is_directory(file, ignored);
  if (!lines || folder) {
    const std::string reason = std::generic_category().message(folder ? EISDIR : errno);
    throw Failure(ExitCode::kUsage, fmt::format("{}: {}", file.string(), reason));
  }
  return lines;
}

ExitCode runLines(Script& script, const ScriptOptions& options, std::ifstream& file, std::ostream& output,
                  std::ostream& errors) {
  if (options.script) return script.runAll(file, options.script->string(), errors);
  if (!inputIsTerminal()) return script.runAll(std::cin, "standard input", errors);
  output << "\"help\" lists the commands, \"quit\" ends.\n";
  script.runPrompt(std::cin, errors);
  return ExitCode::kDone;
}

}  // namespace

ExitCode runScript(const CommonOptions& common, const ScriptOptions& options, std::ostream& output,
                   std::ostream& errors) {
  std::ifstream file;
  if (options.script) file = openScript(*options.script);
  ScratchDirectory scratch;
  Session session;
  applyOptions(common, session);
  PluginHost plugin(common.plugin);
  terminal::Progress progress(stderr);
  Workbench bench(session, plugin, progress, scratch.origin());
  if (common.codePage) bench.keepCodePage();
  Script script(bench, scratch.path() / SettingsFile::kName, output);
  const ExitCode code = runLines(script, options, file, output, errors);
  plugin.unload(session);
  session.finish();
  throwMisuse(session, common.plugin, {});
  return code;
}

}  // namespace standin

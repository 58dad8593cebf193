#include "standin/app/program.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "standin/app/misuse.h"
#include "standin/app/model_commands.h"
#include "standin/app/program_options.h"
#include "standin/app/script_program.h"
#include "standin/windows/code_page.h"
#include "tools/terminal/signal_cleanup.h"

namespace standin {
namespace {

// The working directory changes while the program runs, so paths are taken as what they mean now.
void prepare(CommonOptions& common) {
  common.plugin = std::filesystem::absolute(common.plugin);
  common.messages = std::filesystem::absolute(common.messages);
  if (common.codePage && !setSystemCodePage(*common.codePage)) {
    throw Failure(ExitCode::kUsage, fmt::format("code page {} is not known", *common.codePage));
  }
  terminal::installSignalCleanup();
}

ExitCode runCommand(ProgramOptions& options, const WindowProgram& window) {
  if (const auto* answer = std::get_if<TextAnswer>(&options.command)) {
    std::cout << answer->text;
    return ExitCode::kDone;
  }
  prepare(options.common);
  if (const auto* exported = std::get_if<ExportOptions>(&options.command)) {
    exportModel(options.common, *exported, std::cout);
    return ExitCode::kDone;
  }
  if (const auto* rendered = std::get_if<RenderOptions>(&options.command)) {
    renderModel(options.common, *rendered, std::cout);
    return ExitCode::kDone;
  }
  if (const auto* saved = std::get_if<SnapshotOptions>(&options.command)) {
    saveSnapshot(options.common, *saved, std::cout);
    return ExitCode::kDone;
  }
  if (const auto* shown = std::get_if<WindowOptions>(&options.command)) {
    if (!window) throw Failure(ExitCode::kUsage, "--window: this program was built without Qt 6 and has no window");
    window(options.common, *shown);
    return ExitCode::kDone;
  }
  return runScript(options.common, std::get<ScriptOptions>(options.command), std::cout, std::cerr);
}

void tell(const std::string& message) { fmt::print(std::cerr, "creo-standin: {}\n", message); }

// A summary that could not be written is no success.
ExitCode flushOutput(ExitCode code) {
  errno = 0;
  std::cout.flush();
  if (std::cout.good()) return code;
  tell(fmt::format("standard output: {}", std::generic_category().message(errno != 0 ? errno : EIO)));
  return code == ExitCode::kDone ? ExitCode::kOutput : code;
}

}  // namespace

ExitCode runProgram(int argumentCount, const char* const* arguments, const WindowProgram& window) {
  ExitCode code = ExitCode::kDone;
  try {
    ProgramOptions options = parseOptions(argumentCount, arguments);
    code = runCommand(options, window);
  } catch (const MisuseFailure& failure) {
    std::cout.flush();
    tell(failure.what());
    for (const std::string& line : failure.lines()) fmt::print(std::cerr, "  {}\n", line);
    code = failure.code();
  } catch (const Failure& failure) {
    std::cout.flush();
    tell(failure.what());
    code = failure.code();
  } catch (const std::exception& error) {
    tell(error.what());
    code = ExitCode::kOutput;
  }
  return flushOutput(code);
}

}  // namespace standin

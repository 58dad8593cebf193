#include "tools/rpk/app/program.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

#include "tools/rpk/app/check_command.h"
#include "tools/rpk/app/diff_command.h"
#include "tools/rpk/app/gltf_command.h"
#include "tools/rpk/app/info_command.h"
#include "tools/rpk/app/picture_command.h"
#include "tools/terminal/signal_cleanup.h"
#include "tools/terminal/suggestion.h"

namespace rpk {
namespace {

constexpr auto kCommands = std::to_array<AddCommand>({
    addCheckCommand,
    addDiffCommand,
    addGltfCommand,
    addInfoCommand,
    addPictureCommand,
});

constexpr const char* kExitCodes =
    "Exit status: 0 done, 1 the package has faults or the two differ, 2 not a package or not readable, 3 usage, 4 the "
    "output cannot be written.";

void collectOptions(const CLI::App& app, std::vector<std::string>& names) {
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
}

// What was typed and is no command, option or file that is expected: said with the name that may have been meant.
void rejectExtras(const CLI::App& app) {
  const std::vector<std::string> extras = app.remaining(true);
  if (extras.empty()) return;
  const auto commands = app.get_subcommands();
  std::vector<std::string> names;
  collectOptions(app, names);
  for (const CLI::App* command : commands) collectOptions(*command, names);
  for (const std::string& extra : extras) {
    if (extra.size() < 2 || extra[0] != '-') continue;
    const std::string name = extra.substr(0, extra.find('='));
    throw Failure(ExitCode::kUsage, fmt::format("unknown option {}{}", name, terminal::didYouMean(name, names)));
  }
  if (!commands.empty()) throw Failure(ExitCode::kUsage, fmt::format("unexpected argument \"{}\"", extras.front()));
  std::vector<std::string> known;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    known.push_back(command->get_name());
  }
  throw Failure(ExitCode::kUsage,
                fmt::format("unknown command \"{}\"{}", extras.front(), terminal::didYouMean(extras.front(), known)));
}

// Help and version are work too: their text is the result.
Work parse(int argumentCount, const char* const* arguments) {
  CLI::App app("Looks at scene packages (*.rpk), checks them and turns them into other things.", "rpk");
  app.footer(kExitCodes);
  app.set_version_flag("--version", std::string("rpk ") + RENDARA_VERSION);
  app.set_help_flag("-h,--help", "This text");
  app.require_subcommand(1);
  app.allow_extras();
  Work work;
  for (const AddCommand add : kCommands) add(app, work);
  for (CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) command->allow_extras();
  const auto text = [](const std::string& what) {
    return [what](std::ostream& out) {
      out << what << '\n';
      return ExitCode::kDone;
    };
  };
  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::CallForHelp&) {
    return text(app.help());
  } catch (const CLI::CallForVersion& version) {
    return text(version.what());
  } catch (const CLI::ParseError& error) {
    // A mistyped option makes other arguments seem to be missing, so it is told first.
    rejectExtras(app);
    throw Failure(ExitCode::kUsage, error.what());
  }
  rejectExtras(app);
  return work;
}

void tell(const std::string& message) { fmt::print(std::cerr, "rpk: {}\n", message); }

// A result that could not be written is no success.
ExitCode flushOutput(ExitCode code) {
  errno = 0;
  std::cout.flush();
  if (std::cout.good()) return code;
  tell(fmt::format("standard output: {}", std::generic_category().message(errno != 0 ? errno : EIO)));
  return ExitCode::kOutput;
}

}  // namespace

ExitCode runProgram(int argumentCount, const char* const* arguments) {
  ExitCode code = ExitCode::kDone;
  try {
    terminal::installSignalCleanup();
    code = parse(argumentCount, arguments)(std::cout);
  } catch (const Failure& failure) {
    std::cout.flush();
    tell(failure.what());
    code = failure.code();
  } catch (const std::exception& error) {
    std::cout.flush();
    tell(error.what());
    code = ExitCode::kOutput;
  }
  return flushOutput(code);
}

}  // namespace rpk

#include "standin/renderer/program.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "standin/app/failure.h"
#include "standin/renderer/client.h"
#include "standin/renderer/installation.h"
#include "standin/renderer/instance_list.h"
#include "standin/renderer/pictures.h"
#include "standin/renderer/process.h"
#include "standin/renderer/server.h"
#include "standin/windows/machine_folder.h"
#include "tools/terminal/suggestion.h"

namespace standin {
namespace {

struct Arguments {
  ServerOptions server;
  double idle = 0;
  double timeout = 60;
  std::string pictureFolder;
  int status = 0;
  int quit = 0;
  bool list = false;
  bool install = false;
  bool uninstall = false;
};

// Options that an installed renderer starts with, as they were given with --install.
const std::vector<std::string> kInstalledOptions = {"port", "max-script", "max-scenes",
                                                    "idle", "timeout",    "picture-dir"};

constexpr const char* kExitCodes =
    "A renderer that is started without arguments takes those that were given with --install, and prints nothing.\n"
    "Exit status: 0 done, 2 usage, 4 the renderer cannot serve, or none answers at the port, or the registry cannot be "
    "written.";

void addOptions(CLI::App& app, Arguments& arguments) {
  const CLI::Range ports(1, 65535);
  app.add_option("--port", arguments.server.port, "Listens at this port; without it at a free one")->check(ports);
  app.add_option("--picture-dir", arguments.pictureFolder,
                 "Folder for a picture of the scene after each script: scene-0001.png and so on, and latest.png");
  app.add_option("--max-script", arguments.server.maxScript, "Bytes that a script may have")->capture_default_str();
  app.add_option("--max-scenes", arguments.server.maxScripts,
                 "Scripts that may be held at a time; one is held as long as something of it is drawn")
      ->capture_default_str();
  app.add_option("--idle", arguments.idle, "Ends when nothing has happened for so many seconds; 0: never")
      ->check(CLI::Range(0.0, 1e6))
      ->capture_default_str();
  app.add_option("--timeout", arguments.timeout, "Closes a connection without progress for so many seconds")
      ->check(CLI::Range(0.1, 1e6))
      ->capture_default_str();
  const std::vector<CLI::Option*> actions = {
      app.add_option("--status", arguments.status, "Prints what the renderer at this port holds, as JSON")
          ->check(ports),
      app.add_option("--quit", arguments.quit, "Has the renderer at this port finish its work and end")->check(ports),
      app.add_flag("--list", arguments.list, "Prints the ports of the renderers that run, one a line"),
      app.add_flag("--install", arguments.install,
                   "Tells the machine's registry of this renderer, for the plug-in; --port is then also the port for "
                   "plug-ins that find no renderer on the list"),
      app.add_flag("--uninstall", arguments.uninstall, "Takes it out of the registry")};
  for (CLI::Option* action : actions) {
    for (CLI::Option* other : actions) {
      if (action != other) action->excludes(other);
    }
  }
}

void rejectExtras(const CLI::App& app) {
  const std::vector<std::string> extras = app.remaining();
  if (extras.empty()) return;
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  const std::string name = extras.front().substr(0, extras.front().find('='));
  throw Failure(ExitCode::kUsage, fmt::format("unknown argument {}{}", name, terminal::didYouMean(name, names)));
}

std::chrono::milliseconds fromSeconds(double seconds) {
  return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

void serve(Arguments& arguments) {
  arguments.server.idle = fromSeconds(arguments.idle);
  arguments.server.patience = fromSeconds(arguments.timeout);
  arguments.server.pictureFolder = arguments.pictureFolder;
  const SocketNumber stop = stopRequest();
  Server server(arguments.server);
  server.announce(machineFolder());
  fmt::print("port {}\n", server.port());
  std::fflush(stdout);
  server.serve(stop);
}

void installThis(const CLI::App& app, const Arguments& arguments) {
  Installation installation;
  installation.program = programPath();
  const auto folder = findLibraryFolder(installation.program);
  if (!folder) throw Failure(ExitCode::kOutput, "the live-link library that belongs to this program is not there");
  installation.binFolder = *folder;
  if (arguments.server.port > 0) installation.port = arguments.server.port;
  for (const std::string& name : kInstalledOptions) {
    const CLI::Option* const option = app.get_option("--" + name);
    if (option->count() > 0) installation.options[name] = option->results().back();
  }
  const auto pictures = installation.options.find("picture-dir");
  if (pictures != installation.options.end()) pictures->second = std::filesystem::absolute(pictures->second).string();
  install(installation);
}

void act(const CLI::App& app, Arguments& arguments) {
  if (arguments.status > 0) {
    fmt::print("{}", askStatus(arguments.status));
  } else if (arguments.quit > 0) {
    askToQuit(arguments.quit);
  } else if (arguments.list) {
    for (const int port : InstanceList(machineFolder()).ports()) fmt::print("{}\n", port);
  } else if (arguments.install) {
    installThis(app, arguments);
  } else if (arguments.uninstall) {
    uninstall();
  } else {
    serve(arguments);
  }
}

void run(std::vector<std::string> texts) {
  CLI::App app("Stands in for the renderer: takes scenes over the live link and merges them.", "renderer-standin");
  app.footer(kExitCodes);
  app.set_version_flag("--version", std::string("renderer-standin ") + RENDARA_VERSION);
  app.set_help_flag("-h,--help", "This text");
  app.allow_extras();
  Arguments arguments;
  addOptions(app, arguments);
  try {
    std::reverse(texts.begin(), texts.end());  // as the parser wants it
    app.parse(std::move(texts));
  } catch (const CLI::Success& text) {
    app.exit(text);
    return;
  } catch (const CLI::ParseError& error) {
    rejectExtras(app);
    throw Failure(ExitCode::kUsage, error.what());
  }
  rejectExtras(app);
  if (!arguments.pictureFolder.empty() && !canDrawPictures()) {
    throw Failure(ExitCode::kUsage, "--picture-dir: this build has no libraries that draw pictures");
  }
  act(app, arguments);
}

int tell(const char* message, ExitCode code) {
  fmt::print(stderr, "renderer-standin: {}\n", message);
  return static_cast<int>(code);
}

}  // namespace

int runRenderer(int argumentCount, const char* const* arguments) {
  try {
    if (argumentCount > 1) {
      run({arguments + 1, arguments + argumentCount});
    } else {
      // A renderer that the plug-in started outlives it, so it must not hold on to what is piped or shown there.
      leaveTerminal();
      run(installedArguments(kInstalledOptions));
    }
  } catch (const Failure& failure) {
    return tell(failure.what(), failure.code());
  } catch (const std::exception& error) {
    return tell(error.what(), ExitCode::kOutput);
  }
  if (std::fflush(stdout) == 0) return static_cast<int>(ExitCode::kDone);
  return tell("standard output cannot be written", ExitCode::kOutput);
}

}  // namespace standin

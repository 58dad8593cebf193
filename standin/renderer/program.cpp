#include "standin/renderer/program.h"

#include <fmt/format.h>
#include <sys/signalfd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <system_error>
#include <vector>

#include "standin/app/failure.h"
#include "standin/renderer/client.h"
#include "standin/renderer/descriptor.h"
#include "standin/renderer/server.h"
#include "standin/windows/machine_folder.h"
#include "tools/terminal/suggestion.h"

namespace standin {
namespace {

struct Arguments {
  ServerOptions server;
  double idle = 0;
  double timeout = 60;
  int status = 0;
  int quit = 0;
};

constexpr const char* kExitCodes =
    "Exit status: 0 done, 2 usage, 4 the renderer cannot serve, or none answers at the port.";

void addOptions(CLI::App& app, Arguments& arguments) {
  const CLI::Range ports(1, 65535);
  app.add_option("--port", arguments.server.port, "Listens at this port; without it at a free one")->check(ports);
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
  app.add_option("--status", arguments.status, "Prints what the renderer at this port holds, as JSON")->check(ports);
  app.add_option("--quit", arguments.quit, "Has the renderer at this port finish its work and end")->check(ports);
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

std::chrono::milliseconds milliseconds(double seconds) {
  return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

// Readable when the process is asked to end. Threads that are made later have the signals blocked, too.
Descriptor stopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, number);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  Descriptor descriptor(signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
  if (!descriptor) throw std::system_error(errno, std::generic_category(), "signalfd");
  return descriptor;
}

void serve(Arguments& arguments) {
  arguments.server.idle = milliseconds(arguments.idle);
  arguments.server.patience = milliseconds(arguments.timeout);
  const Descriptor stop = stopSignals();
  Server server(arguments.server);
  server.announce(machineFolder());
  fmt::print("port {}\n", server.port());
  std::fflush(stdout);
  server.serve(stop.get());
}

// A renderer that the plug-in started outlives it, so it must not hold on to what is piped or shown there.
void leaveTerminal() {
  for (std::FILE* stream : {stdin, stdout, stderr}) {
    if (!std::freopen("/dev/null", "r+", stream)) throw std::system_error(errno, std::generic_category(), "/dev/null");
  }
}

void run(int argumentCount, const char* const* argumentTexts) {
  CLI::App app("Stands in for the renderer: takes scenes over the live link and merges them.", "renderer-standin");
  app.footer(kExitCodes);
  app.set_version_flag("--version", std::string("renderer-standin ") + RENDARA_VERSION);
  app.set_help_flag("-h,--help", "This text");
  app.allow_extras();
  Arguments arguments;
  addOptions(app, arguments);
  try {
    app.parse(argumentCount, argumentTexts);
  } catch (const CLI::Success& text) {
    app.exit(text);
    return;
  } catch (const CLI::ParseError& error) {
    rejectExtras(app);
    throw Failure(ExitCode::kUsage, error.what());
  }
  rejectExtras(app);
  if (arguments.status > 0) {
    fmt::print("{}", askStatus(arguments.status));
  } else if (arguments.quit > 0) {
    askToQuit(arguments.quit);
  } else {
    if (argumentCount == 1) leaveTerminal();
    serve(arguments);
  }
}

int tell(const char* message, ExitCode code) {
  fmt::print(stderr, "renderer-standin: {}\n", message);
  return static_cast<int>(code);
}

}  // namespace

int runRenderer(int argumentCount, const char* const* arguments) {
  try {
    run(argumentCount, arguments);
  } catch (const Failure& failure) {
    return tell(failure.what(), failure.code());
  } catch (const std::exception& error) {
    return tell(error.what(), ExitCode::kOutput);
  }
  if (std::fflush(stdout) == 0) return static_cast<int>(ExitCode::kDone);
  return tell("standard output cannot be written", ExitCode::kOutput);
}

}  // namespace standin

#include "standin/app/program_options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <vector>

#include "standin/app/application_file.h"
#include "standin/app/failure.h"
#include "standin/app/installation.h"
#include "standin/cad/session.h"
#include "standin/windows/code_page.h"
#include "tools/terminal/suggestion.h"

namespace standin {
namespace {

constexpr const char* kExamples = R"(Examples:
  creo-standin export pump.step pump.rpk
  creo-standin export pump.step pump.rpk --quality 0.8 --no-nurbs --up z
  creo-standin export pump.step pump.rpk --overlay layers.json --fra motion.fra
  creo-standin render pump.step   (starts the renderer that renderer-standin --install has installed)
  creo-standin snapshot pump.step pump.snap   (opens without Open CASCADE)
  creo-standin run steps.txt
  creo-standin                    (a prompt; "help" lists its commands)
  creo-standin --window pump.step (the session in a window, with a ribbon, a model tree and dialogs)

Exit status: 0 done, 2 usage, 3 the model cannot be opened, 4 no output, 5 the plug-in misused the session.)";

std::vector<std::string> optionNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

// What was typed and is no option, command or file that is expected: said with the name that may have been meant.
void rejectExtras(const CLI::App& app) {
  const std::vector<std::string> extras = app.remaining(true);
  const auto option = std::find_if(extras.begin(), extras.end(),
                                   [](const std::string& extra) { return extra.size() > 1 && extra[0] == '-'; });
  if (option != extras.end()) {
    std::vector<std::string> names = optionNames(app);
    for (const CLI::App* command : app.get_subcommands(nullptr)) {
      for (std::string& known : optionNames(*command)) names.push_back(std::move(known));
    }
    const std::string name = option->substr(0, option->find('='));
    throw Failure(ExitCode::kUsage, fmt::format("unknown option {}{}", name, terminal::didYouMean(name, names)));
  }
  if (extras.empty()) return;
  if (!app.get_subcommands().empty())
    throw Failure(ExitCode::kUsage, fmt::format("unexpected argument \"{}\"", extras.front()));
  throw Failure(ExitCode::kUsage,
                fmt::format("unknown command \"{}\"{}", extras.front(),
                            terminal::didYouMean(extras.front(), {"export", "render", "run", "snapshot"})));
}

void addQuality(CLI::App& command, ModelOptions& options) {
  command.add_option("--quality", options.quality, "Tessellation quality, 0 to 1 (default 0.2)")->option_text("Q");
}

void addOverlay(CLI::App& command, ModelOptions& options) {
  command
      .add_option("--overlay", options.overlay,
                  "What STEP has not, as JSON (default: MODEL's name with .json, when it is there)")
      ->option_text("FILE");
}

void addModelOptions(CLI::App& command, ModelOptions& options) {
  addQuality(command, options);
  command.add_flag("--no-nurbs", options.noNurbs, "Leave out the exact surfaces");
  command.add_flag("--shared-materials", options.sharedMaterials, "One material for parts of the same appearance");
  command.add_option("--up", options.upAxis, "Axis that points up: x, y, z, -x, -y or -z (default y)")
      ->option_text("AXIS");
  addOverlay(command, options);
  command.add_option("--fra", options.frameFile, "Mechanism frame file: the motion that goes with the model")
      ->option_text("FILE");
  command
      .add_option("--representation", options.representation,
                  "Simplified representation to send (default: the master one)")
      ->option_text("NAME");
}

CLI::App* addModelCommand(CLI::App& app, const char* name, const char* what, ModelOptions& options) {
  CLI::App* command = app.add_subcommand(name, what);
  command->allow_extras();
  command->add_option("MODEL", options.model, "STEP file or snapshot to open")->required()->option_text(" ");
  return command;
}

unsigned parseCodePage(const std::string& text) {
  unsigned codePage = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), codePage);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw Failure(ExitCode::kUsage, fmt::format("--code-page cannot be \"{}\": a number", text));
  }
  return codePage;
}

}  // namespace

void applyOptions(const CommonOptions& options, Session& session) {
  session.messageFolder = options.messages;
  session.language = options.language;
  session.textureFolderName = wideFromUtf8(options.textureFolder);
}

ProgramOptions parseOptions(int argumentCount, const char* const* arguments) {
  ProgramOptions result;
  const std::filesystem::path folder = programFolder();
  result.common.plugin = findPlugin(folder);
  result.common.messages = findMessages(folder);

  CLI::App app("A headless stand-in for the CAD session that the Rendara plug-in runs in.", "creo-standin");
  app.footer(kExamples);
  app.set_version_flag("--version", std::string("creo-standin ") + RENDARA_VERSION);
  app.set_help_flag("-h,--help", "This text");
  app.fallthrough();
  app.allow_windows_style_options(false);  // "/..." is a path
  app.require_subcommand(0, 1);
  app.allow_extras();
  app.add_option("--plugin", result.common.plugin, "Plug-in to load (default: the one beside the program)")
      ->option_text("FILE");
  app.add_option("--messages", result.common.messages, "Folder of the message file")->option_text("FOLDER");
  app.add_option("--language", result.common.language, "Language of the plug-in's texts: german, french or japanese")
      ->option_text("NAME");
  app.add_option("--texture-folder", result.common.textureFolder,
                 "What the folder of every texture is called, wherever it is, so that packages do not depend on it")
      ->option_text("TEXT");
  std::filesystem::path application;
  app.add_option("--application", application, "Plug-in and texts as a creotk.dat names them")->option_text("FILE");
  std::filesystem::path windowModel;
  app.add_option("--window", windowModel, "Opens the session in a window, with MODEL when one is given")
      ->option_text("[MODEL]")
      ->expected(0, 1);
  std::optional<std::string> codePage;
  app.add_option("--code-page", codePage, "System code page of the session (default 1252)")->option_text("N");

  ExportOptions exportOptions;
  CLI::App* exportCommand = addModelCommand(app, "export", "Opens a model and exports it to a package", exportOptions);
  exportCommand->add_option("OUT", exportOptions.output, "Package to write, *.rpk")->required()->option_text(" ");
  addModelOptions(*exportCommand, exportOptions);
  RenderOptions renderOptions;
  CLI::App* renderCommand =
      addModelCommand(app, "render", "Opens a model, starts a renderer and sends the model to it", renderOptions);
  addModelOptions(*renderCommand, renderOptions);
  SnapshotOptions snapshotOptions;
  CLI::App* snapshotCommand =
      addModelCommand(app, "snapshot", "Saves the session with the opened model in a file", snapshotOptions);
  snapshotCommand->add_option("OUT", snapshotOptions.output, "Snapshot to write")->required()->option_text(" ");
  addQuality(*snapshotCommand, snapshotOptions);
  addOverlay(*snapshotCommand, snapshotOptions);
  ScriptOptions scriptOptions;
  CLI::App* runCommand = app.add_subcommand("run", "Runs the commands of a script");
  runCommand->allow_extras();
  std::filesystem::path script;
  runCommand->add_option("SCRIPT", script, "File with a command a line; - for standard input")
      ->required()
      ->option_text(" ");

  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::CallForHelp&) {
    result.command = TextAnswer{app.help() + "\n"};
    return result;
  } catch (const CLI::CallForVersion& version) {
    result.command = TextAnswer{std::string(version.what()) + "\n"};
    return result;
  } catch (const CLI::ParseError& error) {
    // A mistyped option makes other arguments seem to be missing, so it is told first.
    rejectExtras(app);
    throw Failure(ExitCode::kUsage, error.what());
  }
  rejectExtras(app);
  if (!application.empty()) {
    if (app.count("--plugin") > 0 || app.count("--messages") > 0) {
      throw Failure(ExitCode::kUsage, "--application goes without --plugin and --messages");
    }
    const Application named = readApplicationFile(application);
    result.common.plugin = named.library;
    result.common.messages = named.messages;
  }
  std::error_code ignored;
  if (app.count("--messages") + app.count("--application") > 0 &&
      !std::filesystem::exists(result.common.messages / kMessageFile, ignored)) {
    throw Failure(ExitCode::kUsage, fmt::format("{}: holds no {}", result.common.messages.string(), kMessageFile));
  }
  if (!result.common.language.empty() &&
      !std::filesystem::exists(result.common.messages / result.common.language / kMessageFile, ignored)) {
    throw Failure(ExitCode::kUsage,
                  fmt::format("{}: holds no texts in \"{}\"", result.common.messages.string(), result.common.language));
  }
  const bool inWindow = app.count("--window") > 0;
  if (inWindow && !app.get_subcommands().empty()) {
    throw Failure(ExitCode::kUsage, "--window goes without a command");
  }
  if (codePage) result.common.codePage = parseCodePage(*codePage);
  if (exportCommand->parsed()) {
    result.command = exportOptions;
  } else if (renderCommand->parsed()) {
    result.command = renderOptions;
  } else if (snapshotCommand->parsed()) {
    result.command = snapshotOptions;
  } else if (inWindow) {
    WindowOptions window;
    if (!windowModel.empty()) window.model = windowModel;
    result.command = window;
  } else {
    if (runCommand->parsed() && script != "-") scriptOptions.script = script;
    result.command = scriptOptions;
  }
  return result;
}

}  // namespace standin

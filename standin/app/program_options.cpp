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

// The program's command line with the places that its words go to.
class CommandLine {
 public:
  CommandLine() {
    const std::filesystem::path folder = programFolder();
    common_.plugin = findPlugin(folder);
    common_.messages = findMessages(folder);
    app_.footer(kExamples);
    app_.set_version_flag("--version", std::string("creo-standin ") + RENDARA_VERSION);
    app_.set_help_flag("-h,--help", "This text");
    app_.fallthrough();
    app_.allow_windows_style_options(false);  // "/..." is a path
    app_.require_subcommand(0, 1);
    app_.allow_extras();
    addCommonOptions();
    addCommands();
  }
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  ProgramOptions parse(int argumentCount, const char* const* arguments) {
    try {
      app_.parse(argumentCount, arguments);
    } catch (const CLI::CallForHelp&) {
      return {common_, TextAnswer{app_.help() + "\n"}};
    } catch (const CLI::CallForVersion& version) {
      return {common_, TextAnswer{std::string(version.what()) + "\n"}};
    } catch (const CLI::ParseError& error) {
      // A mistyped option makes other arguments seem to be missing, so it is told first.
      rejectExtras(app_);
      throw Failure(ExitCode::kUsage, error.what());
    }
    rejectExtras(app_);
    takeApplication();
    checkMessages();
    if (inWindow() && !app_.get_subcommands().empty()) {
      throw Failure(ExitCode::kUsage, "--window goes without a command");
    }
    if (codePage_) common_.codePage = parseCodePage(*codePage_);
    return {common_, command()};
  }

 private:
  void addCommonOptions() {
    app_.add_option("--plugin", common_.plugin, "Plug-in to load (default: the one beside the program)")
        ->option_text("FILE");
    app_.add_option("--messages", common_.messages, "Folder of the message file")->option_text("FOLDER");
    app_.add_option("--language", common_.language, "Language of the plug-in's texts: german, french or japanese")
        ->option_text("NAME");
    app_.add_option("--texture-folder", common_.textureFolder,
                    "What the folder of every texture is called, wherever it is, so that packages do not depend on it")
        ->option_text("TEXT");
    app_.add_option("--application", application_, "Plug-in and texts as a creotk.dat names them")->option_text("FILE");
    app_.add_option("--window", windowModel_, "Opens the session in a window, with MODEL when one is given")
        ->option_text("[MODEL]")
        ->expected(0, 1);
    app_.add_option("--code-page", codePage_, "System code page of the session (default 1252)")->option_text("N");
  }

  void addCommands() {
    export_ = addModelCommand(app_, "export", "Opens a model and exports it to a package", exportOptions_);
    export_->add_option("OUT", exportOptions_.output, "Package to write, *.rpk")->required()->option_text(" ");
    addModelOptions(*export_, exportOptions_);
    render_ =
        addModelCommand(app_, "render", "Opens a model, starts a renderer and sends the model to it", renderOptions_);
    addModelOptions(*render_, renderOptions_);
    snapshot_ =
        addModelCommand(app_, "snapshot", "Saves the session with the opened model in a file", snapshotOptions_);
    snapshot_->add_option("OUT", snapshotOptions_.output, "Snapshot to write")->required()->option_text(" ");
    addQuality(*snapshot_, snapshotOptions_);
    addOverlay(*snapshot_, snapshotOptions_);
    run_ = app_.add_subcommand("run", "Runs the commands of a script");
    run_->allow_extras();
    run_->add_option("SCRIPT", script_, "File with a command a line; - for standard input")
        ->required()
        ->option_text(" ");
  }

  bool inWindow() const { return app_.count("--window") > 0; }

  void takeApplication() {
    if (application_.empty()) return;
    if (app_.count("--plugin") > 0 || app_.count("--messages") > 0) {
      throw Failure(ExitCode::kUsage, "--application goes without --plugin and --messages");
    }
    const Application named = readApplicationFile(application_);
    common_.plugin = named.plugin;
    common_.messages = named.messages;
  }

  void checkMessages() const {
    std::error_code ignored;
    if (app_.count("--messages") + app_.count("--application") > 0 &&
        !std::filesystem::exists(common_.messages / kMessageFile, ignored)) {
      throw Failure(ExitCode::kUsage, fmt::format("{}: holds no {}", common_.messages.string(), kMessageFile));
    }
    if (!common_.language.empty() &&
        !std::filesystem::exists(common_.messages / common_.language / kMessageFile, ignored)) {
      throw Failure(ExitCode::kUsage,
                    fmt::format("{}: holds no texts in \"{}\"", common_.messages.string(), common_.language));
    }
  }

  decltype(ProgramOptions::command) command() const {
    if (export_->parsed()) return exportOptions_;
    if (render_->parsed()) return renderOptions_;
    if (snapshot_->parsed()) return snapshotOptions_;
    if (inWindow()) {
      WindowOptions window;
      if (!windowModel_.empty()) window.model = windowModel_;
      return window;
    }
    ScriptOptions options;
    if (run_->parsed() && script_ != "-") options.script = script_;
    return options;
  }

  CLI::App app_{"A headless stand-in for the CAD session that the Rendara plug-in runs in.", "creo-standin"};
  CommonOptions common_;
  std::filesystem::path application_, windowModel_, script_;
  std::optional<std::string> codePage_;
  ExportOptions exportOptions_;
  RenderOptions renderOptions_;
  SnapshotOptions snapshotOptions_;
  CLI::App* export_ = nullptr;
  CLI::App* render_ = nullptr;
  CLI::App* snapshot_ = nullptr;
  CLI::App* run_ = nullptr;
};

}  // namespace

void applyOptions(const CommonOptions& options, Session& session) {
  session.messageFolder = options.messages;
  session.language = options.language;
  session.textureFolderName = wideFromUtf8(options.textureFolder);
}

ProgramOptions parseOptions(int argumentCount, const char* const* arguments) {
  return CommandLine().parse(argumentCount, arguments);
}

}  // namespace standin

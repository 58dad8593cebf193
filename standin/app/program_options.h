// What the command line says.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>

namespace standin {

class Session;

// Options of every way to run the program.
struct CommonOptions {
  std::filesystem::path plugin;
  std::filesystem::path messages;
  std::optional<unsigned> codePage;  // none: the system's, or what an opened snapshot says
  std::string language;              // a folder of translated messages; empty: English
  std::string textureFolder;         // what texture folders are called towards the plug-in; empty: as they are
};

void applyOptions(const CommonOptions& options, Session& session);

// What is opened, and what of it is sent how.
struct ModelOptions {
  std::filesystem::path model;
  std::optional<std::filesystem::path> overlay;
  std::string representation;          // empty: the master one
  std::optional<std::string> quality;  // none: the plug-in's default
  std::optional<std::string> upAxis;
  std::optional<std::filesystem::path> frameFile;  // of a mechanism's motion
  bool noNurbs = false;
  bool sharedMaterials = false;
};

struct ExportOptions : ModelOptions {
  std::filesystem::path output;
};

struct RenderOptions : ModelOptions {};

// The session as it is when the model was opened, saved in a file.
struct SnapshotOptions : ModelOptions {
  std::filesystem::path output;
};

struct ScriptOptions {
  std::optional<std::filesystem::path> script;  // none: standard input; a prompt when that is a terminal
};

// The session in a window.
struct WindowOptions {
  std::optional<std::filesystem::path> model;  // to open at once
};

// --help or --version were asked for.
struct TextAnswer {
  std::string text;
};

struct ProgramOptions {
  CommonOptions common;
  std::variant<ScriptOptions, ExportOptions, RenderOptions, SnapshotOptions, WindowOptions, TextAnswer> command;
};

// Throws Failure(kUsage).
ProgramOptions parseOptions(int argumentCount, const char* const* arguments);

}  // namespace standin

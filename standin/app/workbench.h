// The session with the plug-in in it: what both the one-shot export and the scripts do with them.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "standin/app/package_file.h"
#include "standin/app/plugin_host.h"
#include "standin/cad/model_reader.h"
#include "standin/cad/session.h"
#include "tools/terminal/progress.h"

namespace standin {

// Reads STEP files and snapshots, told apart by their content.
LoadResult readModel(Session& session, const std::filesystem::path& file, const LoadProgress& progress);

// A package that a command wrote where a file dialog was answered with its path.
struct WrittenPackage {
  std::filesystem::path path;
  std::optional<rpk::PackageCounts> counts;  // none for devices and pipes
};

// What a ribbon command did.
struct CommandReport {
  int result = 0;       // of the command's action
  std::string printed;  // on standard output, by the plug-in
  std::vector<WrittenPackage> packages;
};

// Throws Failure(kModel) when the file is not there or is a folder.
void checkReadable(const std::filesystem::path& file);

class Workbench {
 public:
  // Relative paths mean `folder`.
  Workbench(Session& session, Plugin& plugin, terminal::Progress& progress, std::filesystem::path folder,
            ModelReader reader = readModel);

  Session& session() { return session_; }
  Plugin& plugin() { return plugin_; }
  std::filesystem::path resolve(const std::filesystem::path& path) const { return folder_ / path; }

  // Opens a model and applies the overlay: the given one, or the file of the model's name with ".json" beside it when
  // there is one; a snapshot, which is of a session with its overlay, takes only a given one. The system's code page
  // becomes that of the system that a snapshot was made on, and for other files what it was in the beginning. Throws
  // Failure(kModel) and keeps the model that was open.
  void open(const std::filesystem::path& file, const std::optional<std::filesystem::path>& overlay);

  // From now on the code page stays as it is, whatever is opened.
  void keepCodePage() { codePage_.reset(); }

  // Runs a command of the plug-in, which is loaded when it is not. Throws Failure when there is no such command, and
  // when a path that a file dialog was answered with is not a complete package afterwards.
  CommandReport run(const std::string& commandName);

 private:
  LoadResult read(const std::filesystem::path& file);
  // `beside`: without a given overlay the one beside the file is taken.
  void applyFittingOverlay(const std::filesystem::path& file, const std::optional<std::filesystem::path>& overlay,
                           bool beside);
  // The one that the file was saved with, or that of the beginning.
  void takeCodePage(const std::filesystem::path& file, std::optional<unsigned> saved);
  // Runs the action with the progress of the tessellation on display.
  std::optional<int> runShowingProgress(const std::string& commandName);

  Session& session_;
  Plugin& plugin_;
  terminal::Progress& progress_;
  std::filesystem::path folder_;
  ModelReader reader_;
  std::optional<unsigned> codePage_;  // of files that do not say theirs; none: what is opened changes nothing
};

}  // namespace standin

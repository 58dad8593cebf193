// The commands of `creo-standin run` and of its prompt.
#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "standin/app/dialog_steps.h"
#include "standin/app/failure.h"
#include "standin/app/settings_file.h"
#include "standin/app/workbench.h"

namespace standin {

class Script {
 public:
  // Answers of the commands go to `output`; the settings are kept in the file of that name.
  Script(Workbench& bench, std::filesystem::path settingsFile, std::ostream& output)
      : bench_(bench), settingsFile_(std::move(settingsFile)), output_(output) {}

  // Runs one line. Throws Failure.
  void execute(const std::string& line);
  // True after `quit`.
  bool finished() const { return finished_; }

  // Runs the lines until the first that fails, which is told on `errors` as "name:line: message". A step in a dialog
  // that still waits at the end has failed, too.
  ExitCode runAll(std::istream& lines, const std::string& name, std::ostream& errors);
  // Runs the lines with a prompt before each; one that fails is told on `errors`, and it goes on.
  void runPrompt(std::istream& lines, std::ostream& errors);

 private:
  using Arguments = std::vector<std::string>;
  struct Entry {
    const char* name;
    const char* arguments;
    const char* help;
    std::size_t least, most;  // number of arguments
    void (Script::*function)(const Arguments&);
  };
  static const std::vector<Entry>& table();
  static const Entry& find(const std::string& name);

  void open(const Arguments& arguments);
  void close(const Arguments& arguments);
  void tree(const Arguments& arguments);
  void answer(const Arguments& arguments);
  void dialog(const Arguments& arguments);
  void representation(const Arguments& arguments);
  void pick(const Arguments& arguments);
  void move(const Arguments& arguments);
  void suppress(const Arguments& arguments);
  void resume(const Arguments& arguments);
  void hide(const Arguments& arguments);
  void unhide(const Arguments& arguments);
  void layer(const Arguments& arguments);
  void colour(const Arguments& arguments);
  void touch(const Arguments& arguments);
  void rename(const Arguments& arguments);
  void set(const Arguments& arguments);
  void commands(const Arguments& arguments);
  void run(const Arguments& arguments);
  void render(const Arguments& arguments);
  void update(const Arguments& arguments);
  void mode(const Arguments& arguments);
  void status(const Arguments& arguments);
  void help(const Arguments& arguments);
  void quit(const Arguments& arguments);

  Model& current();
  void runCommand(const std::string& name);
  // Runs a command with the steps as the user's side of dialogs, and tells what they showed. A step that failed counts
  // more than a failure of the command, which may come of it; line_ is its own then.
  CommandReport runWithDialogs(const std::string& name);
  void tellDialogs();
  void setStatus(const std::string& path, ProFeatStatus status);
  void addToLayer(const std::string& name, const std::string& path);
  void showLayer(const std::string& name, ProLayerDisplay display);

  Workbench& bench_;
  std::filesystem::path settingsFile_;
  std::ostream& output_;
  DialogSteps dialogSteps_;
  std::size_t line_ = 0;  // that runs, or that failed
  bool finished_ = false;
};

}  // namespace standin

#include "standin/app/script.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include "standin/app/script_line.h"
#include "tools/terminal/suggestion.h"

namespace standin {
namespace {

constexpr std::size_t kAny = 1000;

}  // namespace

const std::vector<Script::Entry>& Script::table() {
  static const std::vector<Entry> kTable = {
      {"open", "FILE [OVERLAY]", "opens a STEP file; the overlay is FILE's name with .json unless given", 1, 2,
       &Script::open},
      {"close", "", "leaves the session without an open model", 0, 0, &Script::close},
      {"tree", "[DEPTH]", "the components of the open model with their ids, names and status", 0, 1, &Script::tree},
      {"answer", "save|open PATH|cancel",
       "how the next file dialog to save or to open is answered; without an answer it is cancelled", 1, 2,
       &Script::answer},
      {"dialog", "NAME set COMPONENT VALUE | press COMPONENT | show",
       "what is done in the dialog when it is open next, step by step", 2, kAny, &Script::dialog},
      {"representation", "NAME|master|cancel", "which simplified representation is chosen when that is asked next", 1,
       1, &Script::representation},
      {"pick", "PATH... | top | cancel",
       "what the next selection picks; a path is ids or names, as in 3/5 or axle/rod:2", 1, kAny, &Script::pick},
      {"move", "PATH DX DY DZ", "moves a component, in the length unit and the axes of its assembly", 4, 4,
       &Script::move},
      {"suppress", "PATH", "suppresses a component", 1, 1, &Script::suppress},
      {"resume", "PATH", "resumes a suppressed component", 1, 1, &Script::resume},
      {"hide", "PATH", "hides a component", 1, 1, &Script::hide},
      {"unhide", "PATH", "shows a hidden component", 1, 1, &Script::unhide},
      {"layer", "NAME blank | show | add PATH",
       "blanks or shows the layers of that name, or adds a component to the one of its assembly", 2, 3, &Script::layer},
      {"colour", "PATH|PART R G B", "colours a component (its id, or a path with / or :n) or a whole part, 0 to 1 each",
       4, 4, &Script::colour},
      {"touch", "PART", "gives a model a new version stamp, as a change of it does", 1, 1, &Script::touch},
      {"rename", "OLD NEW", "renames a model", 2, 2, &Script::rename},
      {"set", "[NAME VALUE]", "changes a setting of the plug-in, which is then started anew; alone: lists them", 0, 2,
       &Script::set},
      {"commands", "", "the commands of the plug-in with their labels and icons", 0, 0, &Script::commands},
      {"run", "\"COMMAND NAME\"", "runs a command of the plug-in", 1, kAny, &Script::run},
      {"render", "", "runs \"Rendara Render\": starts a renderer and sends it the model", 0, 0, &Script::render},
      {"update", "", "runs \"Rendara Update\": sends the renderer what changed", 0, 0, &Script::update},
      {"mode", "[assembly|part|section|drawing|none]", "tells or changes the mode of the session's window", 0, 1,
       &Script::mode},
      {"status", "", "the open model, the answers that wait, what the plug-in did wrong", 0, 0, &Script::status},
      {"help", "[COMMAND]", "this list, or one command of it", 0, 1, &Script::help},
      {"quit", "", "ends", 0, 0, &Script::quit},
  };
  return kTable;
}

const Script::Entry& Script::find(const std::string& name) {
  std::vector<std::string> names;
  for (const Entry& entry : table()) {
    if (entry.name == name) return entry;
    names.emplace_back(entry.name);
  }
  failUsage(fmt::format("no command \"{}\"{}", name, terminal::didYouMean(name, names)));
}

void Script::execute(const std::string& line) {
  Arguments words = splitScriptLine(line);
  if (words.empty()) return;
  const Entry& entry = find(words.front());
  words.erase(words.begin());
  if (words.size() < entry.least || words.size() > entry.most) {
    failUsage(fmt::format("usage: {} {}", entry.name, entry.arguments));
  }
  (this->*entry.function)(words);
}

ExitCode Script::runAll(std::istream& lines, const std::string& name, std::ostream& errors) {
  const auto fail = [&](std::size_t line, const std::string& message, ExitCode code) {
    output_.flush();
    fmt::print(errors, "{}:{}: {}\n", name, line, message);
    return code;
  };
  std::string text;
  for (std::size_t number = 1; !finished_ && std::getline(lines, text); ++number) {
    line_ = number;
    try {
      execute(text);
      output_.flush();
    } catch (const Failure& failure) {
      return fail(line_, failure.what(), failure.code());
    }
  }
  const auto left = dialogSteps_.firstWaiting(bench_.session().dialogsShown);
  return left ? fail(left->line, left->message, ExitCode::kUsage) : ExitCode::kDone;
}

void Script::runPrompt(std::istream& lines, std::ostream& errors) {
  std::string line;
  while (!finished_) {
    output_ << "creo> " << std::flush;
    if (!std::getline(lines, line)) {
      output_ << "\n";
      return;
    }
    try {
      execute(line);
    } catch (const Failure& failure) {
      output_.flush();
      fmt::print(errors, "{}\n", failure.what());
    }
  }
}

void Script::help(const Arguments& arguments) {
  const auto signature = [](const Entry& entry) {
    return fmt::format("{}{}{}", entry.name, *entry.arguments ? " " : "", entry.arguments);
  };
  if (!arguments.empty()) {
    const Entry& entry = find(arguments[0]);
    fmt::print(output_, "{}\n  {}\n", signature(entry), entry.help);
    return;
  }
  for (const Entry& entry : table()) fmt::print(output_, "{:<44} {}\n", signature(entry), entry.help);
}

void Script::quit(const Arguments&) { finished_ = true; }

}  // namespace standin

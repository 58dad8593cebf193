#include "standin/app/workbench.h"

#include <fmt/format.h>

#include <exception>
#include <utility>

#include "standin/app/captured_output.h"
#include "standin/app/component_lookup.h"
#include "standin/app/failure.h"
#include "standin/snapshot/snapshot_reader.h"
#include "standin/step/step_loader.h"
#include "standin/windows/code_page.h"
#include "tools/terminal/suggestion.h"

namespace standin {
namespace {

std::vector<std::string> commandNames(Session& session) {
  std::vector<std::string> names;
  for (const Command& command : session.commands()) names.push_back(command.name);
  return names;
}

// Notes, while it lives, what a user who is asked for a file to save answers.
class AnswersNoted {
 public:
  using Ask = std::function<FileAnswer(const FileRequest&)>;
  AnswersNoted(Ask& ask, std::vector<PackageFile>& files) : ask_(ask), before_(ask) {
    if (!ask) return;
    ask = [inner = before_, &files](const FileRequest& request) {
      FileAnswer answer = inner(request);
      if (answer) files.emplace_back(*answer);
      return answer;
    };
  }
  ~AnswersNoted() { ask_ = before_; }
  AnswersNoted(const AnswersNoted&) = delete;
  AnswersNoted& operator=(const AnswersNoted&) = delete;

 private:
  Ask& ask_;
  Ask before_;
};

}  // namespace

void checkReadable(const std::filesystem::path& file) {
  std::error_code error;
  const auto status = std::filesystem::status(file, error);
  if (std::filesystem::is_directory(status)) error = std::make_error_code(std::errc::is_a_directory);
  if (error) throw Failure(ExitCode::kModel, fmt::format("{}: {}", file.string(), error.message()));
}

LoadResult readModel(Session& session, const std::filesystem::path& file, const LoadProgress& progress) {
  return isSnapshot(file) ? readSnapshot(session, file, progress) : loadStep(session, file, progress);
}

Workbench::Workbench(Session& session, Plugin& plugin, terminal::Progress& progress, std::filesystem::path folder,
                     ModelReader reader)
    : session_(session),
      plugin_(plugin),
      progress_(progress),
      folder_(std::move(folder)),
      reader_(std::move(reader)),
      codePage_(systemCodePage()) {}

void Workbench::open(const std::filesystem::path& file, const std::optional<std::filesystem::path>& overlay) {
  const std::filesystem::path resolved = resolve(file);
  checkReadable(resolved);
  Model* const modelBefore = session_.current;
  const ProMode modeBefore = session_.mode;
  try {
    const LoadResult loaded = read(resolved);
    if (!loaded.model) throw Failure(ExitCode::kModel, fmt::format("{}: {}", resolved.string(), loaded.error));
    session_.current = loaded.model;
    applyFittingOverlay(resolved, overlay, !loaded.overlaid);
    takeCodePage(resolved, loaded.codePage);
  } catch (const Failure&) {
    session_.current = modelBefore;
    session_.mode = modeBefore;
    throw;
  }
}

LoadResult Workbench::read(const std::filesystem::path& file) {
  progress_.begin();
  LoadResult result;
  try {
    result = reader_(session_, file, [this](double share) {
      progress_.show(fmt::format("reading the model: {:.0f} %", 100 * share));
      return true;
    });
  } catch (const std::exception& error) {
    // Out of memory, most likely: it is this file that cannot be read, the session goes on.
    result = {nullptr, error.what()};
  }
  progress_.end();
  return result;
}

void Workbench::applyFittingOverlay(const std::filesystem::path& file,
                                    const std::optional<std::filesystem::path>& overlay, bool beside) {
  if (!overlay && !beside) return;
  std::error_code ignored;
  std::filesystem::path chosen = overlay ? resolve(*overlay) : std::filesystem::path(file).replace_extension(".json");
  if (overlay) checkReadable(chosen);
  if (!std::filesystem::exists(chosen, ignored)) return;
  const std::string error = applyOverlay(session_, *session_.current, chosen);
  if (!error.empty()) throw Failure(ExitCode::kModel, fmt::format("{}: {}", chosen.string(), error));
}

std::optional<int> Workbench::runShowingProgress(const std::string& commandName) {
  progress_.begin();
  session_.onTessellated = [this](std::size_t count) {
    progress_.show(fmt::format("tessellating: {} surfaces", count));
  };
  const std::optional<int> result = session_.runCommand(commandName);
  session_.onTessellated = nullptr;
  progress_.end();
  return result;
}

void Workbench::takeCodePage(const std::filesystem::path& file, std::optional<unsigned> saved) {
  if (!codePage_) return;
  const unsigned codePage = saved.value_or(*codePage_);
  if (setSystemCodePage(codePage)) return;
  throw Failure(ExitCode::kModel, fmt::format("{}: needs code page {}, which is not there", file.string(), codePage));
}

CommandReport Workbench::run(const std::string& commandName) {
  plugin_.load();
  if (!session_.findCommand(commandName)) {
    throw Failure(ExitCode::kUsage, fmt::format("the plug-in has no command \"{}\"{}", commandName,
                                                terminal::didYouMean(commandName, commandNames(session_))));
  }
  // The answers that the command takes are gone from the session afterwards.
  const std::deque<FileAnswer> answers = session_.fileAnswers;
  std::vector<PackageFile> awaited;
  awaited.reserve(answers.size());
  for (const FileAnswer& answer : answers) awaited.emplace_back(answer.value_or(std::filesystem::path()));
  forgetFileFailures();

  CommandReport report;
  std::vector<PackageFile> chosen;
  const AnswersNoted noted(session_.onFileSave, chosen);
  CapturedOutput captured;
  report.result = runShowingProgress(commandName).value_or(0);
  report.printed = captured.end();
  if (const auto failure = fileFailure()) {
    throw Failure(ExitCode::kOutput, fmt::format("{}: {}", failure->path.string(), failure->message));
  }
  const std::size_t taken = answers.size() - session_.fileAnswers.size();
  for (std::size_t i = 0; i < taken; ++i) {
    if (!answers[i]) continue;
    report.packages.push_back({*answers[i], awaited[i].check(session_.current != nullptr)});
  }
  for (const PackageFile& file : chosen) {
    report.packages.push_back({file.path(), file.check(session_.current != nullptr)});
  }
  return report;
}

}  // namespace standin

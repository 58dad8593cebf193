#include "standin/app/dialog_steps.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "standin/app/dialog_picture.h"
#include "tools/terminal/suggestion.h"

namespace standin {
namespace {

// The line of the script that says the step.
std::string described(const std::string& dialog, const DialogStep& step) {
  switch (step.kind) {
    case DialogStep::Kind::set:
      return fmt::format("dialog {} set {} {}", dialog, step.component, step.value);
    case DialogStep::Kind::press:
      return fmt::format("dialog {} press {}", dialog, step.component);
    case DialogStep::Kind::show:
      break;
  }
  return fmt::format("dialog {} show", dialog);
}

std::vector<std::string> componentNames(const Dialog& dialog) {
  std::vector<std::string> names;
  for (const Widget& widget : dialog.widgets) names.push_back(widget.name);
  return names;
}

}  // namespace

std::string DialogSteps::carryOut(Dialog& dialog, const DialogStep& step) {
  if (step.kind == DialogStep::Kind::show) {
    text_ += dialogPicture(dialog);
    return "";
  }
  const bool isThere = findWidget(dialog, step.component) != nullptr;
  const std::string reason = step.kind == DialogStep::Kind::press ? userPress(dialog, step.component)
                                                                  : userSet(dialog, step.component, step.value);
  return isThere ? reason : reason + terminal::didYouMean(step.component, componentNames(dialog));
}

void DialogSteps::close(Dialog& dialog, bool hadSteps) {
  const Widget* button = defaultButton(dialog);
  const bool cancels = button != nullptr && isCancelButton(*button);
  if (cancels && !hadSteps) text_ += dialogPicture(dialog);
  if (cancels) text_ += fmt::format("dialog {} was cancelled\n", dialog.name);
  closeByDefault(dialog);
}

void DialogSteps::answer(Dialog& dialog) {
  text_ += fmt::format("dialog {}\n", dialog.name);
  std::deque<DialogStep>& steps = steps_[dialog.name];
  const bool hadSteps = !steps.empty() || failure_;
  while (!steps.empty() && !dialog.exitStatus && !failure_) {
    const DialogStep step = std::move(steps.front());
    steps.pop_front();
    const std::string reason = carryOut(dialog, step);
    if (!reason.empty() && !failure_) failure_ = {step.line, described(dialog.name, step) + ": " + reason};
  }
  if (failure_) steps.clear();
  if (!dialog.exitStatus) close(dialog, hadSteps);
}

std::string DialogSteps::takeText() { return std::exchange(text_, ""); }

std::optional<FailedStep> DialogSteps::takeFailure() { return std::exchange(failure_, std::nullopt); }

std::size_t DialogSteps::waiting() const {
  std::size_t count = 0;
  for (const auto& entry : steps_) count += entry.second.size();
  return count;
}

std::optional<FailedStep> DialogSteps::firstWaiting(const std::vector<std::string>& shown) const {
  std::optional<FailedStep> first;
  for (const auto& [dialog, steps] : steps_) {
    if (steps.empty() || (first && first->line < steps.front().line)) continue;
    const bool wasShown = std::find(shown.begin(), shown.end(), dialog) != shown.end();
    first = {steps.front().line,
             fmt::format("{}: {}{}", described(dialog, steps.front()),
                         wasShown ? "the dialog was not opened again" : "the dialog was never opened",
                         wasShown ? "" : terminal::didYouMean(dialog, shown))};
  }
  return first;
}

}  // namespace standin

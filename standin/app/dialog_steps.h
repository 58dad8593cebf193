// What a script has the user do in dialogs: steps that wait until the dialog of their name is open.
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "standin/cad/dialog.h"

namespace standin {

struct DialogStep {
  enum class Kind { set, press, show };
  Kind kind = Kind::show;
  std::string component, value;
  std::size_t line = 0;  // of the script
};

// A step that could not be carried out.
struct FailedStep {
  std::size_t line = 0;
  std::string message;
};

class DialogSteps {
 public:
  void add(const std::string& dialog, DialogStep step) { steps_[dialog].push_back(std::move(step)); }

  // The user's side of an open dialog. Its steps are carried out in their order until the dialog closes; what is left
  // of them waits for the next time. A dialog that is then still open is closed by its default button. One without
  // steps, too, and it is shown first when that cancels it. After a step that failed no other is carried out until
  // takeFailure(). Runs below the plug-in, so it throws nothing of its own.
  void answer(Dialog& dialog);

  // What was shown and told since the last call, in whole lines.
  std::string takeText();
  std::optional<FailedStep> takeFailure();

  std::size_t waiting() const;
  // The first line whose step still waits; the dialogs that were shown are suggested for its name.
  std::optional<FailedStep> firstWaiting(const std::vector<std::string>& shown) const;

 private:
  // Empty, or why it failed.
  std::string carryOut(Dialog& dialog, const DialogStep& step);
  void close(Dialog& dialog, bool hadSteps);

  std::map<std::string, std::deque<DialogStep>> steps_;
  std::string text_;
  std::optional<FailedStep> failure_;
};

}  // namespace standin

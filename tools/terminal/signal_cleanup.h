// Removes what must not be left behind when a signal ends the process: on an interruption (INT, TERM, HUP, QUIT) and
// on a crash, after which the process ends as the signal wants it to. It
// does the same when the plug-in calls exit().
#pragma once

#include <filesystem>
#include <string>

namespace terminal {

// To be called once, before any session exists, so that the session's own handler of page faults comes first.
void installSignalCleanup();

// Has the line on the terminal behind the descriptor cleared, too; with -1 no longer.
void clearLineOnSignal(int terminal);

// While it lives the path is removed when a signal ends the process; a folder only when it is empty by then. Removal
// goes from the newest to the oldest. It removes nothing itself.
class RemovedOnSignal {
 public:
  enum class Kind { kFile, kFolder };
  RemovedOnSignal(const std::filesystem::path& path, Kind kind);
  ~RemovedOnSignal();
  RemovedOnSignal(const RemovedOnSignal&) = delete;
  RemovedOnSignal& operator=(const RemovedOnSignal&) = delete;

 private:
  std::string path_;
  std::size_t slot_;
};

}  // namespace terminal

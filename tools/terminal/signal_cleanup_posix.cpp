#include "tools/terminal/signal_cleanup.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace terminal {
namespace {

struct Entry {
  std::atomic<const char*> path = nullptr;
  RemovedOnSignal::Kind kind = RemovedOnSignal::Kind::kFile;
};

constexpr std::size_t kMaxEntries = 16;
std::array<Entry, kMaxEntries> entries;
std::atomic<std::size_t> entryCount = 0;
std::atomic<int> terminalToClear = -1;

constexpr std::array kInterruptions = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
constexpr std::array kCrashes = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};
std::array<struct sigaction, kCrashes.size()> crashHandlers;

// Only operations that may be called from a signal handler below.

void removeAll() {
  constexpr std::string_view kClearedLine = "\r\033[K";
  // Nothing can be done when that fails.
  if (terminalToClear >= 0 && write(terminalToClear, kClearedLine.data(), kClearedLine.size()) < 0)
    terminalToClear = -1;
  for (std::size_t i = entryCount; i > 0; --i) {
    const Entry& entry = entries[i - 1];
    const char* path = entry.path;
    if (!path) continue;
    if (entry.kind == RemovedOnSignal::Kind::kFile) {
      unlink(path);
    } else {
      rmdir(path);
    }
  }
}

void onInterruption(int signal) {
  removeAll();
  std::signal(signal, SIG_DFL);
  raise(signal);
}

void onCrash(int signal, siginfo_t* info, void*) {
  const int savedError = errno;
  removeAll();
  for (std::size_t i = 0; i < kCrashes.size(); ++i) {
    if (kCrashes[i] == signal) sigaction(signal, &crashHandlers[i], nullptr);
  }
  errno = savedError;
  // A fault comes again when the instruction is repeated, now to the handler of before; a signal that was sent not.
  if (signal == SIGABRT || info->si_code <= 0) raise(signal);
}

}  // namespace

void clearLineOnSignal(int terminal) { terminalToClear = terminal; }

void installSignalCleanup() {
  std::atexit(removeAll);
  // A reader of our output that went away is an error of writing, not an end without cleaning up.
  std::signal(SIGPIPE, SIG_IGN);
  struct sigaction action = {};
  sigemptyset(&action.sa_mask);
  action.sa_handler = onInterruption;
  for (const int signal : kInterruptions) {
    struct sigaction before = {};
    sigaction(signal, nullptr, &before);
    // What the caller had us ignore (nohup) stays ignored.
    if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
  action.sa_flags = SA_SIGINFO;
  action.sa_sigaction = onCrash;
  for (std::size_t i = 0; i < kCrashes.size(); ++i) sigaction(kCrashes[i], &action, &crashHandlers[i]);
}

RemovedOnSignal::RemovedOnSignal(const std::filesystem::path& path, Kind kind)
    : path_(path.string()), slot_(entryCount) {
  if (slot_ == kMaxEntries) throw std::length_error("too many paths to remove on a signal");
  entries[slot_].kind = kind;
  entries[slot_].path = path_.c_str();
  ++entryCount;
}

RemovedOnSignal::~RemovedOnSignal() {
  entries[slot_].path = nullptr;
  while (entryCount > 0 && !entries[entryCount - 1].path) --entryCount;
}

}  // namespace terminal

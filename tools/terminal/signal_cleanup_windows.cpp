#include <array>
#include <atomic>
#include <cstdlib>
#include <stdexcept>

#include "platform/windows_api.h"
#include "tools/terminal/signal_cleanup.h"

namespace terminal {
namespace {

struct Entry {
  std::filesystem::path path;
  RemovedOnSignal::Kind kind = RemovedOnSignal::Kind::kFile;
  std::atomic<bool> used = false;
};

constexpr std::size_t kMaxEntries = 16;
std::array<Entry, kMaxEntries> entries;
std::atomic<std::size_t> entryCount = 0;

void removeAll() {
  for (std::size_t i = entryCount; i > 0; --i) {
    const Entry& entry = entries[i - 1];
    if (!entry.used) continue;
    if (entry.kind == RemovedOnSignal::Kind::kFile) {
      DeleteFileW(entry.path.c_str());
    } else {
      RemoveDirectoryW(entry.path.c_str());
    }
  }
}

// In a thread of the system's.
BOOL WINAPI onInterruption(DWORD) {
  removeAll();
  return FALSE;
}

}  // namespace

void clearLineOnSignal(int) {}

void installSignalCleanup() {
  std::atexit(removeAll);
  SetConsoleCtrlHandler(onInterruption, TRUE);
}

RemovedOnSignal::RemovedOnSignal(const std::filesystem::path& path, Kind kind)
    : path_(path.string()), slot_(entryCount) {
  if (slot_ == kMaxEntries) throw std::length_error("too many paths to remove on a signal");
  entries[slot_].kind = kind;
  entries[slot_].path = path;
  entries[slot_].used = true;
  ++entryCount;
}

RemovedOnSignal::~RemovedOnSignal() {
  entries[slot_].used = false;
  while (entryCount > 0 && !entries[entryCount - 1].used) --entryCount;
}

}  // namespace terminal

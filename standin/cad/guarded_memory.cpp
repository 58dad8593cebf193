#include "standin/cad/guarded_memory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <deque>
#include <functional>
#include <optional>
#include <unordered_map>

#include "standin/cad/pages.h"

namespace standin {
namespace {

enum class Breach : int { overread, afterFree };

// Pages that nobody may touch. Written by the one thread that allocates, read by the fault handler: `begin` is set
// last and cleared first, and null marks a free slot.
struct Guard {
  std::atomic<char*> begin{nullptr};
  std::atomic<char*> end{nullptr};
  std::atomic<const char*> owner{nullptr};
  std::atomic<Breach> breach{Breach::overread};
  std::atomic<bool> opened{false};  // by a breach, which leaves the pages readable
};

struct Report {
  std::atomic<const char*> owner{nullptr};
  std::atomic<Breach> breach{Breach::overread};
};

constexpr std::size_t kMostGuards = 8192;
// Freed memory of up to so many pages stays mapped and is used again once enough of its size has been freed since:
// most arrays are small, and mapping costs more than closing and opening.
constexpr std::size_t kMostRecycledPages = 4;
constexpr std::size_t kRecycledAfter = 256;
constexpr std::size_t kMostQuarantined = 512;  // of each recycled size, and of all others together

// Fixed tables: the fault handler may neither allocate nor lock.
std::array<Guard, kMostGuards> guards;
std::array<Report, 256> reports;
std::atomic<std::size_t> reportCount{0};

// What the allocating side knows of the slots. Never destroyed, since sessions may outlive it otherwise.
struct Slots {
  std::vector<std::size_t> free;
  std::unordered_map<const char*, std::size_t> byEnd;  // of live memory
  // Closed slots by the pages of their memory (the last for all larger ones), oldest first.
  std::array<std::deque<std::size_t>, kMostRecycledPages + 2> quarantined;
};

Slots& slots() {
  static Slots& instance = *new Slots;
  return instance;
}

std::size_t roundUp(std::size_t size) { return (size + pageSize() - 1) / pageSize() * pageSize(); }

// Opens the guard that holds the address and notes the breach; false when no guard does.
bool openGuard(const void* fault) {
  const char* address = static_cast<const char*>(fault);
  const std::less<> before;
  for (Guard& guard : guards) {
    char* begin = guard.begin.load(std::memory_order_acquire);
    const char* end = guard.end.load(std::memory_order_relaxed);
    if (begin == nullptr || before(address, begin) || !before(address, end)) {
      continue;
    }
    const std::size_t slot = reportCount.fetch_add(1);
    if (slot < reports.size()) {
      reports[slot].breach = guard.breach.load(std::memory_order_relaxed);
      reports[slot].owner = guard.owner.load(std::memory_order_relaxed);
    }
    guard.opened.store(true, std::memory_order_relaxed);
    return openPages(begin, static_cast<std::size_t>(end - begin));
  }
  return false;
}

// Makes the tables and watches for faults, once. True when the handler is in place.
bool prepare() {
  static const bool prepared = [] {
    for (std::size_t slot = kMostGuards; slot > 0; --slot) {
      slots().free.push_back(slot - 1);
    }
    return watchFaults(openGuard);
  }();
  return prepared;
}

void setGuard(std::size_t slot, char* begin, std::size_t size, Breach breach) {
  Guard& guard = guards[slot];
  guard.begin.store(nullptr, std::memory_order_release);
  guard.end.store(begin + size, std::memory_order_relaxed);
  guard.breach.store(breach, std::memory_order_relaxed);
  guard.begin.store(begin, std::memory_order_release);
}

std::deque<std::size_t>& quarantineOf(std::size_t usable) {
  return slots().quarantined[std::min(usable / pageSize(), kMostRecycledPages + 1)];
}

bool isRecycled(std::size_t usable) { return usable <= kMostRecycledPages * pageSize(); }

void releaseOldest(std::deque<std::size_t>& quarantine) {
  const std::size_t slot = quarantine.front();
  quarantine.pop_front();
  char* begin = guards[slot].begin.load();
  const auto size = static_cast<std::size_t>(guards[slot].end.load() - begin);
  guards[slot].begin.store(nullptr);
  releasePages(begin, size);
  slots().free.push_back(slot);
}

// Opens the oldest closed memory of the size; the slot, none when too little of it has been freed so far.
std::optional<std::size_t> recycle(std::size_t usable) {
  std::deque<std::size_t>& quarantine = quarantineOf(usable);
  if (!isRecycled(usable) || quarantine.size() < kRecycledAfter) {
    return std::nullopt;
  }
  const std::size_t slot = quarantine.front();
  char* begin = guards[slot].begin.load();
  if (usable > 0 && !openPages(begin, usable)) {
    return std::nullopt;
  }
  if (guards[slot].opened.exchange(false)) {
    closePages(begin + usable, pageSize());
  }
  quarantine.pop_front();
  setGuard(slot, begin + usable, pageSize(), Breach::overread);
  return slot;
}

// Maps new memory with a guard behind it; the slot, none when the system has no room.
std::optional<std::size_t> mapNew(std::size_t usable) {
  if (slots().free.empty()) {
    return std::nullopt;
  }
  char* base = reservePages(usable + pageSize());
  if (base == nullptr) {
    return std::nullopt;
  }
  if (usable > 0 && !openPages(base, usable)) {
    releasePages(base, usable + pageSize());
    return std::nullopt;
  }
  const std::size_t slot = slots().free.back();
  slots().free.pop_back();
  guards[slot].opened.store(false);
  setGuard(slot, base + usable, pageSize(), Breach::overread);
  return slot;
}

// Makes memory and its guard unreadable. Memory that is not recycled is given back, its addresses stay taken.
void closeFreed(char* begin, std::size_t usable, bool guardWasOpened) {
  const std::size_t whole = usable + pageSize();
  if (!isRecycled(usable)) {
    discardPages(begin, whole);
  } else if (usable > 0 || guardWasOpened) {
    closePages(begin, whole);
  }
}

}  // namespace

void* allocateGuarded(std::size_t size, const char* owner) {
  if (!prepare()) {
    return nullptr;
  }
  const std::size_t usable = roundUp(size);
  std::optional<std::size_t> slot = recycle(usable);
  if (!slot) {
    slot = mapNew(usable);
  }
  if (!slot) {
    return nullptr;
  }
  char* end = guards[*slot].begin.load();
  guards[*slot].owner = owner;
  slots().byEnd[end] = *slot;
  return end - size;
}

void freeGuarded(void* memory, std::size_t size) {
  char* end = static_cast<char*>(memory) + size;
  const auto found = slots().byEnd.find(end);
  if (found == slots().byEnd.end()) {
    return;
  }
  const std::size_t slot = found->second;
  slots().byEnd.erase(found);
  const std::size_t usable = roundUp(size);
  closeFreed(end - usable, usable, guards[slot].opened.exchange(false));
  setGuard(slot, end - usable, usable + pageSize(), Breach::afterFree);
  std::deque<std::size_t>& quarantine = quarantineOf(usable);
  quarantine.push_back(slot);
  if (quarantine.size() > kMostQuarantined) {
    releaseOldest(quarantine);
  }
}

bool hasGuardReports() { return reportCount.load(std::memory_order_relaxed) != 0; }

std::vector<std::string> takeGuardReports() {
  std::vector<std::string> lines;
  const std::size_t count = std::min(reportCount.load(), reports.size());
  for (std::size_t at = 0; at < count; ++at) {
    const char* owner = reports[at].owner.load();
    const bool late = reports[at].breach.load() == Breach::afterFree;
    lines.push_back(std::string(owner != nullptr ? owner : "an operation") +
                    (late ? ": an array was used after it was freed" : ": an array was read past its end"));
  }
  reportCount = 0;
  return lines;
}

}  // namespace standin

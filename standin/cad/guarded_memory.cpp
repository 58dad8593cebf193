#include "standin/cad/guarded_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <deque>
#include <unordered_map>

namespace standin {
namespace {

enum class Breach : int { overread, afterFree };

// Pages that nobody may touch. Written by the one thread that allocates, read by the fault handler: `begin` is set
// last and cleared first, and 0 marks a free slot.
struct Guard {
  std::atomic<std::uintptr_t> begin{0};
  std::atomic<std::uintptr_t> end{0};
  std::atomic<const char*> owner{nullptr};
  std::atomic<Breach> breach{Breach::overread};
};

struct Report {
  std::atomic<const char*> owner{nullptr};
  std::atomic<Breach> breach{Breach::overread};
};

constexpr std::size_t kMostGuards = 8192;
constexpr std::size_t kMostQuarantined = 1024;

// Fixed tables: the fault handler may neither allocate nor lock.
std::array<Guard, kMostGuards> guards;
std::array<Report, 256> reports;
std::atomic<std::size_t> reportCount{0};

struct sigaction previousAction;

// What the allocating side knows of the slots. Never destroyed, since sessions may outlive it otherwise.
struct Slots {
  std::vector<std::size_t> free;
  std::unordered_map<std::uintptr_t, std::size_t> byEnd;  // of live memory
  std::deque<std::size_t> quarantined;                    // oldest first
};

Slots& slots() {
  static Slots& instance = *new Slots;
  return instance;
}

std::size_t pageSize() {
  static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

std::size_t roundUp(std::size_t size) { return (size + pageSize() - 1) / pageSize() * pageSize(); }

// Opens the guard that holds the address and notes the breach; false when no guard does.
bool openGuard(std::uintptr_t address) {
  for (Guard& guard : guards) {
    const std::uintptr_t begin = guard.begin.load(std::memory_order_acquire);
    const std::uintptr_t end = guard.end.load(std::memory_order_relaxed);
    if (begin == 0 || address < begin || address >= end) {
      continue;
    }
    const std::size_t slot = reportCount.fetch_add(1);
    if (slot < reports.size()) {
      reports[slot].breach = guard.breach.load(std::memory_order_relaxed);
      reports[slot].owner = guard.owner.load(std::memory_order_relaxed);
    }
    return mprotect(reinterpret_cast<void*>(begin), end - begin, PROT_READ | PROT_WRITE) == 0;
  }
  return false;
}

void handleFault(int signal, siginfo_t* info, void* context) {
  if (openGuard(reinterpret_cast<std::uintptr_t>(info->si_addr))) {
    return;
  }
  if ((previousAction.sa_flags & SA_SIGINFO) != 0) {
    previousAction.sa_sigaction(signal, info, context);
  } else if (previousAction.sa_handler == SIG_DFL || previousAction.sa_handler == SIG_IGN) {
    sigaction(signal, &previousAction, nullptr);  // the access is repeated and ends the process
  } else {
    previousAction.sa_handler(signal);
  }
}

// Makes the tables and takes over the signal, once. True when the handler is in place.
bool prepare() {
  static const bool prepared = [] {
    for (std::size_t slot = kMostGuards; slot > 0; --slot) {
      slots().free.push_back(slot - 1);
    }
    struct sigaction action = {};
    action.sa_sigaction = handleFault;
    action.sa_flags = SA_SIGINFO | SA_NODEFER;
    sigemptyset(&action.sa_mask);
    return sigaction(SIGSEGV, &action, &previousAction) == 0;
  }();
  return prepared;
}

void setGuard(std::size_t slot, std::uintptr_t begin, std::size_t size, Breach breach) {
  Guard& guard = guards[slot];
  guard.begin.store(0, std::memory_order_release);
  guard.end.store(begin + size, std::memory_order_relaxed);
  guard.breach.store(breach, std::memory_order_relaxed);
  guard.begin.store(begin, std::memory_order_release);
}

void releaseOldest() {
  const std::size_t slot = slots().quarantined.front();
  slots().quarantined.pop_front();
  const std::uintptr_t begin = guards[slot].begin.load();
  const std::size_t size = guards[slot].end.load() - begin;
  guards[slot].begin.store(0);
  munmap(reinterpret_cast<void*>(begin), size);
  slots().free.push_back(slot);
}

}  // namespace

void* allocateGuarded(std::size_t size, const char* owner) {
  if (!prepare() || slots().free.empty()) {
    return nullptr;
  }
  const std::size_t usable = roundUp(size);
  void* base = mmap(nullptr, usable + pageSize(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (base == MAP_FAILED) {
    return nullptr;
  }
  if (usable > 0 && mprotect(base, usable, PROT_READ | PROT_WRITE) != 0) {
    munmap(base, usable + pageSize());
    return nullptr;
  }
  const std::size_t slot = slots().free.back();
  slots().free.pop_back();
  const std::uintptr_t end = reinterpret_cast<std::uintptr_t>(base) + usable;
  slots().byEnd[end] = slot;
  guards[slot].owner = owner;
  setGuard(slot, end, pageSize(), Breach::overread);
  return reinterpret_cast<void*>(end - size);
}

void freeGuarded(void* memory, std::size_t size) {
  const std::uintptr_t end = reinterpret_cast<std::uintptr_t>(memory) + size;
  const auto found = slots().byEnd.find(end);
  if (found == slots().byEnd.end()) {
    return;
  }
  const std::size_t slot = found->second;
  slots().byEnd.erase(found);
  const std::size_t usable = roundUp(size);
  // A fresh mapping over the old one gives the memory back and keeps the addresses taken.
  mmap(reinterpret_cast<void*>(end - usable), usable + pageSize(), PROT_NONE,
       MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED | MAP_NORESERVE, -1, 0);
  setGuard(slot, end - usable, usable + pageSize(), Breach::afterFree);
  slots().quarantined.push_back(slot);
  if (slots().quarantined.size() > kMostQuarantined) {
    releaseOldest();
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

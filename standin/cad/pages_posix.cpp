#include <sys/mman.h>
#include <unistd.h>

#include <csignal>

#include "standin/cad/pages.h"

namespace standin {
namespace {

struct sigaction previousAction;
bool (*repeatAccess)(const void* address) = nullptr;

void handleFault(int signal, siginfo_t* info, void* context) {
  if (repeatAccess(info->si_addr)) {
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

}  // namespace

std::size_t pageSize() {
  static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

char* reservePages(std::size_t size) {
  void* begin = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return begin == MAP_FAILED ? nullptr : static_cast<char*>(begin);
}

void releasePages(char* begin, std::size_t size) { munmap(begin, size); }

bool openPages(char* begin, std::size_t size) { return mprotect(begin, size, PROT_READ | PROT_WRITE) == 0; }

void closePages(char* begin, std::size_t size) { mprotect(begin, size, PROT_NONE); }

void discardPages(char* begin, std::size_t size) {
  // Where the system has no room for the new mapping the memory merely stays readable.
  static_cast<void>(mmap(begin, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED | MAP_NORESERVE, -1, 0));
}

bool watchFaults(bool (*repeat)(const void* address)) {
  repeatAccess = repeat;
  struct sigaction action = {};
  action.sa_sigaction = handleFault;
  action.sa_flags = SA_SIGINFO | SA_NODEFER;
  sigemptyset(&action.sa_mask);
  return sigaction(SIGSEGV, &action, &previousAction) == 0;
}

}  // namespace standin

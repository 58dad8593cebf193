#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>

#include "standin/renderer/descriptor.h"
#include "standin/renderer/process.h"

namespace standin {
namespace {

// Threads that are made later have the signals blocked, too.
Descriptor openStopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, number);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  Descriptor descriptor(signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
  if (!descriptor) throw std::system_error(errno, std::generic_category(), "signalfd");
  return descriptor;
}

}  // namespace

long processId() { return getpid(); }

std::filesystem::path programPath() { return std::filesystem::read_symlink("/proc/self/exe"); }

void leaveTerminal() {
  for (std::FILE* stream : {stdin, stdout, stderr}) {
    if (!std::freopen("/dev/null", "r+", stream)) throw std::system_error(errno, std::generic_category(), "/dev/null");
  }
}

SocketNumber stopRequest() {
  static const Descriptor signals = openStopSignals();
  return signals.get();
}

}  // namespace standin

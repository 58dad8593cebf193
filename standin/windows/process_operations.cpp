// Starting of programs. What is started belongs to nobody here: it is adopted by the system, so that it may outlive
// this process and leaves no zombie, and has a group and a session of its own, so that no terminal's signals reach it.
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <optional>
#include <string>

#include "platform/windows_api.h"
#include "standin/windows/handle_table.h"
#include "standin/windows/native_path.h"

namespace {

constexpr int kFirstOwnDescriptor = 3;

// What the processes on the way to the program tell through the pipe.
struct Report {
  enum Kind : int { kStarted, kFailed } kind;
  int value;  // the process id, or the error
};

void tell(int pipe, Report::Kind kind, int value) {
  const Report report = {kind, value};
  while (write(pipe, &report, sizeof report) < 0 && errno == EINTR) {
  }
}

// From here to the program: async-signal-safe calls only, since the process may have had other threads.

void resetSignals() {
  struct sigaction standard = {};
  standard.sa_handler = SIG_DFL;
  for (int number = 1; number < NSIG; ++number) {
    sigaction(number, &standard, nullptr);  // fails for those that cannot be caught
  }
  sigset_t none;
  sigemptyset(&none);
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
}

// The pipe stays open until the program runs, like everything else but the standard streams.
void keepDescriptorsFromProgram() {
  if (close_range(kFirstOwnDescriptor, ~0U, CLOSE_RANGE_CLOEXEC) == 0) {
    return;
  }
  const long limit = sysconf(_SC_OPEN_MAX);
  for (int descriptor = kFirstOwnDescriptor; descriptor < limit; ++descriptor) {
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  }
}

[[noreturn]] void runProgram(const char* program, char* const* arguments, int pipe) {
  resetSignals();
  keepDescriptorsFromProgram();
  execv(program, arguments);
  tell(pipe, Report::kFailed, errno);
  _exit(1);
}

// A process between this one and the program, which ends at once and leaves the program to the system.
[[noreturn]] void handOver(const char* program, char* const* arguments, int pipe) {
  setsid();
  const pid_t process = fork();
  if (process == 0) {
    runProgram(program, arguments, pipe);
  }
  tell(pipe, process < 0 ? Report::kFailed : Report::kStarted, process < 0 ? errno : process);
  _exit(0);
}

// The pipe ends when the program runs or when all on the way to it have ended.
std::optional<pid_t> readReports(int pipe) {
  std::optional<pid_t> started;
  bool failed = false;
  while (true) {
    Report report = {};
    const ssize_t size = read(pipe, &report, sizeof report);
    if (size < 0 && errno == EINTR) {
      continue;
    }
    if (size != sizeof report) {
      return failed ? std::nullopt : started;
    }
    failed = failed || report.kind == Report::kFailed;
    if (report.kind == Report::kStarted) {
      started = report.value;
    }
  }
}

// The id of the new process; none when it could not be made or the program could not be run.
std::optional<pid_t> startProgram(const std::string& program) {
  std::string name = program;
  char* const arguments[] = {name.data(), nullptr};
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    return std::nullopt;
  }
  // No handler of this process may run in its copies.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  const pid_t between = fork();
  if (between == 0) {
    handOver(program.c_str(), arguments, ends[1]);
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  close(ends[1]);
  const std::optional<pid_t> process = between > 0 ? readReports(ends[0]) : std::nullopt;
  close(ends[0]);
  while (between > 0 && waitpid(between, nullptr, 0) < 0 && errno == EINTR) {
  }
  return process;
}

}  // namespace

extern "C" {

BOOL CreateProcessW(const wchar_t* program, wchar_t* commandLine, SECURITY_ATTRIBUTES* processSecurity,
                    SECURITY_ATTRIBUTES* threadSecurity, BOOL inheritHandles, DWORD creationFlags, void* environment,
                    const wchar_t* folder, STARTUPINFOW* startup, PROCESS_INFORMATION* process) {
  using namespace standin;
  return guarded(BOOL{0}, [&]() -> BOOL {
    HandleTable& table = HandleTable::instance();
    if (program == nullptr || startup == nullptr || process == nullptr) {
      table.noteMisuse("CreateProcessW", "the program, the start-up record or the result is null");
      return 0;
    }
    if (commandLine != nullptr || processSecurity != nullptr || threadSecurity != nullptr || inheritHandles != 0 ||
        creationFlags != 0 || environment != nullptr || folder != nullptr) {
      table.noteMisuse("CreateProcessW", "only a program by its path, with nothing handed on, can be started here");
      return 0;
    }
    const std::string path = nativePath(program);
    const std::optional<pid_t> started = startProgram(path);
    if (!started) {
      return 0;
    }
    const std::string what = "process " + std::to_string(*started) + " (" + path + ")";
    process->hProcess = std::bit_cast<HANDLE>(table.addObject("the " + what));
    process->hThread = std::bit_cast<HANDLE>(table.addObject("the thread of the " + what));
    process->dwProcessId = static_cast<DWORD>(*started);
    process->dwThreadId = static_cast<DWORD>(*started);
    return 1;
  });
}

BOOL CloseHandle(HANDLE handle) {
  using namespace standin;
  return guarded(BOOL{0}, [&]() -> BOOL {
    return HandleTable::instance().closeObject("CloseHandle", std::bit_cast<std::uintptr_t>(handle)) ? 1 : 0;
  });
}
}

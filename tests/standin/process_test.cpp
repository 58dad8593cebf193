#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <map>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "platform/windows_api.h"
#include "standin/windows/clock.h"
#include "standin/windows/code_page.h"
#include "tests/standin/machine_fixture.h"

namespace standin {
namespace {

namespace fs = std::filesystem;
using rendara::testing::readFile;
using rendara::testing::writeFile;

struct Started {
  BOOL result;
  PROCESS_INFORMATION process;
};

Started start(const std::wstring& program) {
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  Started started = {};
  started.result =
      CreateProcessW(program.c_str(), nullptr, nullptr, nullptr, 0, 0, nullptr, nullptr, &startup, &started.process);
  return started;
}

void closeHandles(const PROCESS_INFORMATION& process) {
  EXPECT_EQ(CloseHandle(process.hThread), 1);
  EXPECT_EQ(CloseHandle(process.hProcess), 1);
}

bool hasChildren() { return waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD; }

class Processes : public OnMachine {
 protected:
  // A program that writes what it was given, line by line as "name value", and is done when the file is there.
  fs::path writeProgram(const std::string& name) const {
    fs::create_directories((folder() / name).parent_path());
    writeFile(folder() / name,
              "#!/bin/sh\n"
              "{ echo \"program $0\"\n"
              "  echo \"arguments $#\"\n"
              "  echo \"process $$\"\n"
              "  echo \"environment $RENDARA_MACHINE\"\n"
              "  echo \"folder $(pwd)\"\n"
              "  echo \"session $(sed 's/.*) //' /proc/$$/stat | cut -d' ' -f4)\"\n"
              "  echo \"parent $(sed 's/.*) //' /proc/$$/stat | cut -d' ' -f2)\"\n"
              "  grep -E 'SigBlk|SigIgn' /proc/$$/status | tr -d ':\\t' | sed 's/Sig.../& /'\n"
              "  ls -l /proc/$$/fd | sed -n 's/.* -> /open /p'\n"
              "} > \"$RENDARA_MACHINE/partial\"\n"
              "mv \"$RENDARA_MACHINE/partial\" \"$RENDARA_MACHINE/report\"\n");
    fs::permissions(folder() / name, fs::perms::owner_all);
    return folder() / name;
  }

  std::multimap<std::string, std::string> report() const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!fs::exists(folder() / "report") && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    std::istringstream text(readFile(folder() / "report"));
    std::multimap<std::string, std::string> lines;
    for (std::string line; std::getline(text, line);) {
      lines.emplace(line.substr(0, line.find(' ')), line.substr(line.find(' ') + 1));
    }
    fs::remove(folder() / "report");
    return lines;
  }
};

std::string one(const std::multimap<std::string, std::string>& report, const std::string& name) {
  const auto found = report.find(name);
  return found != report.end() ? found->second : "(missing)";
}

TEST_F(Processes, StartWithNothingOfThisOneButStreamsAndEnvironment) {
  const fs::path program = writeProgram(
      "gr\xC3\xB6\xC3\x9F"
      "e/the program");
  writeFile(folder() / "secret", "");
  const int secret = open((folder() / "secret").c_str(), O_RDONLY);  // not closed on exec
  const auto ignored = signal(SIGUSR1, SIG_IGN);
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR2);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);

  std::wstring windowsPath = wideFromUtf8(program.string());
  std::replace(windowsPath.begin(), windowsPath.end(), L'/', L'\\');
  const Started started = start(windowsPath);
  ASSERT_EQ(started.result, 1);
  EXPECT_FALSE(hasChildren()) << "whoever waits for its own children would meet one";
  sigset_t now;
  pthread_sigmask(SIG_SETMASK, &before, &now);
  EXPECT_EQ(sigismember(&now, SIGUSR2), 1);
  EXPECT_EQ(sigismember(&now, SIGTERM), 0) << "signals stayed blocked";
  signal(SIGUSR1, ignored);
  close(secret);

  const auto lines = report();
  EXPECT_EQ(one(lines, "program"), program.string());
  EXPECT_EQ(one(lines, "arguments"), "0");
  EXPECT_EQ(one(lines, "process"), std::to_string(started.process.dwProcessId));
  EXPECT_EQ(one(lines, "environment"), folder().string());
  EXPECT_EQ(one(lines, "folder"), fs::current_path().string());
  EXPECT_GT(std::stol(one(lines, "session")), 0);
  EXPECT_NE(one(lines, "session"), std::to_string(getsid(0)));
  EXPECT_GT(std::stol(one(lines, "parent")), 0);
  EXPECT_NE(one(lines, "parent"), std::to_string(getpid()));
  EXPECT_EQ(one(lines, "SigBlk"), "0000000000000000");
  EXPECT_EQ(one(lines, "SigIgn"), "0000000000000000");
  EXPECT_GE(lines.count("open"), 3u);
  for (auto [at, end] = lines.equal_range("open"); at != end; ++at) {
    EXPECT_NE(at->second, (folder() / "secret").string());
  }
  EXPECT_EQ(openHandles().size(), 2u);
  closeHandles(started.process);
}

TEST_F(Processes, StartByARelativePathWithoutASearch) {
  const fs::path program = writeProgram("sub/relative");
  const fs::path before = fs::current_path();
  fs::current_path(folder());
  const Started started = start(L"sub\\relative");
  const Started searched = start(L"sh");
  fs::current_path(before);
  EXPECT_EQ(searched.result, 0);
  ASSERT_EQ(started.result, 1);
  closeHandles(started.process);
  EXPECT_EQ(one(report(), "folder"), folder().string());
}

TEST_F(Processes, TellWhatCannotBeStarted) {
  writeProgram("locked");
  fs::permissions(folder() / "locked", fs::perms::owner_read);
  writeFile(folder() / "no program", "echo hello\n");
  fs::permissions(folder() / "no program", fs::perms::owner_all);
  writeFile(folder() / "no interpreter", "#!/nowhere/at/all\n");
  fs::permissions(folder() / "no interpreter", fs::perms::owner_all);
  fs::create_directory(folder() / "folder");
  const int lowest = dup(0);
  close(lowest);
  for (const char* name : {"missing", "locked", "no program", "no interpreter", "folder", "locked/below"}) {
    EXPECT_EQ(start(wideFromUtf8((folder() / name).string())).result, 0) << name;
  }
  EXPECT_EQ(start(L"").result, 0);
  EXPECT_EQ(start(L"C:\\Program Files\\Rendara.exe").result, 0);
  EXPECT_FALSE(hasChildren());
  EXPECT_TRUE(openHandles().empty());
  const int lowestNow = dup(0);
  close(lowestNow);
  EXPECT_EQ(lowestNow, lowest) << "a descriptor was left open";
  EXPECT_TRUE(windowsMisuse().empty());
}

TEST_F(Processes, RefuseWhatIsNotOffered) {
  STARTUPINFOW startup = {};
  PROCESS_INFORMATION process = {};
  wchar_t line[] = L"/bin/true";
  EXPECT_EQ(CreateProcessW(nullptr, line, nullptr, nullptr, 0, 0, nullptr, nullptr, &startup, &process), 0);
  EXPECT_EQ(CreateProcessW(line, nullptr, nullptr, nullptr, 0, 0, nullptr, nullptr, nullptr, &process), 0);
  EXPECT_EQ(CreateProcessW(line, nullptr, nullptr, nullptr, 0, 0, nullptr, nullptr, &startup, nullptr), 0);
  EXPECT_EQ(windowsMisuse().size(), 1u);
  EXPECT_EQ(CreateProcessW(line, line, nullptr, nullptr, 0, 0, nullptr, nullptr, &startup, &process), 0);
  EXPECT_EQ(CreateProcessW(line, nullptr, nullptr, nullptr, 1, 0, nullptr, nullptr, &startup, &process), 0);
  EXPECT_EQ(CreateProcessW(line, nullptr, nullptr, nullptr, 0, 0, nullptr, L"/", &startup, &process), 0);
  EXPECT_EQ(windowsMisuse().size(), 2u);
}

TEST_F(Processes, HaveHandlesThatCloseOnce) {
  const Started first = start(L"/bin/true");
  const Started second = start(L"/bin/true");
  ASSERT_EQ(first.result, 1);
  ASSERT_EQ(second.result, 1);
  const std::string what = "process " + std::to_string(first.process.dwProcessId) + " (/bin/true)";
  EXPECT_EQ(openHandles()[0], "the " + what);
  EXPECT_EQ(openHandles()[1], "the thread of the " + what);
  closeHandles(first.process);
  EXPECT_EQ(openHandles().size(), 2u);
  EXPECT_EQ(CloseHandle(first.process.hProcess), 0);
  EXPECT_EQ(CloseHandle(nullptr), 0);
  EXPECT_EQ(RegCloseKey(static_cast<HKEY>(second.process.hProcess)), 6);
  closeHandles(second.process);
  EXPECT_EQ(windowsMisuse(), (std::vector<std::string>{"CloseHandle: the handle of an object is closed already",
                                                       "CloseHandle: the handle of an object is null",
                                                       "RegCloseKey: the handle of a key is that of something else"}));
}

TEST(SleepReplacement, TakesTheWaitAndGivesItBack) {
  std::vector<unsigned> outer;
  unsigned inner = 0;
  const SleepReplaced first([&outer](unsigned milliseconds) { outer.push_back(milliseconds); });
  Sleep(1000);
  {
    const SleepReplaced second([&inner](unsigned milliseconds) {
      inner += milliseconds;
      throw std::runtime_error("goes no further than the operation");
    });
    Sleep(7);
  }
  Sleep(0xFFFFFFFF);
  EXPECT_EQ(inner, 7u);
  EXPECT_EQ(outer, (std::vector<unsigned>{1000, 0xFFFFFFFF}));
}

}  // namespace
}  // namespace standin

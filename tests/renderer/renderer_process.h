// A renderer as a process of its own, on a machine folder of its own. It never outlives the test.
#pragma once

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "standin/renderer/client.h"
#include "tests/support/temporary_folder.h"

namespace renderer_test {

inline constexpr const char* kProgram = RENDARA_BIN_DIR "/renderer-standin";
inline constexpr const char* kLibrary = RENDARA_LIB_DIR "/vntrendaralive64.so";

// The machine of a test; also that of the library when it is loaded into the test.
class Machine {
 public:
  Machine() { setenv("RENDARA_MACHINE", folder_.path().c_str(), 1); }
  ~Machine() { unsetenv("RENDARA_MACHINE"); }
  const std::filesystem::path& folder() const { return folder_.path(); }

 private:
  rendara::testing::TemporaryFolder folder_;
};

// A program that runs, with its standard output and error in a pipe.
class Process {
 public:
  explicit Process(std::vector<std::string> arguments) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    arguments.insert(arguments.begin(), kProgram);
    std::vector<char*> texts;
    texts.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) texts.push_back(argument.data());
    texts.push_back(nullptr);
    id_ = fork();
    if (id_ == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      unsetenv("LOCPATH");  // the C library loses its copy of it, which a leak check of the program would tell
      dup2(ends[1], STDOUT_FILENO);
      dup2(ends[1], STDERR_FILENO);
      execv(kProgram, texts.data());
      _exit(127);
    }
    close(ends[1]);
    output_ = ends[0];
  }
  ~Process() {
    if (id_ > 0) {
      kill(id_, SIGKILL);
      waitpid(id_, nullptr, 0);
    }
    close(output_);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  void signal(int number) const { kill(id_, number); }
  // Up to the end of the line, or of the output.
  std::string readLine() const {
    std::string line;
    char letter = 0;
    while (read(output_, &letter, 1) == 1 && letter != '\n') line += letter;
    return line;
  }
  std::string readAll() const {
    std::string text;
    char letter = 0;
    while (read(output_, &letter, 1) == 1) text += letter;
    return text;
  }
  // The exit code; the negative signal for one that was killed.
  int wait() {
    int status = 0;
    waitpid(std::exchange(id_, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  pid_t id() const { return id_; }

 private:
  pid_t id_ = -1;
  int output_ = -1;
};

class Renderer {
 public:
  // The timeouts are those of a machine that is busy with other tests.
  explicit Renderer(std::vector<std::string> arguments = {"--timeout", "30"}) : process_(std::move(arguments)) {
    const std::string line = process_.readLine();
    if (!line.starts_with("port ")) throw std::runtime_error("the renderer says: " + line);
    port_ = std::stoi(line.substr(5));
  }

  int port() const { return port_; }
  Process& process() { return process_; }
  nlohmann::json status() const { return nlohmann::json::parse(standin::askStatus(port_)); }

 private:
  Process process_;
  int port_ = 0;
};

}  // namespace renderer_test

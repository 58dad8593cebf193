// A machine of a test's own: a registry in which the renderer is installed, and the renderers that run on it.
#pragma once

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "core/instance_list.h"
#include "standin/renderer/client.h"
#include "standin/renderer/instance_list.h"
#include "standin/windows/registry.h"
#include "tests/support/temporary_folder.h"

namespace rendara::testing {

inline constexpr char kVendorKey[] = "SOFTWARE\\Vantor";
inline constexpr char kVersionKey[] = "SOFTWARE\\Vantor\\Rendara 5";
// The port is looked for under the version's first byte.
inline constexpr char kPortKey[] = "SOFTWARE\\Vantor\\R";

// Waits until the condition holds; a test that waits for what never comes fails by an exception.
inline void waitFor(const std::string& what, const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      throw std::runtime_error("waited in vain for " + what);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

class Machine {
 public:
  Machine() { install(); }
  ~Machine() {
    for (const pid_t process : processes()) {
      ::kill(process, SIGKILL);
    }
  }
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  // Writes the registry anew, as it is where the renderer was just installed.
  void install() const {
    std::filesystem::remove(path() / "registry.reg");
    changeRegistry([](standin::Registry& registry) {
      registry.setText(standin::Hive::kLocalMachine, kVendorKey, "RendaraVersion", "Rendara 5");
      registry.setText(standin::Hive::kLocalMachine, kVersionKey, "CurrentVersion", "5");
      registry.setText(standin::Hive::kLocalMachine, kVersionKey, "BinName", RENDARA_BIN_DIR "/renderer-standin");
      registry.setText(standin::Hive::kLocalMachine, kVersionKey, "BinFolder", RENDARA_LIB_DIR);
    });
  }

  // What runs from now on runs on this machine.
  void enter() const { setenv("RENDARA_MACHINE", path().c_str(), 1); }
  const std::filesystem::path& path() const { return folder_.path(); }

  void changeRegistry(const std::function<void(standin::Registry&)>& change) const {
    standin::changeRegistry(path() / "registry.reg", change);
  }

  // Port and process of each renderer that runs.
  std::map<int, pid_t> renderers() const {
    std::map<int, pid_t> found;
    const std::string text = standin::InstanceList(path()).text();
    constexpr std::string_view kTag = "<rendara_instance>";
    for (std::size_t at = text.find(kTag); at != std::string::npos; at = text.find(kTag, at + 1)) {
      const std::string one = text.substr(at, text.find("</rendara_instance>", at) - at);
      const std::set<int> ports = parseInstanceList(one, 5);
      const std::size_t process = one.find("<pid>");
      if (!ports.empty() && process != std::string::npos) {
        found.emplace(*ports.begin(), std::stoi(one.substr(process + 5)));
      }
    }
    return found;
  }

  // Everything that was started on this machine, what is on no list too, without this process.
  std::vector<pid_t> processes() const {
    const std::string mark = '\0' + ("RENDARA_MACHINE=" + path().string()) + '\0';
    std::vector<pid_t> found;
    std::error_code ignored;
    for (std::filesystem::directory_iterator entry("/proc", ignored), end; entry != end; entry.increment(ignored)) {
      const pid_t process = std::atoi(entry->path().filename().c_str());
      if (process > 0 && process != getpid() &&
          ('\0' + readFile(entry->path() / "environ")).find(mark) != std::string::npos) {
        found.push_back(process);
      }
    }
    return found;
  }

  // Starts a renderer beside those that run, and gives its port.
  int startRenderer() const {
    const auto before = renderers();
    enter();
    if (std::system(RENDARA_BIN_DIR "/renderer-standin >/dev/null 2>&1 &") != 0) {
      throw std::runtime_error("no renderer can be started");
    }
    waitFor("a renderer", [&] { return renderers().size() > before.size(); });
    for (const auto& [port, process] : renderers()) {
      if (!before.contains(port)) {
        return port;
      }
    }
    return 0;
  }

  void killRenderer(int port) const {
    ::kill(renderers().at(port), SIGKILL);
    waitFor("the end of a renderer", [&] { return !renderers().contains(port); });
  }

  static nlohmann::json status(int port) { return nlohmann::json::parse(standin::askStatus(port)); }

 private:
  TemporaryFolder folder_;
};

}  // namespace rendara::testing

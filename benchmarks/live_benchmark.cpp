// Update against Render on an assembly of 10,000 placements, with a real renderer at the other end: what it costs to
// send one changed part, and what the groups and placements alone cost.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <thread>

#include "benchmarks/generated_assembly.h"
#include "standin/app/plugin_host.h"
#include "standin/cad/session.h"
#include "standin/renderer/client.h"
#include "standin/renderer/installation.h"
#include "standin/renderer/instance_list.h"
#include "standin/windows/clock.h"
#include "tests/support/temporary_folder.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kPlacements = 10000;

// A machine with the renderer installed and no other on it. What runs on it is ended with it.
class Machine {
 public:
  Machine() {
    setenv("RENDARA_MACHINE", folder_.path().c_str(), 1);
    standin::Installation installation;
    installation.program = RENDARA_BIN_DIR "/renderer-standin";
    installation.binFolder = RENDARA_LIB_DIR;
    standin::install(installation);
  }
  ~Machine() {
    for (const int port : list().ports()) {
      standin::askToQuit(port);
    }
    while (!list().ports().empty()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }

  // Of the one renderer that runs.
  double lastBytes() const {
    const auto ports = list().ports();
    if (ports.size() != 1) {
      throw std::runtime_error("there should be one renderer");
    }
    return nlohmann::json::parse(standin::askStatus(ports.front())).at("bytes_last");
  }

 private:
  standin::InstanceList list() const { return standin::InstanceList(folder_.path()); }

  rendara::testing::TemporaryFolder folder_;
};

struct Cost {
  double seconds = 0;  // from the command's start to the renderer's answer
  double bytes = 0;
};

// Waiting for a renderer to start is none of the command's work.
class Timer {
 public:
  void pause(unsigned milliseconds) {
    const auto begin = Clock::now();
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds / 20));
    waited_ += Clock::now() - begin;
  }
  double seconds() const { return std::chrono::duration<double>(Clock::now() - begin_ - waited_).count(); }

 private:
  Clock::time_point begin_ = Clock::now();
  Clock::duration waited_{};
};

Cost run(standin::Session& session, const Machine& machine, const std::string& command) {
  Timer timer;
  const standin::SleepReplaced sleep([&](unsigned milliseconds) { timer.pause(milliseconds); });
  session.runCommand(command);
  const double seconds = timer.seconds();
  return {seconds, machine.lastBytes()};
}

void updateAgainstRender(benchmark::State& state) {
  const rendara::testing::WorkingFolder folder;
  rendara::testing::writeFile("rendara_plugin_settings.xml",
                              "<?xml version=\"1.0\" ?><rendara_plugin_settings><includeNURBS>false</includeNURBS>"
                              "</rendara_plugin_settings>");
  const Machine machine;
  standin::Session session;
  session.guardArrays = false;
  const auto parts = benchmarks::generateParts(session, static_cast<int>(state.range(0)));
  session.current = &benchmarks::generateAssembly(session, parts, kPlacements);
  session.mode = PRO_MODE_ASSEMBLY;
  standin::PluginHost plugin(RENDARA_LIB_DIR "/librendara_creo.so");
  plugin.load();
  const Cost render = run(session, machine, "Rendara Render");
  Cost update;
  Cost nothing;
  for (auto _ : state) {
    nothing = run(session, machine, "Rendara Update");
    session.touch(*parts[parts.size() / 2]);
    update = run(session, machine, "Rendara Update");
    state.SetIterationTime(update.seconds);
  }
  state.counters["bytes_of_render"] = update.bytes / render.bytes;
  state.counters["time_of_render"] = update.seconds / render.seconds;
  state.counters["bytes_of_groups"] = update.bytes / nothing.bytes;
  state.counters["time_of_groups"] = update.seconds / nothing.seconds;
  state.counters["render_bytes"] = render.bytes;
  plugin.unload(session);
}

// Squares on each of the six faces: parts of 12 triangles, and of 12,000.
BENCHMARK(updateAgainstRender)
    ->Name("update_against_render")
    ->Arg(1)
    ->Arg(1000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);

}  // namespace

BENCHMARK_MAIN();

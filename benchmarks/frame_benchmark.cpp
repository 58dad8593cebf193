// How fast a big frame file is read, against reading it with `fscanf`, and in how much memory.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "settings/animation.h"
#include "settings/frame_file.h"
#include "tests/settings/scanned_frames.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr long kWantedSize = 200'000'000;
constexpr int kComponents = 400;

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

File open(const std::filesystem::path& path, const char* mode) {
  File file(std::fopen(path.c_str(), mode));
  if (file == nullptr) std::abort();
  return file;
}

void writeRecord(std::FILE* file, int component, int frame) {
  // Every fourth component stands still.
  const double angle = component % 4 == 0 ? 0.3 : 0.01 * frame + component;
  const double cosine = std::cos(angle);
  const double sine = std::sin(angle);
  std::fputs(component % 2 == 0 ? "Part: 1 (" : "Part: 2 (40 ", file);
  std::fprintf(file, "%d) %f %f 0.000000 %f %f 0.000000 0.000000 0.000000 1.000000 %f %f %f\n", component + 40, cosine,
               sine, -sine, cosine, 120 * cosine, 80 * sine, 12.5);
}

// As many whole frames as make the wanted size.
void writeFrames(const std::filesystem::path& path) {
  const File file = open(path, "w");
  std::fprintf(file.get(), "parts: %d\nframes: %10d\n", kComponents, 0);
  int frame = 0;
  for (; std::ftell(file.get()) < kWantedSize; ++frame) {
    std::fprintf(file.get(), "MaFrame %d\n", frame);
    for (int component = 0; component < kComponents; ++component) writeRecord(file.get(), component, frame);
  }
  std::rewind(file.get());
  std::fprintf(file.get(), "parts: %d\nframes: %10d\n", kComponents, frame);
}

using Reader = void (*)(std::FILE*, rendara::AnimationFrames&);

rendara::AnimationFrames framesOf(const std::filesystem::path& path, Reader read) {
  rendara::AnimationFrames frames;
  read(open(path, "r").get(), frames);
  return frames;
}

double sizeOf(const rendara::AnimationFrames& frames) {
  std::size_t placements = 0;
  for (const auto& entry : frames.animationFrames) placements += entry.second.size();
  return static_cast<double>(placements * sizeof(rendara::FramePlacement));
}

// The growth of a process that reads the file. Zero when that is not to be had.
double peakOf(const std::filesystem::path& path, Reader read) {
  const auto run = [&](bool reading) {
    const pid_t child = ::fork();
    if (child == 0) {
      if (reading) benchmark::DoNotOptimize(framesOf(path, read));
      ::_exit(0);
    }
    int status = 0;
    struct rusage usage = {};
    return ::wait4(child, &status, 0, &usage) == child ? static_cast<double>(usage.ru_maxrss) * 1024 : 0.0;
  };
  const double idle = run(false);
  return std::max(run(true) - idle, 0.0);
}

// Made once, gone with the process; what it takes is measured before this process itself becomes large.
struct BigFile {
  BigFile() : path(folder.path() / "big.fra") {
    writeFrames(path);
    peak = peakOf(path, rendara::readFrameFile);
  }
  static const BigFile& get() {
    static const BigFile file;
    return file;
  }
  rendara::testing::TemporaryFolder folder;
  std::filesystem::path path;
  double peak = 0;
};

void run(benchmark::State& state, Reader read) {
  const BigFile& file = BigFile::get();
  double size = 0;
  for ([[maybe_unused]] auto unused : state) {
    size = sizeOf(framesOf(file.path, read));
  }
  if (size <= 0) state.SkipWithError("no frames");
  state.counters["result_bytes"] = size;
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(file.path)));
}

void ReadFrames(benchmark::State& state) {
  run(state, rendara::readFrameFile);
  state.counters["peak_bytes"] = BigFile::get().peak;
}

void ScannedFrames(benchmark::State& state) { run(state, rendara::testing::scanFrames); }

BENCHMARK(ReadFrames)->MinWarmUpTime(1)->MinTime(3)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ScannedFrames)->MinWarmUpTime(1)->MinTime(3)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

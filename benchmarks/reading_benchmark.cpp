// How fast a big package is checked, against reading its bytes and against their checksum, and in how much memory.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"
#include "tools/rpk/check.h"
#include "tools/rpk/mapped_file.h"
#include "tools/rpk/package_counts.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
static_assert(std::endian::native == std::endian::little);

constexpr std::uint64_t kWantedSize = 2ULL << 30;
constexpr std::int32_t kSide = 770;  // vertices along each edge of a sheet: about 33 MB of mesh

template <typename Value>
void writeArray(std::ofstream& file, const char* name, char tag, const std::vector<Value>& values) {
  const auto count = static_cast<std::int32_t>(values.size());
  file << "        \"" << name << "\" [ \x01\x02\x03" << tag;
  file.write(reinterpret_cast<const char*>(&count), sizeof(count));
  file.write(reinterpret_cast<const char*>(values.data()), static_cast<std::streamsize>(values.size() * sizeof(Value)));
  file << "] ,\n";
}

// A sheet of squares, a little curved, with right normals.
struct Sheet {
  std::vector<float> vertices;
  std::vector<float> normals;
  std::vector<float> uvs;
  std::vector<std::int32_t> triangles;
};

Sheet makeSheet(std::int32_t side) {
  Sheet sheet;
  for (std::int32_t y = 0; y < side; ++y) {
    for (std::int32_t x = 0; x < side; ++x) {
      const auto u = static_cast<float>(x) / static_cast<float>(side);
      const auto v = static_cast<float>(y) / static_cast<float>(side);
      sheet.vertices.insert(sheet.vertices.end(), {u, v, 0.1F * u * v});
      sheet.normals.insert(sheet.normals.end(), {0, 0, 1});
      sheet.uvs.insert(sheet.uvs.end(), {u, v});
      if (x == 0 || y == 0) continue;
      const std::int32_t corner = y * side + x;
      sheet.triangles.insert(sheet.triangles.end(),
                             {corner - side - 1, corner - side, corner - 1, corner - 1, corner - side, corner});
    }
  }
  return sheet;
}

void writePackage(const fs::path& path, std::uint64_t size, std::int32_t side) {
  const Sheet sheet = makeSheet(side);
  std::ofstream file(path, std::ios::binary);
  file << "//---vantor:dal:7---\n//---import:dal:1---\n//---id:1---\n\ngroup \"sheets\" {\n";
  do {
    file << "\n  group \"sheet\" {\n    object \"sheet\" {\n      geometry \"triangles\" {\n";
    writeArray(file, "vertices", 'c', sheet.vertices);
    writeArray(file, "normals", 'c', sheet.normals);
    writeArray(file, "uv_tex", 'f', sheet.uvs);
    writeArray(file, "triangles", 'i', sheet.triangles);
    file << "      }\n    }\n    transform 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n  }\n";
  } while (file && static_cast<std::uint64_t>(file.tellp()) < size);
  file << "}\n";
}

// In a process of its own: what a process once held counts as the peak of those that it starts.
void makePackage(const fs::path& path, std::uint64_t size, std::int32_t side) {
  const pid_t child = ::fork();
  if (child == 0) {
    writePackage(path, size, side);
    ::_exit(0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
}

// Made once, gone with the process; a quarter of what the disk has free at most.
class BigPackage {
 public:
  static const BigPackage& get() {
    static const BigPackage package;
    return package;
  }
  const fs::path& path() const { return path_; }
  std::int64_t size() const { return static_cast<std::int64_t>(fs::file_size(path_)); }

 private:
  BigPackage() : path_(folder_.path() / "big.rpk") {
    makePackage(path_, std::min<std::uint64_t>(kWantedSize, fs::space(folder_.path()).available / 4), kSide);
  }
  rendara::testing::TemporaryFolder folder_;
  fs::path path_;
};

// Runs a program to its end, its output thrown away; its greatest resident size in bytes, or -1.
double run(std::vector<std::string> arguments) {
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int failed = posix_spawnp(&child, pointers[0], &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  struct rusage usage = {};
  if (failed != 0 || wait4(child, &status, 0, &usage) != child || status != 0) return -1;
  return static_cast<double>(usage.ru_maxrss) * 1024;
}

void runProgram(benchmark::State& state, const std::vector<std::string>& arguments) {
  double memory = 0;
  for (auto unused : state) {
    memory = std::max(memory, run(arguments));
    if (memory <= 0) state.SkipWithError("the program failed");
  }
  state.counters["peak_bytes"] = memory;
}

void finish(benchmark::State& state) { state.SetBytesProcessed(state.iterations() * BigPackage::get().size()); }

// What counting bytes costs when they are really read.
void PlainRead(benchmark::State& state) {
  std::vector<char> buffer(128U << 10U);
  const std::string path = BigPackage::get().path();
  for (auto unused : state) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::int64_t total = 0;
    for (ssize_t got = 1; got > 0; total += got) got = ::read(file, buffer.data(), buffer.size());
    ::close(file);
    if (total < BigPackage::get().size()) state.SkipWithError("cannot read");
  }
  finish(state);
}

void Checksum(benchmark::State& state) {
  runProgram(state, {"sha256sum", BigPackage::get().path()});
  finish(state);
}

void CheckProgram(benchmark::State& state) {
  runProgram(state, {RENDARA_BIN_DIR "/rpk", "check", "--quiet", BigPackage::get().path()});
  finish(state);
}

// A file of the same making and a sixteenth of the size: what memory there is that does not come from mesh data.
void CheckProgramSmall(benchmark::State& state) {
  const rendara::testing::TemporaryFolder folder;
  const fs::path path = folder.path() / "small.rpk";
  makePackage(path, static_cast<std::uint64_t>(BigPackage::get().size()) / 16, kSide);
  runProgram(state, {RENDARA_BIN_DIR "/rpk", "check", "--quiet", path});
}

// All in one mesh.
void CheckProgramOneMesh(benchmark::State& state) {
  const rendara::testing::TemporaryFolder folder;
  const fs::path path = folder.path() / "one.rpk";
  makePackage(path, 1, 5 * kSide);
  runProgram(state, {RENDARA_BIN_DIR "/rpk", "check", "--quiet", path});
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fs::file_size(path)));
}

// The reader alone: packed arrays are stepped over.
void CountPackage(benchmark::State& state) {
  for (auto unused : state) {
    const auto file = rpk::MappedFile::open(BigPackage::get().path());
    if (!file || rpk::countPackage(file->bytes()).faultCount != 0) state.SkipWithError("cannot count");
  }
  finish(state);
}

BENCHMARK(PlainRead)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Checksum)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(CheckProgram)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(CheckProgramSmall)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(CheckProgramOneMesh)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(CountPackage)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

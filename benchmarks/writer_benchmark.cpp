// How fast the writer puts meshes into a file, beside what the file system and stdio do with the same bytes.
//
//   PackedMesh / PlainWrite    the rate of a packed mesh should reach 0.9 of the rate of one fwrite of its bytes
//   FlushedWrite               the same bytes by fwrite, flushed wherever the writer must flush: what is to be had
//   TextArray / PrintedArray   a text array should be written at least twice as fast as by one fprintf a vector
//
// The files are written to the directory for temporary files.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "scene/vntScene_api_file.h"

namespace rendara {
namespace {

std::string scriptPath() { return (std::filesystem::temp_directory_path() / "rendara_writer_benchmark.rpk").string(); }

std::FILE* openScript() {
  std::FILE* stream = std::fopen(scriptPath().c_str(), "wb+");
  if (stream == nullptr) std::abort();
  return stream;
}

struct Mesh {
  std::vector<float> vertices;
  std::vector<float> normals;
  std::vector<int> triangles;

  // A wavy sheet; coordinates as of a part in millimetres.
  explicit Mesh(int vertexCount) {
    for (int i = 0; i < vertexCount; ++i) {
      const auto t = static_cast<float>(i);
      vertices.insert(vertices.end(), {100 * std::sin(t), 0.37F * t, 25 * std::cos(3 * t)});
      normals.insert(normals.end(), {std::sin(t), 0, std::cos(t)});
      triangles.insert(triangles.end(), {i, (i + 1) % vertexCount, (i + 2) % vertexCount});
      triangles.insert(triangles.end(), {i, (i + 2) % vertexCount, (i + 3) % vertexCount});
    }
  }
};

SceneArray arrayOfVectors(const std::vector<float>& values) {
  return {values.data(), static_cast<int>(values.size() / 3)};
}

// Calls `ended` after each operation.
template <typename Ended>
void writeMesh(vntScene_api& scene, const Mesh& mesh, Ended ended) {
  const SceneArray vertices = arrayOfVectors(mesh.vertices);
  const SceneArray normals = arrayOfVectors(mesh.normals);
  const SceneArray triangles = {mesh.triangles.data(), static_cast<int>(mesh.triangles.size())};
  scene.beginObject("part", true);
  ended();
  scene.beginGeometry("triangles");
  ended();
  scene.parameter("vertices", arrayOf(kFloat3), &vertices);
  ended();
  scene.parameter("normals", arrayOf(kFloat3), &normals);
  ended();
  scene.parameter("triangles", arrayOf(kInt), &triangles);
  ended();
  scene.endGeometry();
  ended();
  scene.endObject();
  ended();
}

// A package of meshes of one size, as many as make 300,000 vertices.
template <typename Ended>
void writePackage(std::FILE* stream, const Mesh& mesh, Ended ended) {
  vntScene_api_file writer(stream, true);
  for (std::size_t vertices = 0; vertices < 300000; vertices += mesh.vertices.size() / 3) {
    writeMesh(writer, mesh, ended);
  }
}
void writePackage(const Mesh& mesh) {
  writePackage(openScript(), mesh, [] {});
}

// Where in the file each operation ends.
std::vector<std::size_t> operationEnds(const Mesh& mesh) {
  std::vector<std::size_t> ends;
  std::FILE* stream = openScript();
  writePackage(stream, mesh, [&] { ends.push_back(static_cast<std::size_t>(std::ftell(stream))); });
  return ends;
}

std::vector<char> readScript() {
  std::vector<char> bytes(std::filesystem::file_size(scriptPath()));
  std::FILE* stream = std::fopen(scriptPath().c_str(), "rb");
  if (stream == nullptr || std::fread(bytes.data(), 1, bytes.size(), stream) != bytes.size()) std::abort();
  std::fclose(stream);
  return bytes;
}

void finish(benchmark::State& state) {
  const auto size = static_cast<std::int64_t>(std::filesystem::file_size(scriptPath()));
  state.SetBytesProcessed(state.iterations() * size);
  std::filesystem::remove(scriptPath());
}

// A new file for each round: one that is cut to nothing and written again is flushed to the disk by some file systems
// when it is closed, and then the disk is measured.
void beginRound(benchmark::State& state) {
  state.PauseTiming();
  std::filesystem::remove(scriptPath());
  state.ResumeTiming();
}

// Opening and closing belong to what is measured, in both of a pair.
void PackedMesh(benchmark::State& state) {
  const Mesh mesh(static_cast<int>(state.range(0)));
  for ([[maybe_unused]] auto _ : state) {
    beginRound(state);
    writePackage(mesh);
  }
  finish(state);
}

void PlainWrite(benchmark::State& state) {
  writePackage(Mesh(static_cast<int>(state.range(0))));
  const std::vector<char> bytes = readScript();
  for ([[maybe_unused]] auto _ : state) {
    beginRound(state);
    std::FILE* stream = openScript();
    std::fwrite(bytes.data(), 1, bytes.size(), stream);
    std::fclose(stream);
  }
  finish(state);
}

void FlushedWrite(benchmark::State& state) {
  const std::vector<std::size_t> ends = operationEnds(Mesh(static_cast<int>(state.range(0))));
  const std::vector<char> bytes = readScript();
  for ([[maybe_unused]] auto _ : state) {
    beginRound(state);
    std::FILE* stream = openScript();
    std::size_t begin = 0;
    for (const std::size_t end : ends) {
      std::fwrite(bytes.data() + begin, 1, end - begin, stream);
      std::fflush(stream);
      begin = end;
    }
    std::fclose(stream);
  }
  finish(state);
}

void writeTextArray(const Mesh& mesh) {
  vntScene_api_file writer(openScript(), false);
  const SceneArray vertices = arrayOfVectors(mesh.vertices);
  writer.parameter("vertices", arrayOf(kFloat3), &vertices);
}

void printTextArray(const Mesh& mesh) {
  std::FILE* stream = openScript();
  std::fprintf(stream, "\"vertices\" [ ");
  const std::size_t count = mesh.vertices.size() / 3;
  for (std::size_t i = 0; i < count; ++i) {
    const float* vertex = mesh.vertices.data() + i * 3;
    std::fprintf(stream, "%g %g %g%s", static_cast<double>(vertex[0]), static_cast<double>(vertex[1]),
                 static_cast<double>(vertex[2]), i + 1 < count ? "," : " ");
    if (i > 0 && i % 8 == 0) std::fprintf(stream, "\n");
  }
  std::fprintf(stream, "] ,\n");
  std::fclose(stream);
}

void TextArray(benchmark::State& state) {
  const Mesh mesh(static_cast<int>(state.range(0)));
  for ([[maybe_unused]] auto _ : state) writeTextArray(mesh);
  finish(state);
}

void PrintedArray(benchmark::State& state) {
  const Mesh mesh(static_cast<int>(state.range(0)));
  writeTextArray(mesh);
  const std::vector<char> expected = readScript();
  printTextArray(mesh);
  if (readScript() != expected) state.SkipWithError("the two ways to write differ");
  for ([[maybe_unused]] auto _ : state) printTextArray(mesh);
  finish(state);
}

BENCHMARK(PackedMesh)->Arg(10000)->Arg(300000)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(PlainWrite)->Arg(10000)->Arg(300000)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(FlushedWrite)->Arg(10000)->Arg(300000)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(TextArray)->Arg(100000)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(PrintedArray)->Arg(100000)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace rendara

BENCHMARK_MAIN();

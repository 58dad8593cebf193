// A large part in the address space of a 32-bit process: what the library itself takes for it.
#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>

#include "platform/windows_api.h"
#include "standin/app/plugin_host.h"
#include "tests/support/temporary_folder.h"
// Needs windows.h before it.
#include <psapi.h>

namespace standin {
namespace {

constexpr std::size_t kSurfaces = 250;
constexpr std::size_t kVertices = 10'000;
constexpr std::size_t kFacets = 20'000;
constexpr std::size_t kMegabyte = std::size_t{1} << 20;

// The same large mesh for every surface.
class LargeMesher : public PartMesher {
 public:
  LargeMesher() : mesh_(std::make_shared<SurfaceMesh>()) {
    mesh_->vertices.resize(kVertices);
    mesh_->normals.resize(kVertices);
    mesh_->params.resize(kVertices);
    mesh_->facets.resize(kFacets);
  }
  std::shared_ptr<const SurfaceMesh> mesh(std::size_t, double, std::string&) override { return mesh_; }

 private:
  std::shared_ptr<SurfaceMesh> mesh_;
};

PROCESS_MEMORY_COUNTERS memory() {
  PROCESS_MEMORY_COUNTERS counters = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
  return counters;
}

TEST(WindowsMemory, FiveMillionTrianglesOfOneMaterialFitTwoGigabytes) {
  SYSTEM_INFO system = {};
  GetSystemInfo(&system);
  ASSERT_LT(reinterpret_cast<std::uintptr_t>(system.lpMaximumApplicationAddress), std::uintptr_t{0x80000000});

  const rendara::testing::WorkingFolder folder;
  Session session;
  session.guardArrays = false;
  Model& part = session.addModel(PRO_MDL_PART, L"large");
  const int feature = part.addFeature(1).id;
  for (std::size_t surface = 0; surface < kSurfaces; ++surface) part.addSurface(feature);
  part.mesher = std::make_shared<LargeMesher>();
  session.current = &part;
  session.mode = PRO_MODE_PART;
  const std::filesystem::path package = folder.path() / "large.rpk";
  session.fileAnswers.emplace_back(package);

  PluginHost plugin(RENDARA_PLUGIN_FILE);
  plugin.load();
  const std::size_t before = memory().PagefileUsage;
  ASSERT_EQ(session.runCommand("Rendara Export"), 0);
  const std::size_t taken = memory().PeakPagefileUsage - before;
  plugin.unload(session);

  constexpr std::size_t kMesh = kSurfaces * (kVertices * 8 * sizeof(float) + kFacets * 3 * sizeof(int));
  EXPECT_GT(std::filesystem::file_size(package), kMesh);
  EXPECT_GE(taken, kMesh) << "or the memory is not measured";
  EXPECT_LE(taken, kMesh + 32 * kMegabyte);
  RecordProperty("mesh_megabytes", static_cast<int>(kMesh / kMegabyte));
  RecordProperty("peak_megabytes", static_cast<int>(taken / kMegabyte));
  std::printf("mesh %zu MB, peak of the library and the session's arrays %zu MB\n", kMesh / kMegabyte,
              taken / kMegabyte);
}

}  // namespace
}  // namespace standin

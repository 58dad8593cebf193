// How much memory the plug-in takes: it lives in a process with little address space.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>

#include "core/command_table.h"
#include "core/plugin.h"
#include "standin/cad/session.h"
#include "tests/support/temporary_folder.h"

#ifdef RENDARA_SANITIZED
#define RENDARA_COUNTS_MEMORY 0
#else
#define RENDARA_COUNTS_MEMORY 1
#endif

namespace {

std::size_t current = 0;
std::size_t peak = 0;

}  // namespace

#if RENDARA_COUNTS_MEMORY

namespace {

void* counted(void* block) {
  current += malloc_usable_size(block);
  peak = std::max(peak, current);
  return block;
}

}  // namespace

// What is linked into this program goes through these; the linker wraps the C functions.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
void* __wrap_malloc(std::size_t size);
void* __wrap_realloc(void* block, std::size_t size);
void __wrap_free(void* block);

void* __wrap_malloc(std::size_t size) { return counted(__real_malloc(size)); }
void* __wrap_realloc(void* block, std::size_t size) {
  current -= malloc_usable_size(block);
  return counted(__real_realloc(block, size));
}
void __wrap_free(void* block) {
  current -= malloc_usable_size(block);
  __real_free(block);
}
}

void* operator new(std::size_t size) {
  void* block = __wrap_malloc(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}
void operator delete(void* block) noexcept { __wrap_free(block); }
void operator delete(void* block, std::size_t) noexcept { __wrap_free(block); }

#endif

namespace rendara {
namespace {

constexpr std::size_t kSurfaces = 200;
constexpr std::size_t kVertices = 10000;
constexpr std::size_t kFacets = 20000;

// The same large mesh for every surface.
class LargeMesher : public standin::PartMesher {
 public:
  LargeMesher() : mesh_(std::make_shared<standin::SurfaceMesh>()) {
    mesh_->vertices.resize(kVertices);
    mesh_->normals.resize(kVertices);
    mesh_->params.resize(kVertices);
    mesh_->facets.resize(kFacets);
  }
  std::shared_ptr<const standin::SurfaceMesh> mesh(std::size_t, double, std::string&) override { return mesh_; }

 private:
  std::shared_ptr<standin::SurfaceMesh> mesh_;
};

TEST(PluginMemory, PeakIsTheLargestMaterialGroupAndAFewMegabytes) {
  if (RENDARA_COUNTS_MEMORY == 0) {
    GTEST_SKIP() << "memory is not counted under a sanitizer";
  }
  const testing::WorkingFolder folder;
  standin::Session session;
  standin::Model& part = session.addModel(PRO_MDL_PART, L"large");
  const int feature = part.addFeature(1).id;
  for (std::size_t surface = 0; surface < kSurfaces; ++surface) {
    part.addSurface(feature);
  }
  part.mesher = std::make_shared<LargeMesher>();
  session.current = &part;
  session.mode = PRO_MODE_PART;
  session.fileAnswers.emplace_back("/dev/null");

  const std::size_t before = current;
  peak = current;
  registerCommands(RendaraPlugin::instance());
  ASSERT_EQ(session.runCommand("Rendara Export"), 0);
  const std::size_t taken = peak - before;
  RendaraPlugin::destroyInstance();
  ASSERT_EQ(session.counts.surfacesTessellated, kSurfaces);

  constexpr std::size_t kMesh = kSurfaces * (kVertices * 8 * sizeof(float) + kFacets * 3 * sizeof(int));
  EXPECT_GE(taken, kMesh);
  EXPECT_LE(taken, kMesh + (std::size_t{8} << 20));
}

}  // namespace
}  // namespace rendara

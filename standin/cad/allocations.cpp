#include "standin/cad/allocations.h"

#include <cstdint>
#include <cstdlib>
#include <map>
#include <new>
#include <utility>

#include "standin/cad/guarded_memory.h"

namespace standin {
namespace {

const char* nameOf(AllocationKind kind, bool several) {
  switch (kind) {
    case AllocationKind::array:
    case AllocationKind::ownedArray:
      return several ? "arrays" : "array";
    case AllocationKind::stringArray:
      return several ? "string arrays" : "string array";
    case AllocationKind::text:
      return several ? "texts" : "text";
    case AllocationKind::tessellation:
      return several ? "tessellations" : "tessellation";
    case AllocationKind::tessellationInput:
      return several ? "tessellation inputs" : "tessellation input";
    case AllocationKind::representationData:
      return several ? "representation data" : "representation datum";
    case AllocationKind::versionStamp:
      return several ? "version stamps" : "version stamp";
    case AllocationKind::interfaceData:
      return several ? "interface data" : "interface data record";
    case AllocationKind::surfaceData:
      return several ? "surface data" : "surface data record";
  }
  return "";
}

}  // namespace

Allocations::~Allocations() {
  // What is destroyed may take others with it.
  while (!live_.empty()) {
    const auto first = live_.begin();
    release(const_cast<void*>(first->first), first->second.kind);
  }
}

void* Allocations::addArray(const char* operation, std::size_t elementSize, std::size_t count, bool guarded,
                            AllocationKind kind) {
  const std::size_t bytes = elementSize * count;
  void* memory = guarded ? allocateGuarded(bytes, operation) : nullptr;
  const bool isGuarded = memory != nullptr;
  if (!isGuarded) {
    memory = std::malloc(bytes > 0 ? bytes : 1);
    if (memory == nullptr) {
      throw std::bad_alloc();
    }
  }
  add(memory, {operation, kind, bytes, count, isGuarded, nullptr});
  return memory;
}

const std::size_t* Allocations::arraySize(const void* array) const {
  const std::size_t* size = count(array, AllocationKind::array);
  return size != nullptr ? size : count(array, AllocationKind::ownedArray);
}

const std::size_t* Allocations::count(const void* memory, AllocationKind kind) const {
  const auto found = live_.find(memory);
  return found != live_.end() && found->second.kind == kind ? &found->second.count : nullptr;
}

bool Allocations::isLive(const void* memory, AllocationKind kind) const {
  const auto found = live_.find(memory);
  return found != live_.end() && found->second.kind == kind;
}

bool Allocations::release(void* memory, AllocationKind kind) {
  const auto found = live_.find(memory);
  if (found == live_.end() || found->second.kind != kind) {
    return false;
  }
  const Allocation allocation = found->second;
  live_.erase(found);
  freed_[freedSlot(memory)] = memory;
  destroy(memory, allocation);
  return true;
}

std::string Allocations::describe(const void* memory, AllocationKind kind) const {
  const std::string name = nameOf(kind, false);
  const auto found = live_.find(memory);
  if (found != live_.end()) {
    if (found->second.kind == AllocationKind::ownedArray) {
      return "the array belongs to what " + std::string(found->second.operation) + " filled in";
    }
    return "what " + std::string(found->second.operation) + " gave out is no " + name;
  }
  if (freed_[freedSlot(memory)] == memory) {
    return "the " + name + " was freed before";
  }
  return "the " + name + " was never given out";
}

std::vector<std::string> Allocations::leaks() const {
  std::map<std::pair<std::string, AllocationKind>, std::size_t> counts;
  for (const auto& entry : live_) {
    if (entry.second.kind == AllocationKind::ownedArray) {
      continue;
    }
    ++counts[{entry.second.operation, entry.second.kind}];
  }
  std::vector<std::string> lines;
  lines.reserve(counts.size());
  for (const auto& [source, count] : counts) {
    lines.push_back(source.first + ": " + std::to_string(count) + " " + nameOf(source.second, count != 1) +
                    (count == 1 ? " was" : " were") + " never freed");
  }
  return lines;
}

void Allocations::add(void* memory, const Allocation& allocation) {
  live_.emplace(memory, allocation);
  const void*& freed = freed_[freedSlot(memory)];
  if (freed == memory) {
    freed = nullptr;
  }
}

void Allocations::destroy(void* memory, const Allocation& allocation) {
  if (allocation.destroy != nullptr) {
    allocation.destroy(memory);
  } else if (allocation.guarded) {
    freeGuarded(memory, allocation.bytes);
  } else {
    std::free(memory);
  }
}

std::size_t Allocations::freedSlot(const void* memory) {
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  return static_cast<std::size_t>((address >> 4) * 0x9E3779B97F4A7C15ULL >> 52) % kFreedSlots;
}

}  // namespace standin

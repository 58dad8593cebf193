// Everything that the session's operations allocated for the plug-in, and who has to give it back.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace standin {

enum class AllocationKind {
  array,
  ownedArray,   // belongs to another allocation, which frees it
  stringArray,  // and its strings, which are owned arrays
  text,
  tessellation,
  tessellationInput,
  representationData,
  versionStamp,
  interfaceData,
  surfaceData
};

class Allocations {
 public:
  Allocations() = default;
  ~Allocations();
  Allocations(const Allocations&) = delete;
  Allocations& operator=(const Allocations&) = delete;

  // Memory for `count` elements, not initialised, ending at a guard page if asked. `operation` must be a literal.
  void* addArray(const char* operation, std::size_t elementSize, std::size_t count, bool guarded,
                 AllocationKind kind = AllocationKind::array);
  // The number of elements of a live array, none when the pointer is not one.
  const std::size_t* arraySize(const void* array) const;
  // The number of elements of a live allocation of the kind, none when there is none at the address.
  const std::size_t* count(const void* memory, AllocationKind kind) const;

  // Takes over an object that operator new made.
  template <typename Object>
  Object* addObject(const char* operation, AllocationKind kind, Object* object) {
    add(object, {operation, kind, 0, 0, false, [](void* memory) { delete static_cast<Object*>(memory); }});
    return object;
  }
  bool isLive(const void* memory, AllocationKind kind) const;

  // Frees an allocation of the kind; false when there is none at the address.
  bool release(void* memory, AllocationKind kind);
  // What is wrong with a pointer that is not live: it was freed, or was never given out as this kind.
  std::string describe(const void* memory, AllocationKind kind) const;

  // A line per operation for what is still there.
  std::vector<std::string> leaks() const;

 private:
  struct Allocation {
    const char* operation = nullptr;
    AllocationKind kind = AllocationKind::array;
    std::size_t bytes = 0;
    std::size_t count = 0;
    bool guarded = false;
    void (*destroy)(void*) = nullptr;
  };
  static constexpr std::size_t kFreedSlots = 4096;

  void add(void* memory, const Allocation& allocation);
  static void destroy(void* memory, const Allocation& allocation);
  static std::size_t freedSlot(const void* memory);

  std::unordered_map<const void*, Allocation> live_;
  // Addresses freed lately; a later one may take the slot of an earlier one.
  std::vector<const void*> freed_ = std::vector<const void*>(kFreedSlots, nullptr);
};

}  // namespace standin

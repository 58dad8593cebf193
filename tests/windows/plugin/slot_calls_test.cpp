// The plug-in calls objects that other compilers built. Here every slot is called by the plug-in's code on a table of
// function pointers that is laid out by hand, with the convention of 32-bit methods: the object in ecx, arguments on
// the stack, which the callee removes.
#include <gtest/gtest.h>

#include <array>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "core/live_link.h"
#include "scene/number_text.h"
#include "scene/vntScene_api.h"

namespace rendara {
namespace {

// What the callee got: the object, its slot and its arguments, bytes as they lay on the stack.
struct Call {
  void* object = nullptr;
  int slot = -1;
  std::string arguments;
};
Call lastCall;

template <typename Argument>
void append(std::string& bytes, Argument argument) {
  std::array<char, sizeof(Argument)> raw{};
  std::memcpy(raw.data(), &argument, sizeof(Argument));
  bytes.append(raw.data(), raw.size());
  bytes += '|';
}

template <typename... Arguments>
std::string bytesOf(Arguments... arguments) {
  std::string bytes;
  (append(bytes, arguments), ...);
  return bytes;
}

// An argument that has a value of its own at each place of each slot.
template <typename Argument>
Argument sample(int slot, int place) {
  const int number = 1000 * (slot + 1) + place;
  if constexpr (std::is_same_v<Argument, bool>) {
    return (slot + place) % 2 == 0;
  } else if constexpr (std::is_pointer_v<Argument>) {
    return reinterpret_cast<Argument>(static_cast<std::uintptr_t>(number));
  } else {
    return static_cast<Argument>(number);
  }
}

// What the callee leaves in eax. Of a boolean only the lowest byte counts, the others may be anything.
template <typename Result>
std::uint32_t rawResult(int slot) {
  if constexpr (std::is_same_v<Result, bool>) {
    return slot % 2 == 0 ? 0xABCDEF01U : 0xABCDEF00U;
  } else {
    return 0x5000U + static_cast<unsigned>(slot);
  }
}

template <typename Result>
void expectResult(Result result, int slot) {
  if constexpr (std::is_same_v<Result, bool>) {
    EXPECT_EQ(result, slot % 2 == 0) << "slot " << slot;
  } else if constexpr (std::is_pointer_v<Result>) {
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(result), rawResult<Result>(slot)) << "slot " << slot;
  } else {
    EXPECT_EQ(static_cast<std::uint32_t>(result), rawResult<Result>(slot)) << "slot " << slot;
  }
}

template <int slot, typename Member>
struct Method;

template <int slot, typename Class, typename Result, typename... Arguments>
struct Method<slot, Result (Class::*)(Arguments...)> {
  // The convention of methods is that of "fastcall" without the second register.
  __attribute__((fastcall)) static std::uint32_t callee(void* object, int /*edx*/, Arguments... arguments) {
    lastCall = {object, slot, bytesOf(arguments...)};
    return rawResult<Result>(slot);
  }

  static void callThrough(Class& object, Result (Class::*member)(Arguments...)) {
    callWith(object, member, std::index_sequence_for<Arguments...>());
  }

 private:
  template <std::size_t... places>
  static void callWith(Class& object, Result (Class::*member)(Arguments...), std::index_sequence<places...>) {
    lastCall = {};
    if constexpr (std::is_void_v<Result>) {
      (object.*member)(sample<Arguments>(slot, places)...);
    } else {
      expectResult((object.*member)(sample<Arguments>(slot, places)...), slot);
    }
    EXPECT_EQ(lastCall.slot, slot);
    EXPECT_EQ(lastCall.object, &object) << "slot " << slot;
    EXPECT_EQ(lastCall.arguments, bytesOf(sample<Arguments>(slot, places)...)) << "slot " << slot;
  }
};

// Variable arguments come on the stack with the object before them, and the caller removes them.
template <int slot, typename Class>
struct Method<slot, void (Class::*)(const char*, ...)> {
  static void callee(void* object, const char* format, ...) {
    va_list list;
    va_start(list, format);
    const int number = va_arg(list, int);
    const double real = va_arg(list, double);
    const std::string text = va_arg(list, const char*);
    va_end(list);
    lastCall = {object, slot, std::string(format) + std::to_string(number) + std::to_string(real) + text};
  }

  static void callThrough(Class& object, void (Class::*member)(const char*, ...)) {
    (object.*member)("%d %g %s", -7, 0.25, "text");
    EXPECT_EQ(lastCall.slot, slot);
    EXPECT_EQ(lastCall.object, &object);
    EXPECT_EQ(lastCall.arguments, "%d %g %s-70.250000text");
  }
};

// The members of a class in the order of their slots, and a table made of callees in that order.
template <typename Class, typename... Members>
class Slots {
 public:
  explicit Slots(Members... members) : members_(members...) { fill(std::index_sequence_for<Members...>()); }

  void callAll() { callAll(std::index_sequence_for<Members...>()); }

 private:
  template <std::size_t... slots>
  void fill(std::index_sequence<slots...>) {
    ((table_[slots] = reinterpret_cast<void*>(&Method<static_cast<int>(slots), Members>::callee)), ...);
  }
  template <std::size_t... slots>
  void callAll(std::index_sequence<slots...>) {
    auto& object = *reinterpret_cast<Class*>(&object_);
    (Method<static_cast<int>(slots), Members>::callThrough(object, std::get<slots>(members_)), ...);
  }

  std::tuple<Members...> members_;
  std::array<void*, sizeof...(Members)> table_{};
  void** object_ = table_.data();  // an object is a pointer to its table
};

template <typename Class, typename... Members>
Slots<Class, Members...> slotsOf(Members... members) {
  return Slots<Class, Members...>(members...);
}

std::uintptr_t stackPointer() {
  std::uintptr_t value = 0;
  asm volatile("mov %%esp, %0" : "=r"(value));
  return value;
}

TEST(SlotCalls, EveryArgumentArrivesInEverySlotOfTheScene) {
  using S = vntScene_api;
  auto slots = slotsOf<S>(
      &S::destroy, &S::reserved1, &S::render, &S::connect, &S::endScene, &S::reserved5, &S::transform, &S::scale,
      &S::rotate, &S::translate, &S::motion, &S::beginGroup, &S::endGroup, &S::beginFrame, &S::endBlock,
      &S::defineMatrix, &S::endMatrix, &S::identity17, &S::beginOptions, &S::endOptions, &S::beginCamera, &S::endCamera,
      &S::modifyCamera, &S::beginImage, &S::endImage, &S::beginOutput, &S::endOutput, &S::beginObject, &S::endObject,
      &S::setObjectFlag, &S::identity30, &S::modifyObject, &S::reserved32, &S::beginLight, &S::modifyLight,
      &S::endLight, &S::globalPhotons, &S::causticPhotons, &S::volumePhotons, &S::defineGeometry, &S::beginGeometry,
      &S::endGeometry, &S::reserved42, &S::beginAccel, &S::endAccel, &S::reserved45, &S::reserved46, &S::instance,
      &S::beginAnimation, &S::endAnimation, &S::beginMaterial, &S::useMaterial, &S::endMaterial, &S::shader,
      &S::modifyMaterial, &S::beginShader, &S::endShader, &S::reserved57, &S::currentCapture, &S::pushCapture,
      &S::popCapture, &S::beginLoad, &S::endLoad, &S::attribute, &S::writeFormatted, &S::setOutputMode, &S::reserved66,
      &S::progress, &S::icon, &S::blob, &S::id, &S::flags, &S::parameter, &S::parameterText, &S::arrayValue,
      &S::arrayVersion75, &S::beginArray, &S::endArray, &S::arrayVersion78);
  const std::uintptr_t before = stackPointer();
  for (int round = 0; round < 100; ++round) slots.callAll();
  EXPECT_EQ(stackPointer(), before) << "both sides removed the arguments, or neither";
}

TEST(SlotCalls, AndOfTheLiveLink) {
  using I = LiveLinkInterface;
  slotsOf<I>(&I::shutdown, &I::createScene, &I::instances).callAll();
}

// The host keeps the stack aligned to four bytes only. The formatting of a number uses aligned vector instructions.
TEST(SlotCalls, TheStackOfTheCallerNeedsNoAlignment) {
  static std::string text;
  void (*const write)() = [] {
    alignas(16) volatile double aligned[8] = {};
    for (int i = 0; i < 8; ++i) aligned[i] = 0.1 * i;
    std::array<char, kGeneralCapacity> room{};
    text.assign(room.data(), writeGeneral(room.data(), room.data() + room.size(), aligned[3]));
    if (reinterpret_cast<std::uintptr_t>(&aligned) % 16 != 0) text = "not aligned";
  };
  const std::string expected = [&] {
    write();
    return text;
  }();
  for (const int offset : {4, 8, 12, 16}) {
    text.clear();
    asm volatile(
        "mov %%esp, %%ebx\n\t"
        "sub %0, %%esp\n\t"
        "call *%1\n\t"
        "mov %%ebx, %%esp"
        :
        : "r"(offset), "r"(write)
        : "ebx", "eax", "ecx", "edx", "memory", "cc", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7");
    EXPECT_EQ(text, expected) << offset;
  }
  EXPECT_EQ(expected, "0.3") << "one tenth, three times";
}

}  // namespace
}  // namespace rendara

// The order of the slots is a binary contract with libraries that other compilers built: each slot is called by its
// index through the raw virtual table, with the object's address as the first argument.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>

#include "scene/vntScene_api.h"
#include "scene/vntScene_api_file.h"
#include "tests/support/recording_scene.h"

namespace rendara {
namespace {

using testing::RecordingScene;

template <typename Result, typename... Arguments>
Result callSlot(vntScene_api& scene, std::size_t slot, Arguments... arguments) {
  using Function = Result (*)(vntScene_api*, Arguments...);
  void* const* table = *reinterpret_cast<void* const**>(&scene);
  return reinterpret_cast<Function>(table[slot])(&scene, arguments...);
}

class SlotOrder : public ::testing::Test {
 protected:
  // Calls a slot that answers nothing, and says what was recorded.
  template <typename... Arguments>
  std::string called(std::size_t slot, Arguments... arguments) {
    callSlot<void>(scene_, slot, arguments...);
    return lastCall();
  }
  // The same for a slot that answers a boolean, which the recording scene answers with true.
  template <typename... Arguments>
  std::string answered(std::size_t slot, Arguments... arguments) {
    EXPECT_TRUE((callSlot<bool>(scene_, slot, arguments...))) << "slot " << slot;
    return lastCall();
  }
  std::string lastCall() {
    std::string call = scene_.calls().size() == 1 ? scene_.calls().front() : "not one call";
    scene_.clear();
    return call;
  }

  RecordingScene scene_;
  const std::array<double, 16> matrix_ = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  const std::string matrixText_ = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16";
};

TEST_F(SlotOrder, Slots0To16) {
  EXPECT_EQ(callSlot<void*>(scene_, 0, 0U), static_cast<vntScene_api*>(&scene_));
  EXPECT_EQ(lastCall(), "destroy 0");
  EXPECT_EQ(called(1), "reserved1");
  EXPECT_EQ(answered(2), "render");
  EXPECT_EQ(answered(3, "host", 5, 1), "connect \"host\" 5 1");
  EXPECT_EQ(answered(4), "endScene");
  EXPECT_FALSE((callSlot<bool>(scene_, 5, 1, 2, 3)));
  EXPECT_EQ(lastCall(), "reserved5 1 2 3");
  const double x = 1;
  const double y = 2;
  const double z = 3;
  EXPECT_EQ(called(6, matrix_.data(), true), "transform " + matrixText_ + " set");
  EXPECT_EQ(called(7, &x, &y, &z), "scale 1 2 3");
  EXPECT_EQ(called(8, &x, &y, &z), "rotate 1 2 3");
  EXPECT_EQ(called(9, &x, &y, &z), "translate 1 2 3");
  EXPECT_EQ(called(10, matrix_.data(), 0.5F), "motion " + matrixText_ + " 0.5");
  EXPECT_EQ(answered(11, "a", true), "beginGroup \"a\" noDefine");
  EXPECT_EQ(called(12), "endGroup");
  EXPECT_EQ(answered(13, 7), "beginFrame 7");
  EXPECT_EQ(called(14), "endBlock");
  EXPECT_EQ(answered(15, "a"), "defineMatrix \"a\"");
  EXPECT_EQ(called(16), "endMatrix");
}

TEST_F(SlotOrder, Slots17To38) {
  EXPECT_EQ((callSlot<unsigned>(scene_, 17, 0xdeadbeefU)), 0xdeadbeefU);
  EXPECT_EQ(lastCall(), "identity17 3735928559");
  EXPECT_EQ(answered(18), "beginOptions");
  EXPECT_EQ(called(19), "endOptions");
  EXPECT_EQ(answered(20, static_cast<const char*>(nullptr)), "beginCamera null");
  EXPECT_EQ(called(21), "endCamera");
  EXPECT_EQ(answered(22, "a"), "modifyCamera \"a\"");
  EXPECT_EQ(answered(23), "beginImage");
  EXPECT_EQ(called(24), "endImage");
  EXPECT_EQ(answered(25, "a", "b", "c"), "beginOutput \"a\" \"b\" \"c\"");
  EXPECT_EQ(called(26), "endOutput");
  EXPECT_EQ(answered(27, "a", false), "beginObject \"a\" define");
  EXPECT_EQ(called(28), "endObject");
  EXPECT_EQ(called(29, 0x4000U, true), "setObjectFlag 0x4000 on");
  EXPECT_EQ((callSlot<unsigned>(scene_, 30, 9U)), 9U);
  EXPECT_EQ(lastCall(), "identity30 9");
  EXPECT_EQ(answered(31, "a"), "modifyObject \"a\"");
  EXPECT_EQ(called(32, 1, 2), "reserved32 1 2");
  EXPECT_EQ(answered(33, "a", 4), "beginLight \"a\" 4");
  EXPECT_EQ(answered(34, "a"), "modifyLight \"a\"");
  EXPECT_EQ(called(35), "endLight");
  EXPECT_EQ(called(36, 1), "globalPhotons 1");
  EXPECT_EQ(called(37, 2), "causticPhotons 2");
  EXPECT_EQ(called(38, 3), "volumePhotons 3");
}

TEST_F(SlotOrder, Slots39To60) {
  EXPECT_EQ(answered(39, "a", "b"), "defineGeometry \"a\" \"b\"");
  EXPECT_EQ(answered(40, "a"), "beginGeometry \"a\"");
  EXPECT_EQ(called(41), "endGeometry");
  EXPECT_EQ(callSlot<int>(scene_, 42), 0);
  EXPECT_EQ(lastCall(), "reserved42");
  EXPECT_EQ(answered(43, "a"), "beginAccel \"a\"");
  EXPECT_EQ(called(44), "endAccel");
  EXPECT_FALSE((callSlot<bool>(scene_, 45, 6)));
  EXPECT_EQ(lastCall(), "reserved45 6");
  EXPECT_EQ(called(46), "reserved46");
  EXPECT_EQ(answered(47, "a"), "instance \"a\"");
  EXPECT_EQ(answered(48, "a", "b"), "beginAnimation \"a\" \"b\"");
  EXPECT_EQ(callSlot<int>(scene_, 49), 0);
  EXPECT_EQ(lastCall(), "endAnimation");
  EXPECT_EQ(answered(50, "a", true), "beginMaterial \"a\" noDefine");
  EXPECT_EQ(answered(51, "a", 8), "useMaterial \"a\" 8");
  EXPECT_EQ(called(52), "endMaterial");
  EXPECT_EQ(called(53, 2, static_cast<const CaptureBuffer*>(nullptr)), "shader 2 null");
  EXPECT_EQ(answered(54, "a"), "modifyMaterial \"a\"");
  EXPECT_EQ(answered(55, static_cast<const char*>(nullptr), "b"), "beginShader null \"b\"");
  EXPECT_EQ(called(56, 3), "endShader 3");
  EXPECT_FALSE((callSlot<bool>(scene_, 57, 6)));
  EXPECT_EQ(lastCall(), "reserved57 6");
  const CaptureBuffer* buffer = callSlot<CaptureBuffer*>(scene_, 58);
  ASSERT_NE(buffer, nullptr);
  EXPECT_STREQ(buffer->label, "ERROR");
  EXPECT_EQ(lastCall(), "currentCapture capture 1");
  EXPECT_EQ(called(59), "pushCapture");
  EXPECT_EQ(called(60), "popCapture");
}

TEST_F(SlotOrder, Slots61To78) {
  EXPECT_EQ(answered(61, "a"), "beginLoad \"a\"");
  EXPECT_EQ(called(62), "endLoad");
  EXPECT_EQ(called(63, "a", "b"), "attribute \"a\" \"b\"");
  using Variadic = void (*)(vntScene_api*, const char*, ...);
  void* const* table = *reinterpret_cast<void* const**>(static_cast<vntScene_api*>(&scene_));
  reinterpret_cast<Variadic>(table[64])(&scene_, "%s %d %g", "text", -1, 0.5);
  EXPECT_EQ(lastCall(), "writeFormatted \"text -1 0.5\"");
  EXPECT_EQ(called(65, 2U, 1), "setOutputMode 2 1");
  EXPECT_EQ(called(66, 4), "reserved66 4");
  EXPECT_EQ(called(67, "a", 0.25F), "progress \"a\" 0.25");
  const std::array<unsigned char, 2> bytes = {0x0a, 0xff};
  EXPECT_EQ(called(68, static_cast<const void*>(bytes.data()), 2), "icon 2 bytes: 0aff");
  EXPECT_EQ(called(69, "a", static_cast<const void*>(bytes.data()), 1), "blob \"a\" 1 bytes: 0a");
  EXPECT_EQ(called(70, 1U), "id 1");
  EXPECT_EQ(called(71, 0x8000U), "flags 0x8000");
  const std::array<float, 6> floats = {0, 1, 2, 3, 4, 5};
  const SceneArray array = {floats.data(), 2};
  EXPECT_EQ(answered(72, "a", 0x8001, static_cast<const void*>(&array)), "parameter \"a\" 0x8001 [0 1 2, 3 4 5]");
  EXPECT_EQ(answered(73, "a", static_cast<const CaptureBuffer*>(nullptr)), "parameterText \"a\" null");
  EXPECT_EQ(called(74, 3, static_cast<const void*>(&floats[4])), "arrayValue 3 4");
  EXPECT_EQ(callSlot<int>(scene_, 75), 10);
  EXPECT_EQ(lastCall(), "arrayVersion75");
  EXPECT_EQ(answered(76, "a"), "beginArray \"a\"");
  EXPECT_EQ(called(77), "endArray");
  EXPECT_EQ((callSlot<int>(scene_, 78, 3)), 10);
  EXPECT_EQ(lastCall(), "arrayVersion78 3");
}

// The slots that the text writer leaves to the base, and those that answer without writing.
TEST(WriterSlots, AnswersWithoutText) {
  vntScene_api_file writer(nullptr, false);
  EXPECT_FALSE((callSlot<bool>(writer, 3, "127.0.0.1", 5000, 1)));
  EXPECT_FALSE(callSlot<bool>(writer, 4));
  EXPECT_FALSE((callSlot<bool>(writer, 5, 1, 2, 3)));
  EXPECT_EQ((callSlot<unsigned>(writer, 17, 0xffffffffU)), 0xffffffffU);
  EXPECT_EQ((callSlot<unsigned>(writer, 30, 77U)), 77U);
  EXPECT_EQ(callSlot<int>(writer, 42), 0);
  EXPECT_FALSE((callSlot<bool>(writer, 45, 1)));
  EXPECT_FALSE((callSlot<bool>(writer, 57, 1)));
  EXPECT_EQ(callSlot<int>(writer, 49), 0);
  EXPECT_EQ(callSlot<int>(writer, 75), 10);
  EXPECT_EQ((callSlot<int>(writer, 78, 0)), 10);
}

TEST(WriterSlots, DestroyFreesOnlyWhenAsked) {
  auto* freed = new vntScene_api_file(nullptr, false);
  EXPECT_EQ(callSlot<void*>(*freed, 0, 1U), freed);

  alignas(vntScene_api_file) std::array<unsigned char, sizeof(vntScene_api_file)> storage;
  auto* kept = new (storage.data()) vntScene_api_file(nullptr, false);
  EXPECT_EQ(callSlot<void*>(*kept, 0, 2U), kept);
}

}  // namespace
}  // namespace rendara

#include "settings/animation.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/recording_scene.h"

namespace rendara {
namespace {

constexpr FramePlacement kMovedByTwo = {{1, 0, 0, 0, 1, 0, 0, 0, 1, 2, 0, 0}};
constexpr FramePlacement kMovedByFive = {{1, 0, 0, 0, 1, 0, 0, 0, 1, 5, 0, 0}};

class Animation : public ::testing::Test {
 protected:
  ProAsmcomppath path{nullptr, {41}, 1};
  testing::RecordingScene scene;
};

TEST_F(Animation, FramesAreRelativeToWhereTheComponentStands) {
  AnimationFrames frames;
  frames.animationFrames[{41}] = {kMovedByTwo, kMovedByFive};
  frames.animationFrameCount = 3;
  writeComponentAnimation(scene, frames, path, kMovedByTwo.matrix(), "piston.prt");
  EXPECT_EQ(scene.text(),
            "beginAnimation \"fbx_animation\" \"piston.prt\"\n"
            "parameter \"start_time\" 6 0\n"
            "parameter \"duration\" 3 0.12\n"
            "parameter \"folder\" 10 \"Creo animation\"\n"
            "beginArray \"matrices\"\n"
            "arrayValue 9 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n"
            "arrayValue 9 1 0 0 0 0 1 0 0 0 0 1 0 3 0 0 1\n"
            "endArray\n"
            "beginArray \"timestamps\"\n"
            "arrayValue 6 0\n"
            "arrayValue 6 40\n"
            "arrayValue 6 80\n"
            "endArray\n"
            "endAnimation\n");
}

TEST_F(Animation, ComponentsWithoutFramesWriteNothing) {
  AnimationFrames frames;
  writeComponentAnimation(scene, frames, path, kMovedByTwo.matrix(), "piston.prt");
  frames.animationFrames[{41, 3}] = {kMovedByFive};
  writeComponentAnimation(scene, frames, path, kMovedByTwo.matrix(), "piston.prt");
  EXPECT_EQ(scene.text(), "");
}

}  // namespace
}  // namespace rendara

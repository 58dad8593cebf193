#include "scene/scene_builder.h"

#include <gtest/gtest.h>

#include "tests/scene/scene_test_support.h"
#include "tests/support/recording_scene.h"

namespace rendara {
namespace {

using testing::RecordingScene;

constexpr const char* kEnvironment =
    "beginShader null \"vnt_envmap\"\n"
    "parameter \"texture\" 10 \"startup.hdr\"\n"
    "parameter \"format\" 6 3\n"
    "parameter \"radius\" 3 25\n"
    "parameter \"transform\" 9 0 0 -1 0 1 0 0 0 0 1 0 0 0 0 0 1\n"
    "currentCapture capture 1\n"
    "endShader 0\n";
constexpr const char* kReflection = "parameter \"reflection map\" 11 capture 1\n";

TEST(SceneBuilder, Calls) {
  RecordingScene scene;
  SceneBuilder builder(&scene);
  builder.openGroup("g");
  builder.setPosition(1, 2, 3);
  builder.setDirection(0, 0, -1);
  builder.setUp(0, 0.1F, 0);
  builder.setFov(45.5F);
  builder.closeCamera();
  builder.closeGroup();
  EXPECT_EQ(scene.text(),
            "beginGroup \"g\" noDefine\n"
            "parameter \"position\" 5 1 2 3\n"
            "parameter \"direction\" 5 0 0 -1\n"
            "parameter \"up\" 5 0 0.10000000149011612 0\n"  // a float, widened
            "parameter \"fov\" 3 45.5\n"
            "endCamera\n"
            "endGroup\n");
}

TEST(SceneBuilder, EnvironmentBeforeTheCamera) {
  RecordingScene named;
  SceneBuilder(&named).openCamera("view");
  EXPECT_EQ(named.text(), std::string(kEnvironment) + "beginCamera \"view\"\n" + kReflection);

  RecordingScene unnamed;
  SceneBuilder(&unnamed).writeEnvironment(&unnamed);
  EXPECT_EQ(unnamed.text(), std::string(kEnvironment) + "beginCamera null\n" + kReflection);
}

TEST(SceneBuilder, Script) {
  EXPECT_EQ(testing::written([](vntScene_api& scene) {
              SceneBuilder builder(&scene);
              builder.openGroup("model");
              builder.writeEnvironment(nullptr);
              builder.setPosition(1, 2, 3);
              builder.setDirection(0, 0, -1);
              builder.setUp(0, 1, 0.1F);
              builder.setFov(45.5F);
              builder.closeCamera();
              builder.closeGroup();
            }),
            testing::golden());
}

class ReleasingBuilder : public SceneBuilder {
 public:
  ReleasingBuilder(RecordingScene* scene, std::string& callsAtRelease)
      : SceneBuilder(scene), recorded_(scene), callsAtRelease_(callsAtRelease) {}

 protected:
  void release() override { callsAtRelease_ = recorded_ == nullptr ? "no scene" : recorded_->text(); }

 private:
  RecordingScene* recorded_;
  std::string& callsAtRelease_;
};

TEST(SceneBuilder, FinishReleasesAfterTheEnd) {
  RecordingScene scene;
  std::string callsAtRelease = "none";
  ReleasingBuilder(&scene, callsAtRelease).finish();
  EXPECT_EQ(callsAtRelease, "endScene\n");

  callsAtRelease = "none";
  ReleasingBuilder(nullptr, callsAtRelease).finish();
  EXPECT_EQ(callsAtRelease, "none");
}

}  // namespace
}  // namespace rendara

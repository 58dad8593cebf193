#include "core/cameras.h"

#include <string>
#include <vector>

#include "scene/scene_builder.h"
#include "tests/core/plugin_fixture.h"

namespace rendara {
namespace {

using standin::Model;
using testing::RecordingScene;

class Cameras : public testing::PluginTest {
 protected:
  std::vector<std::string> calls(const std::string& start) {
    std::vector<std::string> found;
    for (const std::string& call : scene.calls()) {
      if (call.starts_with(start)) {
        found.push_back(call.substr(start.size()));
      }
    }
    return found;
  }
  void write() {
    SceneBuilder builder(&scene);
    exportCameras(builder, &part);
  }

  Model& part = standin::test::addBoxPart(session, L"box");
  RecordingScene scene;
};

TEST_F(Cameras, CurrentViewAloneGivesOneOrthographicCameraWithTheEnvironment) {
  // Turned by 90 degrees about z, twice as large, moved.
  part.currentView = {0, 2, 0, 0, -2, 0, 0, 0, 0, 0, 2, 0, 30, 40, 50, 1};
  write();
  EXPECT_EQ(scene.text(),
            "beginShader null \"vnt_envmap\"\n"
            "parameter \"texture\" 10 \"startup.hdr\"\n"
            "parameter \"format\" 6 3\n"
            "parameter \"radius\" 3 25\n"
            "parameter \"transform\" 9 0 0 -1 0 1 0 0 0 0 1 0 0 0 0 0 1\n"
            "currentCapture capture 1\n"
            "endShader 0\n"
            "beginCamera \"Current Creo camera\"\n"
            "parameter \"reflection map\" 11 capture 1\n"
            "parameter \"position\" 5 0 0 2000\n"
            "parameter \"direction\" 5 0 0 -1\n"
            "parameter \"up\" 5 0 1 0\n"
            "parameter \"fov\" 3 55\n"
            "transform 0 -0.5 0 0 0.5 0 0 0 0 0 0.5 0 0 0 0 1 multiply\n"
            "parameter \"projection\" 10 \"orthographic\"\n"
            "endCamera\n");
}

TEST_F(Cameras, EverySavedViewFollowsUnderItsName) {
  part.views.push_back({L"FRONT", {1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1}});
  part.views.push_back({L"\u00c4 view \u65e5", standin::kIdentity});
  part.views.push_back({std::wstring(80, L'v'), standin::kIdentity});
  write();
  EXPECT_EQ(calls("beginCamera "), (std::vector<std::string>{"\"Current Creo camera\"", "\"FRONT\"", "\"\xc4 view ?\"",
                                                             '"' + std::string(80, 'v') + '"'}));
  EXPECT_EQ(calls("transform ")[1], "1 0 0 0 0 0 -1 0 0 1 0 0 0 0 0 1 multiply") << "the view's own, inverted";
}

TEST_F(Cameras, AMatrixThatCannotBeInvertedShowsTheOneBefore) {
  part.currentView = {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  part.views.push_back({L"flat", standin::Matrix{}});
  write();
  const auto transforms = calls("transform ");
  ASSERT_EQ(transforms.size(), 2U);
  EXPECT_EQ(transforms[1], transforms[0]);
}

}  // namespace
}  // namespace rendara

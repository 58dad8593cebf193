// Render and Update on Windows when all is as it should be.
#include <cstddef>
#include <string>

#include "tests/windows/live/live_fixture.h"

namespace rendara::testing {
namespace {

using Component = standin::Feature;

class LiveLinkTest : public WindowsLinkTest {
 protected:
  // Another mesh, with a new stamp or without one, so that only who looks at the part again can know.
  void reshapeCase(bool newStamp) {
    for (standin::Point& vertex : standin::test::mesherOf(case_).meshes.front().vertices) {
      vertex[2] += 0.25;
    }
    if (newStamp) {
      session_.touch(case_);
    }
  }

  // The path of the component that shows the case.
  std::vector<int> casePath() const {
    for (const Component& component : top_.features) {
      if (component.component == &case_) {
        return {component.id};
      }
    }
    return {};
  }
};

TEST_F(LiveLinkTest, RenderStartsARendererAndUpdateSendsItWhatChanged) {
  EXPECT_EQ(run(kRender), "");
  const int port = onlyRenderer();
  ASSERT_NE(port, 0);
  expectWhole(port, 1);
  const int whole = WindowsMachine::status(port).at("bytes_last");
  EXPECT_GT(whole, 1 << 18) << "several blocks";

  EXPECT_EQ(run(kUpdate), "");
  expectWhole(port, 2);
  EXPECT_LT(WindowsMachine::status(port).at("bytes_last"), whole / 10) << "nothing had changed";

  reshapeCase(true);
  EXPECT_EQ(run(kUpdate), "");
  expectWhole(port, 3);
  EXPECT_GT(WindowsMachine::status(port).at("bytes_last"), whole / 2);

  // Another Render starts another renderer, to which Updates go from then on.
  EXPECT_EQ(run(kRender), "");
  const auto both = machine_->renderers();
  ASSERT_EQ(both.size(), 2U);
  const int second = both.begin()->first == port ? both.rbegin()->first : both.begin()->first;
  expectWhole(second, 1);
  EXPECT_EQ(run(kUpdate), "");
  expectWhole(second, 2);

  // A renderer that was killed is off the list, and the other gets everything.
  machine_->killRenderer(second);
  EXPECT_EQ(run(kUpdate), "");
  EXPECT_EQ(onlyRenderer(), port);
  expectWhole(port, 4);
  EXPECT_GT(WindowsMachine::status(port).at("bytes_last"), whole / 2);
}

TEST_F(LiveLinkTest, ManualUpdateSendsWhatIsPicked) {
  openPlugin("manual");
  EXPECT_EQ(run(kRender), "");
  const int port = onlyRenderer();
  ASSERT_NE(port, 0);
  const json before = sceneOf(WindowsMachine::status(port));
  reshapeCase(false);
  session_.selectionAnswers.emplace_back(std::vector<std::vector<int>>{});
  EXPECT_EQ(run(kUpdate), "");
  EXPECT_EQ(sceneOf(WindowsMachine::status(port)).at("groups"), before.at("groups")) << "nothing was picked";
  session_.selectionAnswers.emplace_back(std::vector<std::vector<int>>{casePath()});
  EXPECT_EQ(run(kUpdate), "");
  EXPECT_TRUE(session_.selectionAnswers.empty());
  expectWhole(port, 3);
}

// The folder has more characters than any code page.
TEST_F(LiveLinkTest, FolderMayHaveSpacesAndAnyLetters) {
  WindowsMachine::installIn(machine_->path() / wideText("Программы Rendara") / wideText("渲染 ñ"));
  EXPECT_EQ(run(kRender), "");
  const int port = onlyRenderer();
  ASSERT_NE(port, 0);
  expectWhole(port, 1);
}

// A renderer that is not on the list is found by the port in the registry, of which none but a number will do.
TEST_F(LiveLinkTest, UpdateFindsTheRegistryPort) {
  const int port = machine_->startRenderer(machine_->path() / "elsewhere");
  WindowsMachine::setNumber(HKEY_CURRENT_USER, kPortKey, L"LiveLinkPort", static_cast<DWORD>(port));
  EXPECT_EQ(run(kUpdate), "");
  EXPECT_TRUE(machine_->renderers().empty());
  expectWhole(port, 1);

  WindowsMachine::set(HKEY_CURRENT_USER, kPortKey, L"LiveLinkPort", REG_BINARY,
                      {static_cast<BYTE>(port), static_cast<BYTE>(port >> 8), 0, 0});
  EXPECT_EQ(run(kUpdate), "");
  expectWhole(onlyRenderer(), 1);
}

}  // namespace
}  // namespace rendara::testing

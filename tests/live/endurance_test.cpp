// A day's work: a thousand commands in one process, with renderers that come and go. Nothing may grow.
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>

#include "standin/renderer/client.h"
#include "tests/live/link_fixture.h"

namespace rendara::testing {
namespace {

#ifdef RENDARA_SANITIZED
constexpr bool kCountsHeap = false;  // freed blocks are kept for a while
#else
constexpr bool kCountsHeap = true;
#endif
constexpr int kTurns = 50;
constexpr int kUpdates = 19;  // in a turn, after a Render
// Until every cache has its size.
constexpr int kWarmUpTurns = 3;
// Half of what it would be to lose the smallest block, of 32 bytes, in each command. Freed blocks that the allocator
// keeps at hand count as used, and take a part of it.
constexpr std::size_t kHeapSlack = 16384;

std::size_t openDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

std::size_t heapInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

bool hasChildren() { return waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD; }

class EnduranceTest : public LinkTest {
 protected:
  // Every Update finds one of these, in turn; after five all is as it was.
  void change(int update) {
    switch (update % 5) {
      case 0:
        session_.touch(bolt_);
        break;
      case 1:
      case 3:
        top_.features.front().placement[12] += update % 5 == 1 ? 1.5 : -1.5;
        session_.touch(top_);
        break;
      case 2:
        bolt_.appearance = standin::Appearance{L"red", {1, 0, 0}, L""};
        session_.touch(bolt_);
        break;
      default:
        bolt_.appearance.reset();
        session_.touch(bolt_);
    }
  }

  // A renderer of its own, which is killed afterwards or asked to end.
  void turn(bool killed) {
    EXPECT_EQ(run(kRender), "");
    const int port = launched();
    ASSERT_NE(port, 0);
    for (int update = 0; update < kUpdates; ++update) {
      change(update);
      EXPECT_EQ(run(kUpdate), "");
    }
    expectWhole(port, 1 + kUpdates);
    for (standin::Model* part : {&bolt_, &case_}) {
      standin::test::mesherOf(*part).requests = {};  // the model's diary
    }
    if (killed) {
      machine_.killRenderer(port);
    } else {
      standin::askToQuit(port);
      waitFor("the end of a renderer", [&] { return machine_.renderers().empty(); });
    }
  }
};

TEST_F(EnduranceTest, ThousandCommandsLeaveNothing) {
  patience_ = kLaunchPatience;
  std::size_t descriptors = 0;
  std::size_t heap = 0;
  for (int round = 0; round < kTurns && !HasFailure(); ++round) {
    turn(round % 2 == 0);
    if (round == kWarmUpTurns) {
      descriptors = openDescriptors();
      heap = heapInUse();
    }
    EXPECT_FALSE(hasChildren());
  }
  EXPECT_EQ(openDescriptors(), descriptors);
  if (kCountsHeap) {
    EXPECT_LE(heapInUse(), heap + kHeapSlack);
  }
}

}  // namespace
}  // namespace rendara::testing

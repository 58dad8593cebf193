#include "standin/renderer/instance_list.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/renderer/renderer_process.h"
#include "tests/support/temporary_folder.h"

namespace renderer_test {
namespace {

namespace fs = std::filesystem;
using rendara::testing::TemporaryFolder;
using rendara::testing::writeFile;
using standin::InstanceAnnouncer;
using standin::InstanceList;

const std::string kEmpty = "<rendara_instances>\n</rendara_instances>\n";

std::size_t filesIn(const fs::path& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

TEST(InstanceList, ShowsWhatIsAnnouncedForSoLong) {
  const TemporaryFolder machine;
  const InstanceList list(machine.path());
  EXPECT_EQ(list.text(), kEmpty) << "no folder yet";
  {
    const InstanceAnnouncer first(machine.path(), standin::instanceElement(5000));
    std::optional<InstanceAnnouncer> second(std::in_place, machine.path(), "<any>\n");
    EXPECT_EQ(list.text(), "<rendara_instances>\n<rendara_instance>\n<pid>" + std::to_string(getpid()) +
                               "</pid>\n<version_major>5</version_major>\n<livelink_port>5000</livelink_port>\n"
                               "</rendara_instance>\n<any>\n</rendara_instances>\n");
    second.reset();
    EXPECT_EQ(list.text().find("<any>"), std::string::npos);
  }
  EXPECT_EQ(list.text(), kEmpty);
  EXPECT_EQ(filesIn(machine.path() / "instances"), 0U);
}

TEST(InstanceList, DropsWhatNobodyHoldsAndStrangeFiles) {
  const TemporaryFolder machine;
  const fs::path folder = machine.path() / "instances";
  fs::create_directories(folder / "folder.instance");
  writeFile(folder / "1-1.instance", standin::instanceElement(1));
  writeFile(folder / "1-2.new", standin::instanceElement(2));
  writeFile(folder / "notes.txt", "kept");
  fs::create_symlink("/dev/zero", folder / "link.instance");
  ASSERT_EQ(mkfifo((folder / "pipe.instance").c_str(), 0600), 0);
  EXPECT_EQ(InstanceList(machine.path()).text(), kEmpty);
  EXPECT_FALSE(fs::exists(folder / "1-1.instance"));
  EXPECT_FALSE(fs::exists(folder / "1-2.new"));
  EXPECT_TRUE(fs::exists(folder / "notes.txt"));
}

TEST(InstanceList, BoundsWhatItTakes) {
  const TemporaryFolder machine;
  const InstanceAnnouncer first(machine.path(), std::string("<a/>\0<b/>\n", 10));
  const InstanceAnnouncer second(machine.path(), std::string(InstanceList::kMaxText, 'x'));
  const InstanceAnnouncer third(machine.path(), "<c/>\n");
  EXPECT_EQ(InstanceList(machine.path()).text(), "<rendara_instances>\n<a/><c/>\n</rendara_instances>\n")
      << "what is too long hides nobody behind it";
}

// Readers that come while a file is made may delete it; the announcer makes another.
TEST(InstanceList, AnnouncersAndReadersDoNotHarmEachOther) {
  const TemporaryFolder machine;
  const InstanceList list(machine.path());
  std::vector<std::thread> threads;
  std::vector<int> lost(2, 0);
  threads.reserve(lost.size());
  for (int& count : lost) {
    threads.emplace_back([&] {
      for (int round = 0; round < 300; ++round) {
        const std::string mark = "<" + std::to_string(round) + "-" + std::to_string(&count - lost.data()) + ">\n";
        const InstanceAnnouncer announcer(machine.path(), mark);
        if (list.text().find(mark) == std::string::npos) ++count;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(lost, std::vector<int>(2, 0));
  EXPECT_EQ(list.text(), kEmpty);
}

TEST(InstanceList, ForgetsARendererThatWasKilledOrEnded) {
  const Machine machine;
  const InstanceList list(machine.folder());
  for (const int signal : {SIGKILL, SIGTERM}) {
    Renderer renderer;
    Renderer other;
    const std::string port = "<livelink_port>" + std::to_string(renderer.port()) + "<";
    EXPECT_NE(list.text().find(port), std::string::npos);
    renderer.process().signal(signal);
    EXPECT_EQ(renderer.process().wait(), signal == SIGKILL ? -SIGKILL : 0);
    const std::string left = list.text();
    EXPECT_EQ(left.find(port), std::string::npos);
    EXPECT_NE(left.find(std::to_string(other.port())), std::string::npos);
    EXPECT_EQ(filesIn(machine.folder() / "instances"), 1U);
  }
}

}  // namespace
}  // namespace renderer_test

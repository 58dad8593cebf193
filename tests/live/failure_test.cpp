// What Render and Update do when something is wrong on the way to the renderer: each ends as it should, leaves nothing
// behind, and the next command works when the machine is as it should be. Plug-in, registry, library and renderers are
// the real ones.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/live/link_fixture.h"
#include "tests/live/peers.h"

namespace rendara::testing {
namespace {

namespace fs = std::filesystem;
using standin::Hive;
using standin::Registry;

void setProgram(const Machine& machine, const fs::path& program) {
  machine.changeRegistry(
      [&](Registry& registry) { registry.setText(Hive::kLocalMachine, kVersionKey, "BinName", program.string()); });
}

void setPort(const Machine& machine, int port, bool withMaximum = true) {
  machine.changeRegistry([&](Registry& registry) {
    registry.setNumber(Hive::kCurrentUser, kPortKey, "LiveLinkPort", static_cast<std::uint32_t>(port));
    if (withMaximum) {
      registry.setNumber(Hive::kCurrentUser, kPortKey, "LiveLinkMaxPort", 65535);
    }
  });
}

// Ends at once and says nothing.
void setProgramThatEnds(const Machine& machine) { setProgram(machine, "/bin/true"); }

fs::path fileOfMachine(const Machine& machine, const std::string& text, fs::perms permissions) {
  fs::path file = machine.path() / "program";
  writeFile(file, text);
  fs::permissions(file, permissions);
  return file;
}

// The library is looked for in a folder of the user's own, which holds a copy of the file, or nothing.
void setLibrary(const Machine& machine, const fs::path& file) {
  const fs::path folder = machine.path() / "library";
  fs::create_directory(folder);
  if (!file.empty()) {
    fs::copy_file(file, folder / "vntrendaralive64.so");
  }
  machine.changeRegistry([&](Registry& registry) {
    registry.setText(Hive::kCurrentUser, kVendorKey, "RendaraActivePath", folder.string());
  });
}

const std::vector<unsigned> kTwentySeconds(20, 1000);

// ----- No renderer is to be had

struct BrokenMachine {
  const char* name;
  bool launches;  // a program starts and is waited for
  std::function<void(const Machine&)> damage;
};
std::ostream& operator<<(std::ostream& stream, const BrokenMachine& test) { return stream << test.name; }

const BrokenMachine kBrokenMachines[] = {
    {"NoRegistry", false, [](const Machine& machine) { fs::remove(machine.path() / "registry.reg"); }},
    {"DamagedRegistry", false,
     [](const Machine& machine) { writeFile(machine.path() / "registry.reg", "[HKEY_LOCAL_MACHINE\\SOFTW"); }},
    {"NoProgram", false,
     [](const Machine& machine) {
       machine.changeRegistry([](Registry& registry) { registry.remove(Hive::kLocalMachine, kVersionKey, "BinName"); });
     }},
    {"ProgramMissing", false, [](const Machine& machine) { setProgram(machine, machine.path() / "absent"); }},
    {"ProgramIsFolder", false, [](const Machine& machine) { setProgram(machine, machine.path()); }},
    {"ProgramWithoutRight", false,
     [](const Machine& machine) {
       setProgram(machine, fileOfMachine(machine, "#!/bin/sh\nexit 0\n", fs::perms::owner_read));
     }},
    {"ProgramIsText", false,
     [](const Machine& machine) { setProgram(machine, fileOfMachine(machine, "text", fs::perms::owner_all)); }},
    {"ProgramEndsAtOnce", true, setProgramThatEnds},
    {"NobodyAtRegistryPort", true,
     [](const Machine& machine) {
       setProgramThatEnds(machine);
       setPort(machine, kClosedPort);
     }},
    {"PortOutOfRange", true,
     [](const Machine& machine) {
       setProgramThatEnds(machine);
       setPort(machine, -5);
     }},
    {"NoLibrary", false, [](const Machine& machine) { setLibrary(machine, {}); }},
    {"LibraryIsText", false,
     [](const Machine& machine) { setLibrary(machine, fileOfMachine(machine, "text", fs::perms::owner_all)); }},
    {"LibraryWithoutEntry", false,
     [](const Machine& machine) { setLibrary(machine, RENDARA_LIB_DIR "/liblibrary_without_entry.so"); }},
};

class BrokenMachineTest : public LinkTest, public ::testing::WithParamInterface<BrokenMachine> {};

TEST_P(BrokenMachineTest, RenderSaysFailedAndUpdateNothing) {
  const std::vector<unsigned> waited = GetParam().launches ? kTwentySeconds : std::vector<unsigned>();
  GetParam().damage(machine_);
  EXPECT_EQ(run(kRender), "Failed");
  EXPECT_EQ(sleeps_, waited);
  EXPECT_EQ(run(kUpdate), "");
  EXPECT_EQ(sleeps_, waited);
  EXPECT_EQ(session_.counts.surfacesTessellated, 0U) << "the model is not looked at";
  waitFor("the end of what was started", [&] { return machine_.processes().empty(); });

  machine_.install();
  expectCommandsWork();
}

INSTANTIATE_TEST_SUITE_P(Machines, BrokenMachineTest, ::testing::ValuesIn(kBrokenMachines),
                         [](const auto& test) { return std::string(test.param.name); });

// ----- Renderers that are not on the list, or not as they should be

struct Silent {
  const char* name;
  bool withMaximum;
  int turnedAway;  // connections, before one is taken
};
std::ostream& operator<<(std::ostream& stream, const Silent& test) { return stream << test.name; }

const Silent kSilent[] = {
    {"AnswersAtOnce", true, 0},
    // The first was the only one of its kind; the third belongs to the patient kind.
    {"AnswersThePatient", true, 2},
    {"AnswersThePatientWithoutMaximum", false, 1},
};

class SilentRendererTest : public LinkTest, public ::testing::WithParamInterface<Silent> {
 protected:
  Machine elsewhere_;  // on whose list the renderer is
};

TEST_P(SilentRendererTest, IsReachedByTheRegistryPort) {
  const int port = elsewhere_.startRenderer();
  machine_.enter();
  const Doorman doorman(port, GetParam().turnedAway);
  setProgramThatEnds(machine_);
  setPort(machine_, doorman.port(), GetParam().withMaximum);
  EXPECT_EQ(run(kRender), "");
  EXPECT_EQ(sleeps_, kTwentySeconds);
  EXPECT_EQ(doorman.peers(), GetParam().turnedAway + 1);
  expectWhole(port, 1);
  expectUpdateOfGroups(port);
  EXPECT_TRUE(sleeps_.empty());

  machine_.install();
  expectCommandsWork();
}

INSTANTIATE_TEST_SUITE_P(Renderers, SilentRendererTest, ::testing::ValuesIn(kSilent),
                         [](const auto& test) { return std::string(test.param.name); });

class FailureTest : public LinkTest {};

TEST_F(FailureTest, OldRenderersAreNotSpokenTo) {
  const SilentPort port;
  // Before and behind the others on the list.
  const ListedText first(machine_, "0", instanceText(4, port.port()));
  const ListedText last(machine_, "x", instanceText(4, kClosedPort));
  setProgramThatEnds(machine_);
  EXPECT_EQ(run(kRender), "Failed");
  EXPECT_EQ(sleeps_, kTwentySeconds);
  EXPECT_EQ(run(kUpdate), "");
  EXPECT_EQ(sleeps_, kTwentySeconds) << "none is there, so one is started";

  const int renderer = machine_.startRenderer();
  EXPECT_EQ(run(kUpdate), "");
  EXPECT_TRUE(sleeps_.empty());
  expectWhole(renderer, 1);
  EXPECT_FALSE(port.wasAsked());
  machine_.install();
  expectCommandsWork();
  EXPECT_FALSE(port.wasAsked());
}

TEST_F(FailureTest, UpdateGoesToTheSmallestPortWhenTheLastIsGone) {
  expectCommandsWork();
  machine_.startRenderer();
  machine_.startRenderer();
  machine_.killRenderer(renderer_);
  const auto left = machine_.renderers();
  ASSERT_EQ(left.size(), 2U);
  EXPECT_EQ(run(kUpdate), "");
  EXPECT_TRUE(sleeps_.empty());
  expectWhole(left.begin()->first, 1);
  EXPECT_EQ(Machine::status(left.rbegin()->first).at("scripts_taken"), 0);
  expectUpdateOfGroups(left.begin()->first);
  expectCommandsWork();
}

TEST_F(FailureTest, RefusedConnectionEndsTheCommand) {
  patience_ = kLaunchPatience;
  const int running = machine_.startRenderer();
  {
    const ListedText dead(machine_, "0", instanceText(5, kClosedPort));
    setPort(machine_, running);
    EXPECT_EQ(run(kUpdate), "") << "nobody else is tried";
    EXPECT_TRUE(sleeps_.empty());
  }
  {
    // It comes on the list and cannot be reached.
    setProgramThatEnds(machine_);
    std::optional<ListedText> dead;
    const standin::SleepReplaced comes([&](unsigned) { dead.emplace(machine_, "0", instanceText(5, kClosedPort)); });
    EXPECT_EQ(run(kRender), "Failed");
  }
  EXPECT_EQ(Machine::status(running).at("scripts_taken"), 0);
  machine_.install();
  expectCommandsWork();
  const ListedText dead(machine_, "0", instanceText(5, kClosedPort));
  expectUpdateOfGroups(renderer_);
}

// ----- Renderers that go in the middle of a scene

struct Killed {
  const char* name;
  const char* command;
  bool otherLeft;      // another renderer runs beside it
  std::size_t before;  // surfaces that are tessellated before it goes; the first part's are six, the next is large
};
std::ostream& operator<<(std::ostream& stream, const Killed& test) { return stream << test.name; }

const Killed kKilled[] = {
    {"RenderAtTheFirstSurface", "Rendara Render", false, 1}, {"RenderAtTheLastSurface", "Rendara Render", false, 7},
    {"RenderBesideAnother", "Rendara Render", true, 1},      {"UpdateAtTheFirstSurface", "Rendara Update", false, 1},
    {"UpdateBesideAnother", "Rendara Update", true, 7},
};

class KilledRendererTest : public LinkTest, public ::testing::WithParamInterface<Killed> {};

TEST_P(KilledRendererTest, LosesTheSceneAndTheNextUpdateSendsAll) {
  patience_ = kLaunchPatience;
  const Killed& test = GetParam();
  const int other = test.otherLeft ? machine_.startRenderer() : 0;
  if (test.command == std::string(kUpdate)) {
    EXPECT_EQ(run(kRender), "");
    session_.touch(bolt_);
    session_.touch(case_);
  }
  bool killed = false;
  const std::size_t tessellatedBefore = session_.counts.surfacesTessellated;
  session_.onTessellated = [&](std::size_t count) {
    if (killed || count < tessellatedBefore + test.before) {
      return;
    }
    killed = true;
    for (const auto& [port, process] : machine_.renderers()) {
      if (port != other) {
        machine_.killRenderer(port);
      }
    }
  };
  EXPECT_EQ(run(test.command), "");
  session_.onTessellated = nullptr;
  EXPECT_TRUE(killed);

  EXPECT_EQ(run(kUpdate), "");
  const auto renderers = machine_.renderers();
  ASSERT_EQ(renderers.size(), 1U);
  const int port = renderers.begin()->first;
  EXPECT_TRUE(other == 0 || port == other);
  EXPECT_EQ(sleeps_.empty(), test.otherLeft) << "one is started when there is none";
  expectWhole(port, 1);
  expectUpdateOfGroups(port);
  expectCommandsWork();
}

INSTANTIATE_TEST_SUITE_P(Commands, KilledRendererTest, ::testing::ValuesIn(kKilled),
                         [](const auto& test) { return std::string(test.param.name); });

// ----- Lists that are none

struct StrangeList {
  const char* name;
  std::function<std::string()> text;
};
std::ostream& operator<<(std::ostream& stream, const StrangeList& test) { return stream << test.name; }

std::string repeated(const std::string& text, std::size_t bytes) {
  std::string result;
  while (result.size() < bytes) {
    result += text;
  }
  return result;
}

constexpr std::size_t kMegabyte = std::size_t{1} << 20;
const StrangeList kStrangeLists[] = {
    {"Empty", [] { return std::string(); }},
    {"NoList", [] { return std::string("\x7f\x45LF \xff\xfe <<<>>> %s%n\n"); }},
    {"CutInVersion", [] { return std::string("<rendara_instance>\n<version_major>5"); }},
    {"CutBeforePort", [] { return std::string("<rendara_instance>\n<version_major>4</version_major>\n<livelink_p"); }},
    {"NumbersAreNone",
     [] {
       return std::string(
           "<rendara_instance><version_major>five</version_major></rendara_instance>"
           "<rendara_instance><version_major>6</version_major><livelink_port>99999999999</livelink_port>"
           "</rendara_instance>"
           "<rendara_instance><version_major>6</version_major><livelink_port>-1</livelink_port></rendara_instance>");
     }},
    {"Large", [] { return repeated(instanceText(4, kClosedPort), kMegabyte * 3 / 2); }},
    {"LargeWithoutEnd", [] { return repeated("<version_major>4", kMegabyte); }},
    {"TooLarge", [] { return repeated("no renderer ", 5 * kMegabyte); }},
};

class StrangeListTest : public LinkTest, public ::testing::WithParamInterface<StrangeList> {};

TEST_P(StrangeListTest, HidesNoRenderer) {
  // Before and behind what renderers write.
  const ListedText first(machine_, "0", GetParam().text());
  const ListedText last(machine_, "x", GetParam().text());
  expectCommandsWork();
}

INSTANTIATE_TEST_SUITE_P(Texts, StrangeListTest, ::testing::ValuesIn(kStrangeLists),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace rendara::testing

// The way to a renderer: the registry and the processes are real, the live-link library does what the test says.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "core/live_renderer_link.h"
#include "core/renderer_installation.h"
#include "standin/windows/clock.h"
#include "standin/windows/handles.h"
#include "standin/windows/registry.h"
#include "tests/core/live_link_script.h"
#include "tests/support/temporary_folder.h"

namespace rendara {
namespace {

namespace fs = std::filesystem;
using standin::Hive;
using testing::LiveLinkScript;
using Calls = std::vector<std::string>;

constexpr char kVendor[] = "SOFTWARE\\Vantor";
constexpr char kVersion[] = "SOFTWARE\\Vantor\\Rendara 5";
// Under this name the port is looked for: the version's first byte is all that is taken.
constexpr char kPortKey[] = "SOFTWARE\\Vantor\\R";

std::string list(std::initializer_list<int> ports) {
  std::string text;
  for (const int port : ports) {
    text += "<rendara_instance><version_major>5</version_major><livelink_port>" + std::to_string(port) +
            "</livelink_port></rendara_instance>";
  }
  return text;
}

class LiveLink : public ::testing::Test {
 protected:
  LiveLink() {
    setenv("RENDARA_MACHINE", folder_.path().c_str(), 1);
    fs::create_directory(folder_.path() / "bin");
    fs::create_symlink(library(), folder_.path() / "bin/vntrendaralive64.so");
    change([&](standin::Registry& registry) {
      registry.setText(Hive::kLocalMachine, kVendor, "RendaraVersion", "Rendara 5");
      registry.setText(Hive::kLocalMachine, kVersion, "CurrentVersion", "5");
      registry.setText(Hive::kLocalMachine, kVersion, "BinName", "/bin/true");
      registry.setText(Hive::kLocalMachine, kVersion, "BinFolder", (folder_.path() / "bin").string());
    });
    control_ = dlopen(library(), RTLD_NOW | RTLD_LOCAL);
    setScript(&script);
  }
  ~LiveLink() override {
    setScript(nullptr);
    dlclose(control_);
    EXPECT_EQ(standin::openHandles(), std::vector<std::string>());
    EXPECT_EQ(standin::windowsMisuse(), std::vector<std::string>());
    unsetenv("RENDARA_MACHINE");
  }

  static const char* library() { return RENDARA_LIB_DIR "/libscripted_live_link.so"; }
  void setScript(LiveLinkScript* next) {
    reinterpret_cast<testing::SetLiveLinkScript>(dlsym(control_, testing::kSetLiveLinkScript))(next);
  }
  static void change(const std::function<void(standin::Registry&)>& what) {
    standin::changeRegistry(standin::registryFile(), what);
  }
  static void setPort(std::uint32_t port, bool withMaximum) {
    change([&](standin::Registry& registry) {
      registry.setNumber(Hive::kCurrentUser, kPortKey, "LiveLinkPort", port);
      if (withMaximum) {
        registry.setNumber(Hive::kCurrentUser, kPortKey, "LiveLinkMaxPort", port + 9);
      }
    });
  }
  // A launch fails from now on.
  static void removeProgram() {
    change([](standin::Registry& registry) { registry.remove(Hive::kLocalMachine, kVersion, "BinName"); });
  }

  bool connect(LinkMode mode) {
    LiveRendererLink link;
    const LiveScene live = link.connect(mode, lastPort);
    launched = live.newInstance;
    link.release();
    return live.scene != nullptr;
  }
  // What the library was asked between its start and its end.
  static Calls around(Calls calls) {
    calls.insert(calls.begin(), {"initialize", "id 1"});
    calls.insert(calls.end(), {"close", "shutdown"});
    return calls;
  }

  LiveLinkScript script;
  int lastPort = -1;
  bool launched = false;
  std::vector<unsigned> sleeps;
  standin::SleepReplaced sleepReplaced_{[this](unsigned milliseconds) { sleeps.push_back(milliseconds); }};

 private:
  testing::TemporaryFolder folder_;
  void* control_ = nullptr;
};

TEST_F(LiveLink, LaunchTakesTheSmallestNewPort) {
  script.list = [](std::size_t question) { return question < 3 ? list({40, 50}) : list({40, 50, 70, 60}); };
  EXPECT_TRUE(connect(LinkMode::kLaunch));
  EXPECT_EQ(script.calls, around({"connect 127.0.0.1 60 5"}));
  EXPECT_EQ(sleeps, std::vector<unsigned>(3, 1000));
  EXPECT_EQ(lastPort, 60);
  EXPECT_TRUE(launched);
}

TEST_F(LiveLink, LaunchIsAwaitedTwentyTimesAndThenTheRegistryPortIsTaken) {
  script.list = [](std::size_t) { return list({40}); };
  setPort(4000, true);
  EXPECT_TRUE(connect(LinkMode::kLaunch));
  EXPECT_EQ(script.calls, around({"connect 127.0.0.1 4000 1"}));
  EXPECT_EQ(sleeps, std::vector<unsigned>(20, 1000));
  EXPECT_EQ(script.questions, 21U);
  EXPECT_EQ(lastPort, 4000);
}

TEST_F(LiveLink, RegistryPortIsTriedTwice) {
  setPort(4000, true);
  script.accepts = [](int, int mode) { return mode == 5; };
  EXPECT_TRUE(connect(LinkMode::kLaunch));
  EXPECT_EQ(script.calls, around({"connect 127.0.0.1 4000 1", "connect 127.0.0.1 4000 5"}));

  script.calls.clear();
  script.accepts = [](int, int) { return false; };
  lastPort = 77;
  EXPECT_FALSE(connect(LinkMode::kLaunch));
  EXPECT_EQ(script.calls, around({"connect 127.0.0.1 4000 1", "connect 127.0.0.1 4000 5"}));
  EXPECT_EQ(lastPort, 77) << "kept by a failure";
}

TEST_F(LiveLink, RegistryPortWithoutAMaximumIsTriedOnceAfterALaunch) {
  setPort(4000, false);
  EXPECT_TRUE(connect(LinkMode::kLaunch));
  EXPECT_EQ(script.calls, around({"connect 127.0.0.1 4000 5"}));
}

TEST_F(LiveLink, NoPortIsKnown) {
  EXPECT_FALSE(connect(LinkMode::kLaunch));
  EXPECT_EQ(script.calls, around({}));
  EXPECT_EQ(sleeps.size(), 20U);
}

TEST_F(LiveLink, NothingIsAwaitedWhenNoProgramStarts) {
  removeProgram();
  EXPECT_FALSE(connect(LinkMode::kLaunch));
  EXPECT_EQ(script.calls, around({}));
  EXPECT_TRUE(sleeps.empty());
}

TEST_F(LiveLink, UpdateTakesTheLastPortOrTheSmallest) {
  removeProgram();
  script.list = [](std::size_t) { return list({50, 40, 60}); };
  lastPort = 50;
  EXPECT_TRUE(connect(LinkMode::kUpdate));
  EXPECT_EQ(script.calls, around({"connect 127.0.0.1 50 1"}));
  EXPECT_FALSE(launched);
  script.calls.clear();
  lastPort = 55;
  EXPECT_TRUE(connect(LinkMode::kUpdate));
  EXPECT_EQ(script.calls, around({"connect 127.0.0.1 40 1"}));
  EXPECT_EQ(lastPort, 40);
}

TEST_F(LiveLink, UpdateThatIsRefusedTriesNothingElse) {
  setPort(4000, true);
  script.list = [](std::size_t) { return list({50, 40}); };
  script.accepts = [](int, int) { return false; };
  EXPECT_FALSE(connect(LinkMode::kUpdate));
  EXPECT_EQ(script.calls, around({"connect 127.0.0.1 40 1"}));
  EXPECT_TRUE(sleeps.empty());
}

TEST_F(LiveLink, UpdateWithoutInstancesTakesTheRegistryPort) {
  removeProgram();
  for (const bool withMaximum : {true, false}) {
    setPort(4000, withMaximum);
    script.calls.clear();
    EXPECT_TRUE(connect(LinkMode::kUpdate));
    EXPECT_EQ(script.calls, around({"connect 127.0.0.1 4000 1"}));
    EXPECT_FALSE(launched);
  }
}

TEST_F(LiveLink, UpdateThatReachesNobodyLaunches) {
  script.list = [](std::size_t question) { return question == 0 ? std::string() : list({41}); };
  EXPECT_TRUE(connect(LinkMode::kUpdate));
  EXPECT_EQ(script.calls, around({"connect 127.0.0.1 41 5"}));
  EXPECT_TRUE(launched);

  setPort(4000, true);
  script.calls.clear();
  script.questions = 0;
  script.accepts = [](int port, int) { return port == 41; };
  EXPECT_TRUE(connect(LinkMode::kUpdate));
  EXPECT_EQ(script.calls, around({"connect 127.0.0.1 4000 1", "connect 127.0.0.1 41 5"}));
}

TEST_F(LiveLink, LibraryMayLackAnything) {
  script.hasInstances = false;
  setPort(4000, true);
  EXPECT_TRUE(connect(LinkMode::kUpdate)) << "no list: no instance";
  EXPECT_EQ(script.calls, (Calls{"initialize", "id 1", "connect 127.0.0.1 4000 1", "shutdown"}));
  script.hasInstances = true;
  script.list = [](std::size_t) { return std::nullopt; };
  EXPECT_TRUE(connect(LinkMode::kUpdate)) << "a list without text";
  script.calls.clear();
  script.hasScene = false;
  EXPECT_FALSE(connect(LinkMode::kLaunch));
  EXPECT_EQ(script.calls, (Calls{"initialize", "shutdown"}));
  script.calls.clear();
  script.starts = false;
  EXPECT_FALSE(connect(LinkMode::kLaunch));
  EXPECT_EQ(script.calls, Calls{"initialize"});
  EXPECT_TRUE(sleeps.empty());
}

TEST_F(LiveLink, LibraryIsTakenFromTheActiveFolderFirst) {
  const testing::TemporaryFolder other;
  change([&](standin::Registry& registry) {
    registry.setText(Hive::kCurrentUser, kVendor, "RendaraActivePath", other.path().string());
  });
  EXPECT_FALSE(connect(LinkMode::kUpdate)) << "the folder is taken although the library is not in it";
  fs::create_symlink(RENDARA_LIB_DIR "/liblibrary_without_entry.so", other.path() / "vntrendaralive64.so");
  EXPECT_FALSE(connect(LinkMode::kUpdate)) << "a library without the entry";
  fs::create_symlink(library(), other.path() / "vntrendaralive32.so");
  setPort(4000, true);
  EXPECT_TRUE(connect(LinkMode::kUpdate)) << "the other one comes first";
  EXPECT_EQ(liveLinkFolder(), other.path().wstring() + L"\\");
}

class Installation : public LiveLink {};

TEST_F(Installation, OldVersionIsLeftForTheMinimum) {
  change([](standin::Registry& registry) {
    registry.setText(Hive::kLocalMachine, kVendor, "RendaraVersion", "Rendara 4");
    registry.setText(Hive::kLocalMachine, "SOFTWARE\\Vantor\\Rendara 4", "CurrentVersion", "4");
    registry.setText(Hive::kLocalMachine, "SOFTWARE\\Vantor\\Rendara 4", "BinName", "old");
    registry.setText(Hive::kLocalMachine, kVersion, "BinName", "new");
  });
  EXPECT_EQ(rendererProgram(5), L"new");
  EXPECT_EQ(rendererProgram(4), L"old");
  EXPECT_EQ(rendererProgram(6), L"") << "there is no such installation";
  change([](standin::Registry& registry) {
    registry.remove(Hive::kLocalMachine, "SOFTWARE\\Vantor\\Rendara 4", "CurrentVersion");
  });
  EXPECT_EQ(rendererProgram(5), L"old") << "a version that is not told is not too old";
  change([](standin::Registry& registry) { registry.remove(Hive::kLocalMachine, kVendor, "RendaraVersion"); });
  EXPECT_EQ(rendererProgram(5), L"");
}

TEST_F(Installation, TextIsCutToItsSize) {
  const auto programOf = [](std::uint32_t type, const std::string& utf16) {
    change([&](standin::Registry& registry) {
      registry.setBytes(Hive::kLocalMachine, kVersion, "BinName", type, {utf16.begin(), utf16.end()});
    });
    return rendererProgram(5);
  };
  using namespace std::string_literals;
  EXPECT_EQ(programOf(standin::kRegistryText, "a\0b\0"s), L"ab") << "not terminated";
  EXPECT_EQ(programOf(standin::kRegistryText, "a\0b\0c"s), L"ab") << "half a character at the end";
  EXPECT_EQ(programOf(standin::kRegistryText, "a\0\0\0b\0"s), L"a");
  EXPECT_EQ(programOf(standin::kRegistryText, ""s), L"");
  std::string longText;
  for (int i = 0; i < 259; ++i) {
    longText += "x\0"s;
  }
  EXPECT_EQ(programOf(standin::kRegistryText, longText + "\0\0"s).size(), 259U);
  EXPECT_EQ(programOf(standin::kRegistryText, longText + "x\0\0\0"s), L"") << "longer than a path may be";
  EXPECT_EQ(programOf(standin::kRegistryNumber, "a\0b\0"s), L"") << "not a text";
}

TEST_F(Installation, PortIsLookedUpUnderTheVersionsFirstByte) {
  using Status = PortLookup::Status;
  EXPECT_EQ(livePortInRegistry().status, Status::kNoKey);
  change([](standin::Registry& registry) {
    registry.setNumber(Hive::kCurrentUser, kVersion, "LiveLinkPort", 1);
    registry.setNumber(Hive::kCurrentUser, kPortKey, "LiveLinkMaxPort", 4009);
  });
  EXPECT_EQ(livePortInRegistry().status, Status::kNoPort);
  setPort(4000, true);
  EXPECT_EQ(livePortInRegistry().status, Status::kFound);
  EXPECT_EQ(livePortInRegistry().port, 4000);
  EXPECT_EQ(livePortInRegistry().maximum, 4009);
  change([](standin::Registry& registry) { registry.remove(Hive::kCurrentUser, kPortKey, "LiveLinkMaxPort"); });
  EXPECT_EQ(livePortInRegistry().status, Status::kNoMaximum);
  EXPECT_EQ(livePortInRegistry().port, 4000);
  change([](standin::Registry& registry) { registry.setText(Hive::kCurrentUser, kPortKey, "LiveLinkPort", "5000"); });
  EXPECT_EQ(livePortInRegistry().status, Status::kNoPort) << "a text is no port";

  change([](standin::Registry& registry) {
    registry.remove(Hive::kLocalMachine, kVendor, "RendaraVersion");
    registry.setNumber(Hive::kCurrentUser, "SOFTWARE\\Vantor\\Rendara 4", "LiveLinkPort", 6000);
  });
  EXPECT_EQ(livePortInRegistry().port, 6000) << "without a version";
}

}  // namespace
}  // namespace rendara

#include "core/live_renderer_link.h"

#include <algorithm>
#include <string>
#include <utility>

#include "core/at_end.h"
#include "core/instance_list.h"
#include "core/renderer_installation.h"
#include "scene/vntScene_api.h"

namespace rendara {
namespace {

constexpr char kHost[] = "127.0.0.1";
constexpr unsigned kClientId = 1;
constexpr int kPolls = 20;
constexpr DWORD kPollMilliseconds = 1000;

// What the third argument of `connect` tells the library.
constexpr int kRunning = 1;   // a renderer that was there before
constexpr int kStarting = 5;  // one that has just been started

bool connectTo(vntScene_api& scene, int port, int mode) { return port > 0 && scene.connect(kHost, port, mode); }

}  // namespace

LiveScene LiveRendererLink::connect(LinkMode mode, int& lastPort) {
  release();
  loadLibrary();
  vntScene_api* scene = interface_ != nullptr ? interface_->createScene() : nullptr;
  if (scene == nullptr) {
    return {};
  }
  scene->id(kClientId);
  instances_ = interface_->instances();
  const AtEnd closeList([this] {
    if (instances_ != nullptr && instances_->isOpen()) {
      instances_->close();
    }
  });
  const std::set<int> before = runningInstances();
  bool launched = mode == LinkMode::kLaunch;
  const int port = launched ? connectLaunched(*scene, before) : connectRunning(*scene, before, lastPort, launched);
  if (port == 0) {
    return {};
  }
  lastPort = port;
  return {scene, launched};
}

void LiveRendererLink::release() noexcept {
  instances_ = nullptr;
  if (LiveLinkInterface* ended = std::exchange(interface_, nullptr)) {
    ended->shutdown();
  }
  library_.unload();
}

void LiveRendererLink::loadLibrary() {
  const std::wstring folder = liveLinkFolder();
  const std::wstring names[] = {L"vntrendaralive32.so", L"vntrendaralive64.so"};
  for (const std::wstring& file : {folder + names[0], folder + names[1], names[0], names[1]}) {
    library_ = Module::load(file.c_str());
    if (library_) {
      break;
    }
  }
  if (const auto initialize = library_.entry<InitializeLiveLink>(kLiveLinkEntry)) {
    interface_ = initialize();
  }
}

std::set<int> LiveRendererLink::runningInstances() const {
  const char* text = instances_ != nullptr ? instances_->listText() : nullptr;
  return text != nullptr ? parseInstanceList(text, kMinimumRendererVersion) : std::set<int>();
}

int LiveRendererLink::awaitNewInstance(const std::set<int>& before) const {
  for (int poll = 0; poll < kPolls; ++poll) {
    Sleep(kPollMilliseconds);
    const std::set<int> now = runningInstances();
    const auto added = std::find_if(now.begin(), now.end(), [&](int port) { return !before.contains(port); });
    if (added != now.end()) {
      return *added;
    }
  }
  return 0;
}

int LiveRendererLink::connectLaunched(vntScene_api& scene, const std::set<int>& before) const {
  if (!launchRenderer(kMinimumRendererVersion)) {
    return 0;
  }
  int port = awaitNewInstance(before);
  if (port == 0) {
    const PortLookup lookup = livePortInRegistry();
    port = lookup.port;
    if (lookup.status == PortLookup::Status::kFound && connectTo(scene, port, kRunning)) {
      return port;
    }
  }
  return connectTo(scene, port, kStarting) ? port : 0;
}

int LiveRendererLink::connectRunning(vntScene_api& scene, const std::set<int>& running, int lastPort,
                                     bool& launched) const {
  if (!running.empty()) {
    const int port = running.contains(lastPort) ? lastPort : *running.begin();
    return connectTo(scene, port, kRunning) ? port : 0;
  }
  const PortLookup lookup = livePortInRegistry();
  if (connectTo(scene, lookup.port, kRunning)) {
    return lookup.port;
  }
  launched = true;
  return connectLaunched(scene, running);
}

}  // namespace rendara

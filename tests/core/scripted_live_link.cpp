// A live-link library that does what a test tells it.
#include "core/live_link.h"

#include <memory>
#include <string>

#include "tests/core/live_link_script.h"
#include "tests/support/recording_scene.h"

namespace {

using rendara::testing::LiveLinkScript;

LiveLinkScript* script = nullptr;

class Scene final : public rendara::testing::RecordingScene {
 public:
  bool connect(const char* host, int port, int mode) override {
    script->calls.push_back("connect " + std::string(host) + " " + std::to_string(port) + " " + std::to_string(mode));
    return script->accepts(port, mode);
  }
  void id(unsigned value) override { script->calls.push_back("id " + std::to_string(value)); }
  bool endScene() override {
    script->calls.push_back("endScene");
    return true;
  }
};

class Instances final : public rendara::LiveLinkInstances {
 public:
  const char* listText() override {
    open_ = true;
    const auto text = script->list(script->questions++);
    text_ = text.value_or("");
    return text ? text_.c_str() : nullptr;
  }
  void reserved1() override { script->calls.push_back("reserved1"); }
  bool isOpen() override { return open_; }
  void close() override {
    open_ = false;
    script->calls.push_back("close");
  }

 private:
  bool open_ = false;
  std::string text_;
};

class Interface final : public rendara::LiveLinkInterface {
 public:
  void shutdown() override { script->calls.push_back("shutdown"); }
  rendara::vntScene_api* createScene() override { return script->hasScene ? &scene_ : nullptr; }
  rendara::LiveLinkInstances* instances() override { return script->hasInstances ? &instances_ : nullptr; }

 private:
  Scene scene_;
  Instances instances_;
};

// The library stays loaded by the test: what it holds is made anew at each start, as if it were not.
std::unique_ptr<Interface> interfaceNow;

}  // namespace

extern "C" __attribute__((visibility("default"))) void setLiveLinkScript(LiveLinkScript* next) {
  script = next;
  interfaceNow.reset();
}

extern "C" __attribute__((visibility("default"))) rendara::LiveLinkInterface* rendara_live_initialize() {
  script->calls.emplace_back("initialize");
  interfaceNow.reset();
  if (script->starts) {
    interfaceNow = std::make_unique<Interface>();
  }
  return interfaceNow.get();
}

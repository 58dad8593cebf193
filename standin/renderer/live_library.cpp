// The live-link library: hands out scenes that go to a renderer, and the list of the renderers that run.

#include <memory>
#include <new>
#include <string>
#include <vector>

#include "core/live_link.h"
#include "standin/renderer/instance_list.h"
#include "standin/renderer/live_scene.h"
#include "standin/windows/machine_folder.h"

namespace standin {
namespace {

class Instances final : public rendara::LiveLinkInstances {
 public:
  const char* listText() override try {
    text_ = InstanceList(machineFolder()).text();
    open_ = true;
    return text_.c_str();
  } catch (const std::exception&) {
    return nullptr;
  }
  void reserved1() override {}
  bool isOpen() override { return open_; }
  void close() override { open_ = false; }

 private:
  std::string text_;
  bool open_ = false;
};

class Library final : public rendara::LiveLinkInterface {
 public:
  // Scenes go in the reverse order of their making, since each gives back the numeric locale that it found.
  void shutdown() override {
    while (!scenes_.empty()) scenes_.pop_back();
    scenes_.shrink_to_fit();
    instances_.reset();
  }
  rendara::vntScene_api* createScene() override try {
    return scenes_.emplace_back(std::make_unique<LiveScene>()).get();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  rendara::LiveLinkInstances* instances() override {
    if (!instances_) instances_.reset(new (std::nothrow) Instances);
    return instances_.get();
  }

 private:
  std::vector<std::unique_ptr<LiveScene>> scenes_;
  std::unique_ptr<Instances> instances_;
};

}  // namespace
}  // namespace standin

#ifdef _WIN32
#define STANDIN_EXPORT __declspec(dllexport)
#else
#define STANDIN_EXPORT __attribute__((visibility("default")))
#endif

extern "C" STANDIN_EXPORT rendara::LiveLinkInterface* rendara_live_initialize() {
  static standin::Library library;
  return &library;
}

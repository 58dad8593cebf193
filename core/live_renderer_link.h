// The link to a renderer on this machine, through the live-link library of its installation.
#pragma once

#include <set>

#include "core/live_link.h"
#include "core/renderer_link.h"
#include "platform/windows_handles.h"

namespace rendara {

// Nothing is loaded but between connect() and release(). A renderer that is launched is waited for up to 20 seconds.
class LiveRendererLink : public RendererLink {
 public:
  LiveRendererLink() = default;
  LiveRendererLink(const LiveRendererLink&) = delete;
  LiveRendererLink& operator=(const LiveRendererLink&) = delete;
  ~LiveRendererLink() override { release(); }

  LiveScene connect(LinkMode mode, int& lastPort) override;
  void release() noexcept override;

 private:
  void loadLibrary();
  std::set<int> runningInstances() const;
  // Ports, 0 when no renderer could be connected to.
  int connectLaunched(vntScene_api& scene, const std::set<int>& before) const;
  int awaitNewInstance(const std::set<int>& before) const;
  int connectRunning(vntScene_api& scene, const std::set<int>& running, int lastPort, bool& launched) const;

  Module library_;
  LiveLinkInterface* interface_ = nullptr;  // the library's own; null until it was initialised
  LiveLinkInstances* instances_ = nullptr;  // the library's own
};

}  // namespace rendara

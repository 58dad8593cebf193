// The way to a running renderer that Render and Update take.
#pragma once

namespace rendara {

class vntScene_api;

enum class LinkMode {
  kLaunch,  // starts a new renderer
  kUpdate   // takes the last one, else one that runs, else starts one
};

struct LiveScene {
  vntScene_api* scene = nullptr;  // null: no renderer could be reached; the link's own otherwise
  bool newInstance = false;       // another renderer than the one that the last scene went to
};

class RendererLink {
 public:
  virtual ~RendererLink() = default;

  // Connects a scene object to a renderer. `lastPort` is the port of the last one, -1 for none yet, and becomes that
  // of the one reached. Waits for a renderer that starts.
  virtual LiveScene connect(LinkMode mode, int& lastPort) = 0;

  // Lets go of the renderer and of the scene object; also after a connection that failed.
  virtual void release() noexcept = 0;
};

}  // namespace rendara

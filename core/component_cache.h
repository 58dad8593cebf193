// What the renderer that is connected to holds: the version stamp that each component's model had when its geometry
// was last sent, by the component's full path.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <utility>

#include "core/component_path.h"
#include "platform/creo_handles.h"

namespace rendara {

// Settings that change every mesh. While they differ from those of the last scene, every component is changed.
struct MeshSettings {
  double tessellationQuality = 0.0;
  bool includeNURBS = false;
  bool separateMaterials = false;

  bool operator==(const MeshSettings&) const = default;
};

class ComponentCache {
 public:
  void clear() { sent_.clear(); }
  std::size_t size() const { return sent_.size(); }

  // Begins a scene: what is noted from here on takes the place of the entries when the scene is finished.
  void beginScene(const MeshSettings& settings) {
    next_.clear();
    nextSettings_ = settings;
  }

  // Whether the renderer holds the component as it is now.
  bool holds(const ProAsmcomppath& path, const VersionStamp& stamp) const {
    const auto entry = settings_ == nextSettings_ ? sent_.find(path) : sent_.end();
    return entry != sent_.end() && stamp && ProVerstampEqual(entry->second.get(), stamp.get()) == PRO_B_TRUE;
  }

  // Notes that after this scene the renderer holds the component.
  void note(const ProAsmcomppath& path, VersionStamp stamp) { next_[path] = std::move(stamp); }

  // The scene has arrived.
  void finishScene() {
    sent_ = std::exchange(next_, {});
    settings_ = nextSettings_;
  }

  // The scene has not arrived; what was noted is dropped.
  void abandonScene() { next_.clear(); }

 private:
  using Stamps = std::unordered_map<ProAsmcomppath, VersionStamp, PathHash, PathEqual>;

  Stamps sent_;
  Stamps next_;
  MeshSettings settings_;
  MeshSettings nextSettings_;
};

}  // namespace rendara

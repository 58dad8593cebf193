// What the renderer that is connected to holds: the version stamp that each component's model had when its geometry
// was last sent, by the component's full path.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <utility>

#include "core/component_path.h"
#include "geometry/part_geometry.h"
#include "platform/creo_handles.h"

namespace rendara {

class ComponentCache {
 public:
  void clear() { sent_.clear(); }
  std::size_t size() const { return sent_.size(); }

  // Begins a scene: what is noted from here on takes the place of the entries when the scene is finished.
  void beginScene(const GeometryOptions& options) {
    next_.clear();
    nextOptions_ = options;
  }

  // Whether the renderer holds the component as it is now.
  bool holds(const ProAsmcomppath& path, const VersionStamp& stamp) const {
    const auto entry = options_ == nextOptions_ ? sent_.find(path) : sent_.end();
    return entry != sent_.end() && entry->second && stamp &&
           ProVerstampEqual(entry->second.get(), stamp.get()) == PRO_B_TRUE;
  }

  // Notes that after this scene the renderer holds the component.
  void note(const ProAsmcomppath& path, VersionStamp stamp) { next_[path] = std::move(stamp); }

  // The scene has arrived.
  void finishScene() {
    sent_ = std::exchange(next_, {});
    options_ = nextOptions_;
  }

  // The scene has not arrived; what was noted is dropped.
  void abandonScene() { next_.clear(); }

 private:
  using Stamps = std::unordered_map<ProAsmcomppath, VersionStamp, PathHash, PathEqual>;

  Stamps sent_;
  Stamps next_;
  // While these differ from those of the last scene, every component is changed.
  GeometryOptions options_;
  GeometryOptions nextOptions_;
};

}  // namespace rendara

// What the renderer that is connected to holds: by each component's full path, the version stamp that its model had
// when its geometry was last sent, and the group that it was sent as.
//
// The group counts because a renderer knows groups and no components: when the first of three bolts is suppressed, the
// two that are left become the first and the second group of that name.
#pragma once

#include <cstddef>
#include <string>
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

  // Whether the renderer holds the component as it is now in that group.
  bool holds(const ProAsmcomppath& path, const VersionStamp& stamp, const std::string& group) const {
    const auto found = options_ == nextOptions_ ? sent_.find(path) : sent_.end();
    if (found == sent_.end()) {
      return false;
    }
    const Entry& entry = found->second;
    return entry.group == group && entry.stamp && stamp &&
           ProVerstampEqual(entry.stamp.get(), stamp.get()) == PRO_B_TRUE;
  }

  // Notes that after this scene the renderer holds the component.
  void note(const ProAsmcomppath& path, VersionStamp stamp, std::string group) {
    next_[path] = {std::move(stamp), std::move(group)};
  }

  // The scene has arrived.
  void finishScene() {
    sent_ = std::exchange(next_, {});
    options_ = nextOptions_;
  }

  // The scene has not arrived; what was noted is dropped.
  void abandonScene() { next_.clear(); }

 private:
  struct Entry {
    VersionStamp stamp;
    std::string group;
  };
  using Entries = std::unordered_map<ProAsmcomppath, Entry, PathHash, PathEqual>;

  Entries sent_;
  Entries next_;
  // While these differ from those of the last scene, every component is changed.
  GeometryOptions options_;
  GeometryOptions nextOptions_;
};

}  // namespace rendara

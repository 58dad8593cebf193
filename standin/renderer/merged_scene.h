// What a renderer holds: the scripts that it has taken, merged into one scene.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "standin/renderer/script_bytes.h"
#include "tools/rpk/drawing.h"
#include "tools/rpk/scene_summary.h"

namespace standin {

// A group is the same as one of an earlier script when its path is: the names from the top down and, among siblings of
// one name, which of them it is. Groups of one material are part of the group around them and have no path of their
// own.
//
//  - A group that comes with geometry (its own, or by a reference) draws that from now on. One that comes without draws
//    what it drew before. Either way its flags, placement and animations are those that came.
//  - A group that does not come any more goes, with all below it; at the top it stays, since it is another model's.
//  - A reference is resolved within its script, when it is read; what it names may change later without it.
//  - Options and headers are those of the last script, cameras those of the last script that has some.
//
// This is the merging that "import_merge_groups" off, "import_merge_objects" off and "import_keep_original" on ask for;
// a script that asks for another is refused.
class MergedScene {
 public:
  struct Script {
    ScriptBytes bytes;
    rpk::Scene scene;
  };

  struct Node {
    std::string name;
    std::optional<std::uint32_t> flags;
    std::optional<rpk::Matrix> placement;  // relative to the node around it
    std::vector<rpk::Animation> animations;
    // The group of the script that tells what is drawn here, by its geometry or its reference; null without any.
    const rpk::Group* content = nullptr;
    std::shared_ptr<const Script> script;  // that the content is in
    std::vector<Node> children;
  };

  // At most so many scripts are held at a time; one is held as long as something is drawn from it.
  explicit MergedScene(std::size_t maxScripts) : maxScripts_(maxScripts) {}

  // Merges a script that came complete. Empty; or, in one line, why it is refused, with the scene as it was: faults of
  // the text, no header line, no group, other merge options, too many scripts held.
  std::string take(ScriptBytes bytes);

  const std::vector<Node>& groups() const { return groups_; }
  // Headers, modules, options and cameras; without groups.
  const rpk::Scene& head() const { return head_; }
  std::size_t scriptsHeld() const;
  // Nodes of the last script whose reference names nothing that came before it; they draw nothing.
  std::size_t danglingReferences() const { return danglingReferences_; }

 private:
  std::size_t maxScripts_;
  std::vector<Node> groups_;
  rpk::Scene head_;
  std::size_t danglingReferences_ = 0;
};

// Everything that the nodes draw, with its placement in the scene, in order. The scene's scripts must be held
// meanwhile.
std::vector<rpk::PlacedGroup> placedContent(const std::vector<MergedScene::Node>& groups);

}  // namespace standin

// What a renderer should hold after an Update, computed from the session alone: which occurrences are sent anew, and
// what the others were sent as. Written independently of the plug-in's walk.
#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "standin/cad/session.h"

namespace rendara::testing {

// One group of the scene that shows a part's or an assembly's own surfaces.
struct Occurrence {
  std::vector<int> path;  // component ids from the top model down
  std::string group;      // as the renderer's status names it
  std::string name;       // "bolt.prt"
  std::uint64_t stamp = 0;
};

// In the order of the scene, without the top model's own surfaces.
std::vector<Occurrence> occurrencesOf(const standin::Model& top);

class ExpectedScene {
 public:
  using Picks = std::vector<std::vector<int>>;

  // The renderer is another one, or has lost what it had.
  void forget() { sent_.clear(); }
  // Meshes are made otherwise from now on.
  void settingsChanged() { sent_.clear(); }

  // The scene after a Render or an Update of the session; `fresh` are the groups that a renderer lists that gets
  // everything now. `picks` are those of a manual Update.
  nlohmann::json take(const standin::Model& top, const nlohmann::json& fresh, const Picks& picks);

 private:
  struct Sent {
    std::string group;
    std::uint64_t stamp = 0;
    std::string geometry;  // digests, as JSON
    std::string material;
  };
  std::map<std::vector<int>, Sent> sent_;
};

}  // namespace rendara::testing

// The simplified representation of an assembly that an export follows.
#pragma once

#include <optional>
#include <unordered_map>

#include "core/component_path.h"
#include "platform/creo_toolkit.h"

namespace rendara {

struct RepresentationChoice {
  ProSimprepActionType defaultAction = PRO_SIMPREP_INCLUDE;
  bool master = true;
  // What the representation does to single components, by their full paths; owners are not compared.
  std::unordered_map<ProAsmcomppath, ProSimprepActionType, PathHash, IdentifiersEqual> actions;

  // Whether what no action names is part of the representation.
  bool includesByDefault() const { return master || defaultAction == PRO_SIMPREP_INCLUDE; }
  // Whether the component is part of it, given what holds for its surroundings.
  bool includes(const ProAsmcomppath& path, bool surroundingsIncluded) const;
};

// Lets the user choose when the assembly has several representations; a single one is taken, none means the master
// one. Nothing when the user cancels.
std::optional<RepresentationChoice> chooseRepresentation(ProSolid assembly);

}  // namespace rendara

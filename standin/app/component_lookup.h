// From what the user types to models and components.
#pragma once

#include <string>
#include <vector>

#include "standin/cad/session.h"

namespace standin {

// One component of an assembly.
struct Component {
  Model* owner = nullptr;  // the assembly that holds it
  Feature* feature = nullptr;
  std::vector<int> path;  // component feature ids from the top model down
};

// The name as the scene shows it: "PLATE.prt", "AS1.asm".
std::string displayName(const Model& model);

// The component of a path such as "3/5" or "L-BRACKET-ASSEMBLY/BOLT": each step is an id or a model's name, with or
// without ".prt" or ".asm", in any letter case. Throws Failure when there is none, and when a name is placed more
// than once there.
Component findComponent(Model& top, const std::string& path);

// The model of a name, with or without ".prt" or ".asm"; null when there is none.
Model* findModelByName(Session& session, const std::string& name);
// The same; throws Failure when there is none.
Model& requireModel(Session& session, const std::string& name);

}  // namespace standin

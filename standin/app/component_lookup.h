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

// The component of a path such as "3/5" or "BRACKET_ASSEMBLY/BOLT:2": each step is an id or a model's name, with or
// without ".prt" or ".asm", in any letter case. ":n" names the n-th component of that name, in the order of the tree.
// A /, : or \ of the name itself is written with a \ before it. Throws Failure when there is no such component, and
// when a name without ":n" is placed more than once.
Component findComponent(Model& top, const std::string& path);

// True when the text can only mean a component: an id, or a path of several steps or with ":n".
bool isComponentPath(const std::string& text);

// The model of a name, with or without ".prt" or ".asm"; null when there is none.
Model* findModelByName(Session& session, const std::string& name);
// The same; throws Failure when there is none.
Model& requireModel(Session& session, const std::string& name);

}  // namespace standin

// The walk over the open model: cameras, sub-assemblies as groups, and every occurrence of a part.
#pragma once

#include "core/plugin.h"
#include "scene/scene_builder.h"

namespace rendara {

// Writes what stands inside the top-level group of a scene, through the plug-in's current scene. In a mode that is
// neither an assembly's nor a part's only the cameras are written. On the live link the component cache takes note
// of what is sent; the caller finishes or abandons it.
void traverseModel(RendaraPlugin& plugin, SceneBuilder& builder, const OpenModel& open);

}  // namespace rendara

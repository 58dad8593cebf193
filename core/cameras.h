// The CAD system's views as cameras.
#pragma once

#include "platform/creo_toolkit.h"

namespace rendara {

class SceneBuilder;

// Writes a camera for the current view, "Current Creo camera", and one for each saved view under its name (at most
// 127 bytes). Every camera is orthographic and carries the default environment; only its orientation is the view's,
// so that the renderer frames the model itself. A host operation that fails leaves what the view before had.
void exportCameras(SceneBuilder& builder, ProMdl model);

}  // namespace rendara

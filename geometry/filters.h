// Which surfaces and quilts of a part are exported.
#pragma once

#include "platform/creo_toolkit.h"

namespace rendara {

// Visit filters: PRO_TK_NO_ERROR visits the item, PRO_TK_CONTINUE skips it. The visit's data is a SurfaceCollection.

// A surface of an active feature that is active itself; neither hiding nor layers are asked.
ProError acceptSurface(ProSurface surface, ProAppData collection);

// A quilt that is shown: active, not hidden by itself, its feature or a layer, and no backup geometry.
ProError acceptQuilt(ProQuilt quilt, ProAppData collection);

}  // namespace rendara

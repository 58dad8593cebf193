// Which components of an assembly are visited.
#pragma once

#include "platform/creo_toolkit.h"

namespace rendara {

// PRO_TK_NO_ERROR for an active component feature whose model is in session and that no layer blanks, else
// PRO_TK_CONTINUE. Whether it is hidden does not count.
ProError filterComponent(ProFeature& feature, ProMdl assembly);

}  // namespace rendara

// From the product structure of a STEP document to models of the session.
#pragma once

#include <string>

#include "standin/cad/session.h"
#include "standin/step/step_file.h"

namespace standin {

// The top model that was made, or why there is none. An assembly that has no name of its own gets `fileName`, a part
// without one that of the assembly that holds it.
LoadResult buildModels(Session& session, const StepFile& file, const std::wstring& fileName);

}  // namespace standin

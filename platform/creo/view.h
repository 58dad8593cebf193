// The orientation that a model is looked at with.
#pragma once

#include "platform/creo/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// With a null view: the current one. Rows 0 to 2 hold the rotation times a uniform scale, row 3 the translation.
ProError ProViewMatrixGet(ProMdl model, ProView view, ProMatrix matrix);
// The names are an array that the caller frees; the alternative names may be left out by a null pointer.
ProError ProViewNamesGet(ProMdl model, ProLine** p_view_names, ProLine** p_alt_view_names, int* p_num_of_views);
ProError ProViewNameToView(ProMdl model, ProLine name, ProView* p_view);

#ifdef __cplusplus
}
#endif

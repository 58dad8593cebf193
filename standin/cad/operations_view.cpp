// Saved views and the current one.
#include <algorithm>

#include "standin/cad/operation.h"

using standin::Matrix;
using standin::Model;
using standin::Operation;
using standin::View;

namespace {

// An array of the names, null when there are no views.
ProLine* viewNames(Operation& operation, const Model& model) {
  if (model.views.empty()) {
    return nullptr;
  }
  ProLine* names = operation.newArray<ProLine>(model.views.size());
  for (std::size_t at = 0; at < model.views.size(); ++at) {
    standin::copyText(model.views[at].name, names[at]);
  }
  return names;
}

}  // namespace

extern "C" {

ProError ProViewMatrixGet(ProMdl model, ProView view, ProMatrix matrix) {
  Operation operation("ProViewMatrixGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* owner = operation.model(model);
  const View* saved = operation.view(view);
  if (owner == nullptr || matrix == nullptr || (view != nullptr && saved == nullptr)) return PRO_TK_BAD_INPUTS;
  const Matrix& source = saved != nullptr ? saved->matrix : owner->currentView;
  for (std::size_t at = 0; at < source.size(); ++at) {
    matrix[at / 4][at % 4] = source[at];
  }
  return PRO_TK_NO_ERROR;
}

// No arrays when the model has no views. The alternative names are the names.
ProError ProViewNamesGet(ProMdl model, ProLine** p_view_names, ProLine** p_alt_view_names, int* p_num_of_views) {
  Operation operation("ProViewNamesGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* owner = operation.model(model);
  if (owner == nullptr || p_view_names == nullptr || p_num_of_views == nullptr) return PRO_TK_BAD_INPUTS;
  *p_num_of_views = static_cast<int>(owner->views.size());
  for (ProLine** names : {p_view_names, p_alt_view_names}) {
    if (names != nullptr) {
      *names = viewNames(operation, *owner);
    }
  }
  return owner->views.empty() ? PRO_TK_E_NOT_FOUND : PRO_TK_NO_ERROR;
}

ProError ProViewNameToView(ProMdl model, ProLine name, ProView* p_view) {
  Operation operation("ProViewNameToView");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  Model* owner = operation.model(model);
  if (owner == nullptr || name == nullptr || p_view == nullptr) return PRO_TK_BAD_INPUTS;
  const std::wstring wanted = name;
  const auto found = std::find_if(owner->views.begin(), owner->views.end(), [&](const View& view) {
    return view.name.compare(0, PRO_LINE_SIZE - 1, wanted) == 0;
  });
  if (found == owner->views.end()) return PRO_TK_E_NOT_FOUND;
  operation.impl().knownViews.insert(&*found);
  *p_view = reinterpret_cast<ProView>(&*found);
  return PRO_TK_NO_ERROR;
}
}

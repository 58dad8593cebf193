// Simplified representations.
#include <algorithm>

#include "standin/cad/operation.h"

using standin::AllocationKind;
using standin::Model;
using standin::Operation;
using standin::SimplifiedRep;

struct pro_simprep_data {
  SimplifiedRep representation;
};

namespace {

ProSimprepdataitem dataItem(const SimplifiedRep::Item& item) {
  ProSimprepdataitem result{};
  std::fill_n(result.memb_id_tab, PRO_MAX_ASSEM_LEVEL, PRO_VALUE_UNUSED);
  result.memb_num = static_cast<int>(std::min<std::size_t>(item.path.size(), PRO_MAX_ASSEM_LEVEL));
  std::copy_n(item.path.begin(), result.memb_num, result.memb_id_tab);
  result.action.type = item.action;
  return result;
}

}  // namespace

extern "C" {

ProError ProSolidSimprepVisit(ProSolid p_solid, ProSimprepFilterAction filter, ProSimprepVisitAction action,
                              ProAppData app_data) {
  Operation operation("ProSolidSimprepVisit");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(p_solid);
  if (model == nullptr || action == nullptr) return PRO_TK_BAD_INPUTS;
  std::vector<ProSimprep> items;
  for (const SimplifiedRep& representation : model->representations) {
    items.push_back(standin::itemOf(PRO_SIMP_REP, representation.id, model));
  }
  std::vector<ProSimprep*> handles;
  std::transform(items.begin(), items.end(), std::back_inserter(handles), [](ProSimprep& item) { return &item; });
  return standin::visit(operation, handles, filter, action, app_data);
}

ProError ProSimprepSelect(ProSolid p_solid, ProSimprep* p_simprep) {
  Operation operation("ProSimprepSelect");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(p_solid);
  if (model == nullptr || p_simprep == nullptr) return PRO_TK_BAD_INPUTS;
  standin::Session& session = operation.session();
  ++session.representationsAsked;
  const std::optional<std::wstring> answer =
      standin::nextAnswer(session.representationAnswers, session.onRepresentation, *model);
  if (!answer) return PRO_TK_USER_ABORT;
  int id = PRO_SIMPREP_MASTER_REP;
  if (!answer->empty()) {
    const auto found =
        std::find_if(model->representations.begin(), model->representations.end(),
                     [&](const SimplifiedRep& representation) { return representation.name == *answer; });
    if (found == model->representations.end()) return PRO_TK_E_NOT_FOUND;
    id = found->id;
  }
  *p_simprep = standin::itemOf(PRO_SIMP_REP, id, model);
  return PRO_TK_NO_ERROR;
}

// The master representation, when the model does not list it, includes everything.
ProError ProSimprepdataGet(ProSimprep* p_simprep, ProSimprepdata** p_data) {
  Operation operation("ProSimprepdataGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = p_simprep != nullptr ? operation.model(p_simprep->owner) : nullptr;
  if (model == nullptr || p_data == nullptr) return PRO_TK_BAD_INPUTS;
  const auto found = std::find_if(model->representations.begin(), model->representations.end(),
                                  [&](const SimplifiedRep& candidate) { return candidate.id == p_simprep->id; });
  const bool listed = found != model->representations.end();
  if (!listed && p_simprep->id != PRO_SIMPREP_MASTER_REP) return PRO_TK_E_NOT_FOUND;
  *p_data = operation.allocations().addObject(operation.name(), AllocationKind::representationData,
                                              new pro_simprep_data{listed ? *found : SimplifiedRep()});
  return PRO_TK_NO_ERROR;
}

ProError ProSimprepdataFree(ProSimprepdata** p_data) {
  Operation operation("ProSimprepdataFree");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return operation.release(p_data, AllocationKind::representationData);
}

ProError ProSimprepdataDefaultGet(ProSimprepdata* p_data, ProSimprepActionType* p_default) {
  Operation operation("ProSimprepdataDefaultGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const pro_simprep_data* data = operation.object(p_data, AllocationKind::representationData);
  if (data == nullptr || p_default == nullptr) return PRO_TK_BAD_INPUTS;
  *p_default = data->representation.defaultAction;
  return PRO_TK_NO_ERROR;
}

ProError ProSimprepdataitemsVisit(ProSimprepdata* p_data, ProSimprepdataitemFilterAction filter,
                                  ProSimprepdataitemVisitAction action, ProAppData app_data) {
  Operation operation("ProSimprepdataitemsVisit");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const pro_simprep_data* data = operation.object(p_data, AllocationKind::representationData);
  if (data == nullptr || action == nullptr) return PRO_TK_BAD_INPUTS;
  std::vector<ProSimprepdataitem> items;
  std::transform(data->representation.items.begin(), data->representation.items.end(), std::back_inserter(items),
                 dataItem);
  std::vector<ProSimprepdataitem*> handles;
  std::transform(items.begin(), items.end(), std::back_inserter(handles), [](auto& item) { return &item; });
  return standin::visit(operation, handles, filter, action, app_data);
}
}

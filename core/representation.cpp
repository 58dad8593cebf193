#include "core/representation.h"

#include <algorithm>

#include "platform/creo_handles.h"

namespace rendara {
namespace {

struct Counted {
  int count = 0;
  ProSimprep last{};
};

ProError countRepresentation(ProSimprep* representation, ProError, ProAppData data) {
  auto& counted = *static_cast<Counted*>(data);
  ++counted.count;
  counted.last = *representation;
  return PRO_TK_NO_ERROR;
}

struct Collected {
  RepresentationChoice& choice;
  VisitGuard guard;
};

ProError collectItem(ProSimprepdataitem* item, ProError, ProAppData data) {
  auto& collected = *static_cast<Collected*>(data);
  return collected.guard.run([&] {
    if (item->memb_num >= 0 && item->memb_num <= PRO_MAX_ASSEM_LEVEL) {
      ProAsmcomppath path{};
      path.table_num = item->memb_num;
      std::copy_n(item->memb_id_tab, item->memb_num, path.comp_id_tab);
      collected.choice.actions[path] = item->action.type;
    }
    return PRO_TK_NO_ERROR;
  });
}

// What a representation says; when its data cannot be read it includes everything and names no component.
RepresentationChoice readChoice(ProSimprep representation) {
  RepresentationChoice choice;
  choice.master = representation.id == PRO_SIMPREP_MASTER_REP;
  RepresentationData data;
  if (ProSimprepdataGet(&representation, data.receive()) != PRO_TK_NO_ERROR || !data) {
    return choice;
  }
  ProSimprepdataDefaultGet(data.get(), &choice.defaultAction);
  Collected collected{choice, {}};
  ProSimprepdataitemsVisit(data.get(), nullptr, collectItem, &collected);
  collected.guard.rethrow();
  return choice;
}

}  // namespace

bool RepresentationChoice::includes(const ProAsmcomppath& path, bool surroundingsIncluded) const {
  const auto action = actions.find(path);
  if (action == actions.end() || action->second == PRO_SIMPREP_REVERSE) {
    return surroundingsIncluded;
  }
  return action->second != PRO_SIMPREP_EXCLUDE;
}

std::optional<RepresentationChoice> chooseRepresentation(ProSolid assembly) {
  Counted counted;
  ProSolidSimprepVisit(assembly, nullptr, countRepresentation, &counted);
  if (counted.count > 1) {
    ProSimprep chosen{};
    const ProError status = ProSimprepSelect(assembly, &chosen);
    if (status == PRO_TK_USER_ABORT) {
      return std::nullopt;
    }
    return status == PRO_TK_NO_ERROR ? readChoice(chosen) : RepresentationChoice{};
  }
  return counted.count == 1 ? readChoice(counted.last) : RepresentationChoice{};
}

}  // namespace rendara

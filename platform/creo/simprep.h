// Simplified representations of an assembly.
#pragma once

#include "platform/creo/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define PRO_SIMPREP_MASTER_REP (-1)

typedef enum {
  PRO_SIMPREP_NONE = 0,
  PRO_SIMPREP_REVERSE = 1,
  PRO_SIMPREP_INCLUDE = 2,
  PRO_SIMPREP_EXCLUDE = 3,
  PRO_SIMPREP_SUBSTITUTE = 4,
  PRO_SIMPREP_GEOM = 5,
  PRO_SIMPREP_GRAPHICS = 6
} ProSimprepActionType;

typedef struct pro_simprep_action {
  ProSimprepActionType type;
} ProSimprepAction;

// What a representation does to one component path.
typedef struct pro_simprep_item {
  ProIdTable memb_id_tab;
  int memb_num;
  ProSimprepAction action;
} ProSimprepdataitem;

typedef struct pro_simprep_data ProSimprepdata;

typedef ProError (*ProSimprepVisitAction)(ProSimprep* p_simprep, ProError status, ProAppData app_data);
typedef ProError (*ProSimprepFilterAction)(ProSimprep* p_simprep, ProAppData app_data);
typedef ProError (*ProSimprepdataitemVisitAction)(ProSimprepdataitem* p_item, ProError status, ProAppData app_data);
typedef ProError (*ProSimprepdataitemFilterAction)(ProSimprepdataitem* p_item, ProAppData app_data);

ProError ProSolidSimprepVisit(ProSolid p_solid, ProSimprepFilterAction filter, ProSimprepVisitAction action,
                              ProAppData app_data);
// Lets the user choose; PRO_TK_USER_ABORT when he does not.
ProError ProSimprepSelect(ProSolid p_solid, ProSimprep* p_simprep);
// The data are allocated for the caller, who frees them.
ProError ProSimprepdataGet(ProSimprep* p_simprep, ProSimprepdata** p_data);
ProError ProSimprepdataFree(ProSimprepdata** p_data);
ProError ProSimprepdataDefaultGet(ProSimprepdata* p_data, ProSimprepActionType* p_default);
ProError ProSimprepdataitemsVisit(ProSimprepdata* p_data, ProSimprepdataitemFilterAction filter,
                                  ProSimprepdataitemVisitAction action, ProAppData app_data);

#ifdef __cplusplus
}
#endif

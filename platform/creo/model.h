// Models, features, assembly components, version stamps and units.
#pragma once

#include "platform/creo/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct pro_mdl_data {
  ProName host;
  ProPath device;
  ProPath path;
  ProName name;
  wchar_t type[PRO_TYPE_SIZE];
  wchar_t version[PRO_VERSION_SIZE];
} ProMdldata;

ProError ProMdlCurrentGet(ProMdl* p_handle);
ProError ProModeCurrentGet(ProMode* p_mode);
ProError ProMdlDataGet(ProMdl handle, ProMdldata* p_data);
ProError ProMdlTypeGet(ProMdl handle, ProMdlType* p_type);
ProError ProMdlNameGet(ProMdl handle, ProName name);
ProError ProMdlToModelitem(ProMdl mdl, ProModelitem* p_model_item);
ProError ProModelitemIsHidden(ProModelitem* p_item, ProBoolean* p_is_hidden);

// A stamp is allocated for the caller, who frees it.
typedef struct ver_stamp* WVerstamp;
ProError ProMdlVerstampGet(ProMdl mdl, WVerstamp* p_stamp);
ProBoolean ProVerstampEqual(WVerstamp stamp1, WVerstamp stamp2);
ProError ProVerstampFree(WVerstamp* p_stamp);

typedef int ProFeattype;
typedef enum pro_feat_status {
  PRO_FEAT_INVALID = -1,
  PRO_FEAT_ACTIVE = 0,
  PRO_FEAT_INACTIVE = 1,
  PRO_FEAT_FAMTAB_SUPPRESSED = 2,
  PRO_FEAT_SIMP_REP_SUPPRESSED = 3,
  PRO_FEAT_PROG_SUPPRESSED = 4,
  PRO_FEAT_SUPPRESSED = 5,
  PRO_FEAT_UNREGENERATED = 6
} ProFeatStatus;

#define PRO_FEAT_COMPONENT 1000

typedef ProError (*ProFeatureVisitAction)(ProFeature* p_feature, ProError status, ProAppData app_data);
typedef ProError (*ProFeatureFilterAction)(ProFeature* p_feature, ProAppData app_data);

ProError ProFeatureTypeGet(ProFeature* p_feature, ProFeattype* p_type);
ProError ProFeatureStatusGet(ProFeature* p_feature, ProFeatStatus* p_status);
ProError ProSolidFeatVisit(ProSolid solid, ProFeatureVisitAction visit_action, ProFeatureFilterAction filter_action,
                           ProAppData app_data);

// The two corners of the outline box, in the solid's own coordinates and length unit.
ProError ProSolidOutlineGet(ProSolid solid, Pro3dPnt r_outline_points[2]);

ProError ProAsmcomppathInit(ProSolid p_solid_handle, ProIdTable memb_id_tab, int table_size, ProAsmcomppath* p_handle);
// bottom_up true: from the component's coordinates to those of the path's owner (row vectors).
ProError ProAsmcomppathTrfGet(ProAsmcomppath* p_path, ProBoolean bottom_up, ProMatrix transformation);
ProError ProAsmcompMdlGet(ProAsmcomp* p_feat_handle, ProMdl* p_mdl_handle);

typedef enum { PRO_UNITSYSTEM_MLT = 0, PRO_UNITSYSTEM_FLT = 1 } ProUnitsystemType;
typedef enum { PRO_UNITTYPE_LENGTH = 0, PRO_UNITTYPE_FORCE = 1, PRO_UNITTYPE_TIME = 2 } ProUnitType;

typedef struct pro_unit_system {
  ProName name;
  ProMdl owner;
} ProUnitsystem;

typedef struct pro_unit_item {
  ProUnitType type;
  ProName name;
  ProMdl owner;
} ProUnititem;

typedef struct pro_unit_convert {
  double scale;
  double offset;
} ProUnitConversion;

ProError ProMdlPrincipalunitsystemGet(ProMdl mdl, ProUnitsystem* p_system);
ProError ProUnitsystemTypeGet(ProUnitsystem* p_system, ProUnitsystemType* p_type);
ProError ProUnitsystemUnitGet(ProUnitsystem* p_system, ProUnitType type, ProUnititem* p_unit);
ProError ProUnitConversionGet(ProUnititem* p_unit, ProUnitConversion* p_conversion, ProUnititem* p_ref_unit);

#ifdef __cplusplus
}
#endif

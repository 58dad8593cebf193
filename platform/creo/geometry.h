// Surfaces, quilts and their tessellation.
#pragma once

#include "platform/creo/model.h"
#include "platform/creo/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef ProError (*ProSurfaceVisitAction)(ProSurface p_surface, ProError status, ProAppData app_data);
typedef ProError (*ProSurfaceFilterAction)(ProSurface p_surface, ProAppData app_data);
typedef ProError (*ProQuiltVisitAction)(ProQuilt p_quilt, ProError status, ProAppData app_data);
typedef ProError (*ProQuiltFilterAction)(ProQuilt p_quilt, ProAppData app_data);

ProError ProSolidSurfaceVisit(ProSolid p_handle, ProSurfaceVisitAction visit_action,
                              ProSurfaceFilterAction filter_action, ProAppData app_data);
ProError ProSolidQuiltVisit(ProSolid p_handle, ProQuiltVisitAction visit_action, ProQuiltFilterAction filter_action,
                            ProAppData app_data);
ProError ProQuiltSurfaceVisit(ProQuilt p_handle, ProSurfaceVisitAction visit_action,
                              ProSurfaceFilterAction filter_action, ProAppData app_data);

ProError ProSurfaceIdGet(ProSurface p_surface, int* p_id);
ProError ProQuiltIdGet(ProQuilt p_quilt, int* p_id);
ProError ProSurfaceToGeomitem(ProSolid p_owner_handle, ProSurface p_surface, ProGeomitem* p_handle);
ProError ProQuiltToGeomitem(ProSolid p_owner_handle, ProQuilt p_quilt, ProGeomitem* p_handle);
ProError ProGeomitemFeatureGet(ProGeomitem* p_geom_item, ProFeature* p_feat_handle);
ProError ProGeomitemIsInactive(ProGeomitem* p_geom_item, ProBoolean* p_inactive);
ProError ProQuiltIsBackupgeometry(ProSolid p_solid, ProQuilt p_quilt, ProBoolean* p_is_backup);

typedef struct pro_surf_tess_input* ProSurfaceTessellationInput;
typedef struct pro_tessellation* ProTessellation;

typedef enum {
  PRO_SRFTESS_DEFAULT_PROJECTION = 0,
  PRO_SRFTESS_PLANAR_PROJECTION = 1,
  PRO_SRFTESS_CYLINDRICAL_PROJECTION = 2,
  PRO_SRFTESS_SPHERICAL_PROJECTION = 3
} ProSurfaceTessellationProjection;

ProError ProSurfacetessellationinputAlloc(ProSurfaceTessellationInput* p_input);
ProError ProSurfacetessellationinputFree(ProSurfaceTessellationInput* p_input);
ProError ProSurfacetessellationinputChordheightSet(ProSurfaceTessellationInput input, double chord_height);
ProError ProSurfacetessellationinputUvprojectionSet(ProSurfaceTessellationInput input,
                                                    ProSurfaceTessellationProjection projection, void* projection_data);

// The tessellation is allocated for the caller, and so is each array that is read from it.
ProError ProSurfaceTessellationGet(ProMdl owner, ProSurface p_surface, ProSurfaceTessellationInput input,
                                   ProTessellation* p_output);
ProError ProTessellationVerticesGet(ProTessellation tessellation, ProVector** p_vertices);
ProError ProTessellationNormalsGet(ProTessellation tessellation, ProVector** p_normals);
ProError ProTessellationParamsGet(ProTessellation tessellation, ProUvParam** p_params);
ProError ProTessellationFacetsGet(ProTessellation tessellation, ProTriangle** p_facets);
ProError ProTessellationFree(ProTessellation* p_tessellation);

#ifdef __cplusplus
}
#endif

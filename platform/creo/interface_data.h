// A part's exact geometry as data: surfaces, edges with their curves in the surfaces' parameter planes, contours.
#pragma once

#include "platform/creo/geometry.h"
#include "platform/creo/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct contour* ProContour;
typedef struct curve_header* ProEdge;

typedef enum {
  PRO_CONTOUR_TRAV_INTERNAL = -1,
  PRO_CONTOUR_TRAV_NONE = 0,
  PRO_CONTOUR_TRAV_EXTERNAL = 1
} ProContourTraversal;

typedef ProError (*ProContourVisitAction)(ProContour p_contour, ProError status, ProAppData app_data);
typedef ProError (*ProContourFilterAction)(ProContour p_contour, ProAppData app_data);
typedef ProError (*ProEdgeVisitAction)(ProEdge p_edge, ProError status, ProAppData app_data);
typedef ProError (*ProEdgeFilterAction)(ProEdge p_edge, ProAppData app_data);

ProError ProSurfaceContourVisit(ProSurface p_surface, ProContourVisitAction visit_action,
                                ProContourFilterAction filter_action, ProAppData app_data);
ProError ProContourTraversalGet(ProContour p_contour, ProContourTraversal* p_traversal);
ProError ProContourEdgeVisit(ProSurface p_surface, ProContour p_contour, ProEdgeVisitAction visit_action,
                             ProEdgeFilterAction filter_action, ProAppData app_data);
ProError ProEdgeIdGet(ProEdge p_edge, int* p_id);

typedef enum {
  PRO_ENT_LINE = 2,
  PRO_ENT_ARC = 3,
  PRO_ENT_SPLINE = 10,
  PRO_ENT_ELLIPSE = 17,
  PRO_ENT_B_SPLINE = 19
} ProEnttype;

typedef enum {
  PRO_SRF_NONE = -1,
  PRO_SRF_PLANE = 34,
  PRO_SRF_CYL = 36,
  PRO_SRF_CONE = 37,
  PRO_SRF_TORUS = 38,
  PRO_SRF_B_SPL = 44
} ProSrftype;

typedef enum { PRO_SURF_ORIENT_IN = -1, PRO_SURF_ORIENT_NONE = 0, PRO_SURF_ORIENT_OUT = 1 } ProSurfaceOrient;

typedef struct ptc_curve ProCurvedata;
typedef struct ptc_edge ProEdgedata;
typedef struct ptc_contour ProContourdata;
typedef struct ptc_surf ProSurfacedata;
typedef struct ptc_quilt ProQuiltdata;
typedef struct pro_intf_data ProIntfData;

// The shape of one surface; the arrays belong to the record that it was read from.
typedef struct ptc_b_spline_srf {
  int deg[2];
  double* u_par_arr;
  double* v_par_arr;
  double* wghts;
  ProVector* cpnt_arr;
  int num_par_u;
  int num_par_v;
  int num_cpnts;
} ProBsplinesrfdata;
typedef union ptc_surfshape {
  ProBsplinesrfdata b_spline_srf;
} ProSurfaceshapedata;

typedef struct geom_item_data_struct {
  ProType obj_type;
  union {
    ProCurvedata* p_curve_data;
    ProSurfacedata* p_surface_data;
  } data;
} ProGeomitemdata;

// How a part is turned into interface data.
typedef struct pro_representation_opts {
  unsigned int options;
  int curve_rep;
  int surface_rep;
} ProRepresentationOpts;

// The record is allocated for the caller; everything that is read from it belongs to it.
ProError ProIntfDataAlloc(ProIntfData** p_intf_data);
ProError ProIntfDataFree(ProIntfData** p_intf_data);
ProError ProPartToProIntfData(ProPart p_part, ProRepresentationOpts* p_rep_opts, ProIntfData* p_intf_data);
ProError ProIntfDataSurfaceCount(ProIntfData* p_intf_data, int* p_count);
ProError ProIntfDataSurfaceGet(ProIntfData* p_intf_data, int index, ProSurfacedata** p_surface);
ProError ProIntfDataEdgeCount(ProIntfData* p_intf_data, int* p_count);
ProError ProIntfDataEdgeGet(ProIntfData* p_intf_data, int index, ProEdgedata** p_edge);
ProError ProIntfDataQuiltCount(ProIntfData* p_intf_data, int* p_count);
ProError ProIntfDataQuiltGet(ProIntfData* p_intf_data, int index, ProQuiltdata** p_quilt);
ProError ProIntfDataDatumCount(ProIntfData* p_intf_data, int* p_count);

// Arrays of the toolkit's own, which belong to the record: their sizes come from ProArraySizeGet.
ProError ProQuiltdataSurfaceArrayGet(ProQuiltdata* p_quilt, ProSurfacedata*** p_surfaces);
ProError ProSurfacedataContourArrayGet(ProSurfacedata* p_surface, ProContourdata*** p_contours);
ProError ProContourdataEdgeIdArrayGet(ProContourdata* p_contour, int** p_edge_ids);

ProError ProSurfacedataGet(ProSurfacedata* p_surface, ProSrftype* p_type, ProUvParam uv_min, ProUvParam uv_max,
                           ProSurfaceOrient* p_orient, ProSurfaceshapedata* p_shape, int* p_id);
ProError ProBsplinesrfdataGet(ProSurfaceshapedata* p_shape, int degree[2], double** p_u_knots, double** p_v_knots,
                              double** p_weights, ProVector** p_c_points, int* p_num_u_knots, int* p_num_v_knots,
                              int* p_num_c_points);
// Of both sides: the surface's id, the direction in which its contour runs along the edge, the curve in its plane.
ProError ProEdgedataGet(ProEdgedata* p_edge, int* p_id, int surf_ids[2], int directions[2], ProUvParam* uv_points[2],
                        ProCurvedata* uv_curves[2], ProCurvedata** p_xyz_curve);
ProError ProCurvedataTypeGet(ProCurvedata* p_curve, ProEnttype* p_type);
ProError ProBsplinedataGet(ProCurvedata* p_curve, int* p_degree, double** p_knots, double** p_weights,
                           ProVector** p_c_points, int* p_num_knots, int* p_num_c_points);

// A surface's own data, allocated for the caller.
ProError ProSurfaceDataGet(ProSurface p_surface, ProGeomitemdata** p_data);
ProError ProGeomitemdataFree(ProGeomitemdata** p_data);

#ifdef __cplusplus
}
#endif

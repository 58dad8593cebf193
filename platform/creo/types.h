// Base types of the Creo toolkit: sizes, status values, handles and the records that operations exchange.
// Names, values and layouts are the toolkit's own, so that a caller compiles unchanged against either.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

#define PRO_NAME_SIZE 32
#define PRO_LINE_SIZE 81
#define PRO_PATH_SIZE 260
#define PRO_FILE_NAME_SIZE 40
#define PRO_TYPE_SIZE 4
#define PRO_VERSION_SIZE 4
#define PRO_MAX_ASSEM_LEVEL 25
#define PRO_VALUE_UNUSED (-1)

typedef wchar_t ProName[PRO_NAME_SIZE];
typedef wchar_t ProLine[PRO_LINE_SIZE];
typedef wchar_t ProPath[PRO_PATH_SIZE];
typedef wchar_t ProFileName[PRO_FILE_NAME_SIZE];
typedef char ProCharLine[PRO_LINE_SIZE];
typedef char ProMenuItemLabel[PRO_NAME_SIZE];
typedef char ProMenuItemHelp[PRO_LINE_SIZE];

typedef enum ProErrors {
  PRO_TK_NO_ERROR = 0,
  PRO_TK_GENERAL_ERROR = -1,
  PRO_TK_BAD_INPUTS = -2,
  PRO_TK_USER_ABORT = -3,
  PRO_TK_E_NOT_FOUND = -4,
  PRO_TK_E_FOUND = -5,
  PRO_TK_LINE_TOO_LONG = -6,
  PRO_TK_CONTINUE = -7,
  PRO_TK_BAD_CONTEXT = -8,
  PRO_TK_NOT_IMPLEMENTED = -9,
  PRO_TK_OUT_OF_MEMORY = -10
} ProError;

typedef enum ProBooleans { PRO_B_FALSE = 0, PRO_B_TRUE = 1 } ProBoolean;

typedef enum {
  PRO_TYPE_UNUSED = PRO_VALUE_UNUSED,
  PRO_ASSEMBLY = 1,
  PRO_PART = 2,
  PRO_FEATURE = 3,
  PRO_DRAWING = 4,
  PRO_SURFACE = 5,
  PRO_EDGE = 6,
  PRO_LAYER = 44,
  PRO_QUILT = 57,
  PRO_SIMP_REP = 68
} ProType;

typedef enum {
  PRO_MDL_UNUSED = PRO_TYPE_UNUSED,
  PRO_MDL_ASSEMBLY = PRO_ASSEMBLY,
  PRO_MDL_PART = PRO_PART,
  PRO_MDL_DRAWING = PRO_DRAWING
} ProMdlType;

// The window's mode. A value outside this list is possible; only these have a meaning here.
typedef enum {
  PRO_MODE_UNUSED = PRO_VALUE_UNUSED,
  PRO_MODE_SECTION = 1,
  PRO_MODE_PART = 2,
  PRO_MODE_DRAWING = 3,
  PRO_MODE_ASSEMBLY = 5
} ProMode;

typedef void* ProMdl;
typedef struct sld_part* ProSolid;
typedef struct sld_part* ProPart;
typedef struct sld_part* ProAssembly;
typedef struct geom* ProSurface;
typedef struct qlt* ProQuilt;
typedef struct pro_view* ProView;
typedef void* ProAppData;
typedef void* ProArray;

typedef double Pro3dPnt[3];
typedef double ProVector[3];
typedef double ProUvParam[2];
typedef double ProMatrix[4][4];
typedef int ProTriangle[3];

typedef int ProIdTable[PRO_MAX_ASSEM_LEVEL];

typedef struct pro_model_item {
  ProType type;
  int id;
  ProMdl owner;
} ProModelitem, ProGeomitem, ProFeature, ProAsmcomp, ProLayer, ProSimprep;

// A component of an assembly: the top model and the component feature ids that lead to it.
typedef struct pro_comp_path {
  ProSolid owner;
  ProIdTable comp_id_tab;
  int table_num;
} ProAsmcomppath;

// An array of the toolkit's own; the caller frees it.
ProError ProArraySizeGet(ProArray array, int* p_size);
ProError ProArrayFree(ProArray* p_array);

#ifdef __cplusplus
}
#endif

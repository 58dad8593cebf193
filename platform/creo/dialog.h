// Dialogs that are built in code: components in the cells of a grid, told apart by their names.
#pragma once

#include "platform/creo/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct pro_ui_grid_opts {
  int column;
  int row;
  int horz_cells;
  int vert_cells;
  ProBoolean attach_bottom;
  ProBoolean attach_left;
  ProBoolean attach_right;
  ProBoolean attach_top;
} ProUIGridopts;

typedef void (*ProUIAction)(char* dialog, char* component, ProAppData app_data);

typedef enum { PROUIORIENTATION_HORIZONTAL = 0, PROUIORIENTATION_VERTICAL = 1 } ProUIOrientation;

typedef enum {
  PROUIINPUTTYPE_STRING = 0,
  PROUIINPUTTYPE_WSTRING = 1,
  PROUIINPUTTYPE_INTEGER = 2,
  PROUIINPUTTYPE_DOUBLE = 3
} ProUIInputtype;

ProError ProUIDialogCreate(char* dialog_name, char* resource_name);
// Runs the dialog until it is exited, and gives the status that it was exited with.
ProError ProUIDialogActivate(char* dialog_name, int* p_return_value);
ProError ProUIDialogExit(char* dialog_name, int return_value);
ProError ProUIDialogDestroy(char* dialog_name);
ProError ProUIDialogDisableResizing(char* dialog_name);

ProError ProUIDialogCheckbuttonAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options);
ProError ProUIDialogInputpanelAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options);
ProError ProUIDialogLabelAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options);
ProError ProUIDialogLayoutAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options);
ProError ProUIDialogPushbuttonAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options);
ProError ProUIDialogRadiogroupAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options);
ProError ProUIDialogSeparatorAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options);
ProError ProUIDialogSliderAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options);
ProError ProUIDialogSpinboxAdd(char* dialog_name, char* component_name, ProUIGridopts* p_grid_options);

// A layout is a component with a grid of its own.
ProError ProUILayoutInputpanelAdd(char* dialog_name, char* layout_name, char* component_name,
                                  ProUIGridopts* p_grid_options);
ProError ProUILayoutLabelAdd(char* dialog_name, char* layout_name, char* component_name, ProUIGridopts* p_grid_options);
ProError ProUILayoutPushbuttonAdd(char* dialog_name, char* layout_name, char* component_name,
                                  ProUIGridopts* p_grid_options);
ProError ProUILayoutUnattachLeft(char* dialog_name, char* component_name);
ProError ProUILayoutUnattachRight(char* dialog_name, char* component_name);

ProError ProUILabelTextSet(char* dialog_name, char* component_name, wchar_t* text);
ProError ProUILabelUnattachLeft(char* dialog_name, char* component_name);

ProError ProUIPushbuttonTextSet(char* dialog_name, char* component_name, wchar_t* text);
ProError ProUIPushbuttonHelptextSet(char* dialog_name, char* component_name, wchar_t* text);
ProError ProUIPushbuttonEnable(char* dialog_name, char* component_name);
ProError ProUIPushbuttonActivateActionSet(char* dialog_name, char* component_name, ProUIAction action,
                                          ProAppData app_data);

ProError ProUISpinboxInputtypeSet(char* dialog_name, char* component_name, ProUIInputtype type);
ProError ProUISpinboxDigitsSet(char* dialog_name, char* component_name, int digits);
ProError ProUISpinboxMindoubleSet(char* dialog_name, char* component_name, double value);
ProError ProUISpinboxMaxdoubleSet(char* dialog_name, char* component_name, double value);
ProError ProUISpinboxDoubleincrementSet(char* dialog_name, char* component_name, double value);
ProError ProUISpinboxFastdoubleincrementSet(char* dialog_name, char* component_name, double value);
ProError ProUISpinboxDoubleSet(char* dialog_name, char* component_name, double value);
ProError ProUISpinboxDoubleGet(char* dialog_name, char* component_name, double* p_value);
ProError ProUISpinboxHelptextSet(char* dialog_name, char* component_name, wchar_t* text);
ProError ProUISpinboxUpdateActionSet(char* dialog_name, char* component_name, ProUIAction action, ProAppData app_data);

ProError ProUISliderOrientationSet(char* dialog_name, char* component_name, ProUIOrientation orientation);
ProError ProUISliderEnableTracking(char* dialog_name, char* component_name);
ProError ProUISliderLengthSet(char* dialog_name, char* component_name, int value);
ProError ProUISliderMinintegerSet(char* dialog_name, char* component_name, int value);
ProError ProUISliderMaxintegerSet(char* dialog_name, char* component_name, int value);
ProError ProUISliderIntegerSet(char* dialog_name, char* component_name, int value);
ProError ProUISliderIntegerGet(char* dialog_name, char* component_name, int* p_value);
ProError ProUISliderHelptextSet(char* dialog_name, char* component_name, wchar_t* text);
ProError ProUISliderUpdateActionSet(char* dialog_name, char* component_name, ProUIAction action, ProAppData app_data);

ProError ProUICheckbuttonTextSet(char* dialog_name, char* component_name, wchar_t* text);
ProError ProUICheckbuttonHelptextSet(char* dialog_name, char* component_name, wchar_t* text);
ProError ProUICheckbuttonSet(char* dialog_name, char* component_name);
ProError ProUICheckbuttonGetState(char* dialog_name, char* component_name, ProBoolean* p_state);

// The button of the n-th name has the n-th label.
ProError ProUIRadiogroupNamesSet(char* dialog_name, char* component_name, int count, char** names);
ProError ProUIRadiogroupLabelsSet(char* dialog_name, char* component_name, int count, wchar_t** labels);
ProError ProUIRadiogroupOrientationSet(char* dialog_name, char* component_name, ProUIOrientation orientation);
ProError ProUIRadiogroupHelptextSet(char* dialog_name, char* component_name, wchar_t* text);
ProError ProUIRadiogroupSelectednamesSet(char* dialog_name, char* component_name, int count, char** names);
// The array is the caller's to free by ProStringarrayFree.
ProError ProUIRadiogroupSelectednamesGet(char* dialog_name, char* component_name, int* p_count, char*** p_names);

ProError ProUIInputpanelValueSet(char* dialog_name, char* component_name, wchar_t* value);
// The text is the caller's to free by ProWstringFree.
ProError ProUIInputpanelWidestringGet(char* dialog_name, char* component_name, wchar_t** p_value);

ProError ProStringarrayFree(char** strings, int count);
ProError ProWstringFree(wchar_t* text);

#ifdef __cplusplus
}
#endif

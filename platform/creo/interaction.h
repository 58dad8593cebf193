// What meets the user: commands, selection, file choice, messages, dialogs.
#pragma once

#include "platform/creo/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef int uiCmdCmdId;
typedef struct uiCmdValueStruct uiCmdValue;
typedef int uiCmdPriority;
typedef enum { ACCESS_REMOVE = 0, ACCESS_INVISIBLE = 1, ACCESS_UNAVAILABLE = 2, ACCESS_AVAILABLE = 3 } uiCmdAccessState;
typedef int uiCmdAccessMode;
typedef int (*uiCmdCmdActFn)(uiCmdCmdId command, uiCmdValue* p_value, void* p_push_command_data);
typedef uiCmdAccessState (*uiCmdAccessFn)(uiCmdAccessMode access_mode);

ProError ProCmdActionAdd(char* action_name, uiCmdCmdActFn action_cb, uiCmdPriority priority, uiCmdAccessFn access_func,
                         ProBoolean allow_in_non_active_window, ProBoolean allow_in_accessory_window,
                         uiCmdCmdId* action_id);
ProError ProCmdIconSet(uiCmdCmdId cmd_id, char* icon_filename);
ProError ProCmdDesignate(uiCmdCmdId cmd_id, char* button_label, char* one_line_help, char* description,
                         ProFileName menu_file);
ProError ProConfigoptGet(ProName option_name, ProPath option_value);

typedef struct sel_3d_struct* ProSelection;
typedef struct sel_functions ProSelFunctions;
typedef struct sel_env* ProSelectionEnv;
typedef struct sel_app_action ProSelAppAction;

// The array of picks is the session's own and holds until the next selection.
ProError ProSelect(char option[], int max_count, ProSelection* p_in_sel, ProSelFunctions* sel_func,
                   ProSelectionEnv sel_env, ProSelAppAction* appl_act_data, ProSelection** p_sel_array, int* p_n_sels);
ProError ProSelectionAsmcomppathGet(ProSelection selection, ProAsmcomppath* p_cmp_path);

ProError ProFileSave(wchar_t* dialog_label, wchar_t* filter_string, ProPath* shortcut_path_arr,
                     ProName* shortcut_name_arr, ProPath default_path, ProFileName pre_sel_file_name,
                     ProPath r_selected_file);

// The text of a key of a message file, formatted into the buffer (PRO_LINE_SIZE wide characters).
ProError ProMessageToBuffer(wchar_t* buffer, ProFileName filename, char* message_name, ...);

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

ProError ProUIDialogCreate(char* dialog_name, char* resource_name);
// Runs the dialog until it is exited, and gives the status that it was exited with.
ProError ProUIDialogActivate(char* dialog_name, int* p_return_value);
ProError ProUIDialogExit(char* dialog_name, int return_value);
ProError ProUIDialogDestroy(char* dialog_name);
ProError ProUIDialogLabelAdd(char* dialog_name, char* label_name, ProUIGridopts* p_grid_options);
ProError ProUIDialogPushbuttonAdd(char* dialog_name, char* button_name, ProUIGridopts* p_grid_options);
ProError ProUILabelTextSet(char* dialog_name, char* label_name, wchar_t* text);
ProError ProUIPushbuttonTextSet(char* dialog_name, char* button_name, wchar_t* text);
ProError ProUIPushbuttonActivateActionSet(char* dialog_name, char* button_name, ProUIAction action,
                                          ProAppData app_data);

#ifdef __cplusplus
}
#endif

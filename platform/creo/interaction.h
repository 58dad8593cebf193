// What meets the user: commands, selection, file choice, messages. Dialogs have a header of their own.
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

// Both give PRO_TK_USER_ABORT when the user cancels.
ProError ProFileOpen(wchar_t* dialog_label, wchar_t* filter_string, ProPath* shortcut_path_arr,
                     ProName* shortcut_name_arr, ProPath default_path, ProFileName pre_sel_file_name,
                     ProPath r_selected_file);
ProError ProFileSave(wchar_t* dialog_label, wchar_t* filter_string, ProPath* shortcut_path_arr,
                     ProName* shortcut_name_arr, ProPath default_path, ProFileName pre_sel_file_name,
                     ProPath r_selected_file);

// The text of a key of a message file, formatted into the buffer (PRO_LINE_SIZE wide characters).
ProError ProMessageToBuffer(wchar_t* buffer, ProFileName filename, char* message_name, ...);

#ifdef __cplusplus
}
#endif

// Ribbon commands and configuration options.
#include <algorithm>

#include "standin/cad/operation.h"

using standin::Command;
using standin::Operation;

namespace {

// The command of an identifier; null, with the misuse noted, when it was never given out.
Command* findCommand(Operation& operation, uiCmdCmdId id) {
  std::deque<Command>& commands = operation.session().commands();
  if (id < 1 || static_cast<std::size_t>(id) > commands.size()) {
    operation.misuse("there is no command " + std::to_string(id));
    return nullptr;
  }
  return &commands[static_cast<std::size_t>(id) - 1];
}

}  // namespace

extern "C" {

// Identifiers count from 1 in the order of registration.
ProError ProCmdActionAdd(char* action_name, uiCmdCmdActFn action_cb, uiCmdPriority priority, uiCmdAccessFn access_func,
                         ProBoolean allow_in_non_active_window, ProBoolean allow_in_accessory_window,
                         uiCmdCmdId* action_id) {
  Operation operation("ProCmdActionAdd");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (action_name == nullptr || *action_name == '\0' || action_cb == nullptr || action_id == nullptr) {
    return PRO_TK_BAD_INPUTS;
  }
  if (const Command* known = operation.session().findCommand(action_name)) {
    *action_id = known->id;
    operation.misuse("the command \"" + known->name + "\" was there already");
    return PRO_TK_E_FOUND;
  }
  Command& command = operation.session().commands().emplace_back();
  command.id = static_cast<uiCmdCmdId>(operation.session().commands().size());
  command.name = action_name;
  command.action = action_cb;
  command.access = access_func;
  command.priority = priority;
  command.inNonActiveWindow = allow_in_non_active_window != PRO_B_FALSE;
  command.inAccessoryWindow = allow_in_accessory_window != PRO_B_FALSE;
  *action_id = command.id;
  return PRO_TK_NO_ERROR;
}

ProError ProCmdIconSet(uiCmdCmdId cmd_id, char* icon_filename) {
  Operation operation("ProCmdIconSet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  Command* command = findCommand(operation, cmd_id);
  if (command == nullptr || icon_filename == nullptr) return PRO_TK_BAD_INPUTS;
  command->icons.emplace_back(icon_filename);
  return PRO_TK_NO_ERROR;
}

// The keys are kept in any case; the result tells whether the message file has the label and the help.
ProError ProCmdDesignate(uiCmdCmdId cmd_id, char* button_label, char* one_line_help, char* description,
                         ProFileName menu_file) {
  Operation operation("ProCmdDesignate");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  Command* command = findCommand(operation, cmd_id);
  if (command == nullptr || button_label == nullptr || one_line_help == nullptr || menu_file == nullptr) {
    return PRO_TK_BAD_INPUTS;
  }
  command->labelKey = button_label;
  command->helpKey = one_line_help;
  command->descriptionKey = description != nullptr ? description : "";
  command->messageFile = menu_file;
  standin::Session& session = operation.session();
  const bool known = session.message(command->messageFile, command->labelKey).has_value() &&
                     session.message(command->messageFile, command->helpKey).has_value();
  return known ? PRO_TK_NO_ERROR : PRO_TK_E_NOT_FOUND;
}

ProError ProConfigoptGet(ProName option_name, ProPath option_value) {
  Operation operation("ProConfigoptGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (option_name == nullptr || option_value == nullptr) return PRO_TK_BAD_INPUTS;
  const auto found = operation.session().configOptions.find(option_name);
  if (found == operation.session().configOptions.end()) return PRO_TK_E_NOT_FOUND;
  standin::copyText(found->second, option_value, PRO_PATH_SIZE);
  return PRO_TK_NO_ERROR;
}
}

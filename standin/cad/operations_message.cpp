// Texts of message files.
#include <cstdarg>

#include "standin/cad/operation.h"

using standin::Operation;

extern "C" ProError ProMessageToBuffer(wchar_t* buffer, ProFileName filename, char* message_name, ...) {
  Operation operation("ProMessageToBuffer");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (buffer == nullptr || filename == nullptr || message_name == nullptr) return PRO_TK_BAD_INPUTS;
  const std::optional<std::wstring> text = operation.session().message(filename, message_name);
  if (!text) return PRO_TK_E_NOT_FOUND;
  std::va_list arguments;
  va_start(arguments, message_name);
  standin::copyText(standin::formatMessage(*text, arguments), buffer, PRO_LINE_SIZE);
  va_end(arguments);
  return PRO_TK_NO_ERROR;
}

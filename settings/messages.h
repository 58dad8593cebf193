// The texts that the user sees, by their keys in the message file.
#pragma once

#include "platform/creo_toolkit.h"

namespace rendara {

inline constexpr wchar_t kMessageFile[] = L"rendara_msg.txt";

// One text, looked up when it is made and meant to be used at once. A key that is missing leaves what the host put
// there.
class MessageText {
 public:
  explicit MessageText(const char* key);
  wchar_t* text() { return text_; }

 private:
  ProLine text_{};
};

}  // namespace rendara

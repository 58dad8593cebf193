#include "settings/messages.h"

#include "platform/creo_handles.h"

namespace rendara {

MessageText::MessageText(const char* key) { ProMessageToBuffer(text_, toolkitText(kMessageFile), toolkitText(key)); }

}  // namespace rendara

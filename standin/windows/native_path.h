// Paths as the plug-in has them.
#pragma once

#include <algorithm>
#include <string>

#include "standin/windows/code_page.h"

namespace standin {

// UTF-8 with a slash for each backslash.
inline std::string nativePath(const std::wstring& path) {
  std::string native = utf8FromWide(path);
  std::replace(native.begin(), native.end(), '\\', '/');
  return native;
}

}  // namespace standin

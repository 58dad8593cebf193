// A wide text that the host allocates.
#pragma once

#include <string>

#include "platform/creo_toolkit.h"

namespace rendara {

class CadText {
 public:
  CadText() = default;
  CadText(const CadText&) = delete;
  CadText& operator=(const CadText&) = delete;
  ~CadText() { reset(); }

  // For the output argument of the allocating operation; what was held before is freed.
  wchar_t** receive() {
    reset();
    return &text_;
  }
  // Empty when there is none.
  std::wstring text() const { return text_ != nullptr ? std::wstring(text_) : std::wstring(); }

 private:
  void reset() {
    if (text_ != nullptr) {
      ProWstringFree(text_);
      text_ = nullptr;
    }
  }

  wchar_t* text_ = nullptr;
};

}  // namespace rendara

// Owning handles over what the Creo toolkit allocates for its caller, and what callbacks handed to it need.
#pragma once

#include <cstddef>
#include <exception>
#include <span>
#include <utility>

#include "platform/creo_toolkit.h"

namespace rendara {

// The toolkit declares texts that it only reads as pointers to changeable characters.
inline char* toolkitText(const char* text) { return const_cast<char*>(text); }
inline wchar_t* toolkitText(const wchar_t* text) { return const_cast<wchar_t*>(text); }

// A handle that one operation allocates and another, which also clears it, frees.
template <typename Handle, ProError (*release)(Handle*)>
class CadHandle {
 public:
  CadHandle() = default;
  CadHandle(CadHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  CadHandle& operator=(CadHandle&& other) noexcept {
    if (this != &other) {
      reset();
      handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
  }
  ~CadHandle() { reset(); }

  // For the output argument of the allocating operation; what was held before is freed.
  Handle* receive() {
    reset();
    return &handle_;
  }
  Handle get() const { return handle_; }
  explicit operator bool() const { return handle_ != nullptr; }
  void reset() {
    if (handle_ != nullptr) {
      release(&handle_);
      handle_ = nullptr;
    }
  }

 private:
  Handle handle_ = nullptr;
};

using TessellationInput = CadHandle<ProSurfaceTessellationInput, ProSurfacetessellationinputFree>;
using Tessellation = CadHandle<ProTessellation, ProTessellationFree>;
using VersionStamp = CadHandle<WVerstamp, ProVerstampFree>;
using GeomitemData = CadHandle<ProGeomitemdata*, ProGeomitemdataFree>;
using InterfaceData = CadHandle<ProIntfData*, ProIntfDataFree>;
using RepresentationData = CadHandle<ProSimprepdata*, ProSimprepdataFree>;

// An array that the toolkit allocated. Absent until an operation fills it in; an absent array has no elements.
template <typename Element>
class CadArray {
 public:
  CadArray() = default;
  CadArray(const CadArray&) = delete;
  CadArray& operator=(const CadArray&) = delete;
  ~CadArray() { reset(); }

  Element** receive() {
    reset();
    return &elements_;
  }
  bool present() const { return elements_ != nullptr; }
  // The elements, counted anew by the toolkit at each call.
  std::span<Element> view() const {
    int size = 0;
    if (elements_ == nullptr || ProArraySizeGet(elements_, &size) != PRO_TK_NO_ERROR || size < 0) {
      size = 0;
    }
    return {elements_, static_cast<std::size_t>(size)};
  }
  void reset() {
    if (elements_ != nullptr) {
      ProArray array = elements_;
      ProArrayFree(&array);
      elements_ = nullptr;
    }
  }

 private:
  Element* elements_ = nullptr;
};

// Keeps C++ exceptions out of the toolkit's frames: an action that throws stops the visit, and the exception goes on
// from where the visit was started.
class VisitGuard {
 public:
  // Runs the body of an action; PRO_TK_GENERAL_ERROR when it throws.
  template <typename Body>
  ProError run(Body&& body) noexcept {
    try {
      return std::forward<Body>(body)();
    } catch (...) {
      thrown_ = std::current_exception();
      return PRO_TK_GENERAL_ERROR;
    }
  }
  void rethrow() {
    if (thrown_) {
      std::rethrow_exception(std::exchange(thrown_, nullptr));
    }
  }

 private:
  std::exception_ptr thrown_;
};

}  // namespace rendara

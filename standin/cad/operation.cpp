#include "standin/cad/operation.h"

#include "standin/cad/guarded_memory.h"

namespace standin {
namespace {

// True when the pointer is one of the records, which are then all known from now on.
template <typename Records>
bool adopt(Records& records, const void* handle, std::unordered_set<const void*>& known) {
  for (auto& record : records) {
    known.insert(&record);
  }
  return known.count(handle) != 0;
}

// Looks a handle up among the records of all models when no visit has shown it yet.
template <typename Record>
Record* checkedRecord(Operation& operation, const void* handle, std::unordered_set<const void*>& known,
                      std::deque<Record> Model::*records, const char* what) {
  if (handle == nullptr) {
    return nullptr;
  }
  auto* record = static_cast<Record*>(const_cast<void*>(handle));
  if (known.count(handle) != 0) {
    return record;
  }
  for (const auto& model : operation.session().models()) {
    if (adopt((*model).*records, handle, known)) {
      return record;
    }
  }
  operation.misuse(std::string("the handle of a ") + what + " is unknown");
  return nullptr;
}

}  // namespace

RunClock::Duration* Session::Impl::enter(RunClock::Duration* next) {
  RunClock::Duration* const before = stretch;
  if (before != next) {
    const auto now = std::chrono::steady_clock::now();
    if (before != nullptr) {
      *before += now - stretchBegan;
    }
    stretchBegan = now;
    stretch = next;
  }
  return before;
}

Operation::Operation(const char* name, bool tessellates) : session_(Session::active()), name_(name) {
  if (session_ != nullptr && impl().stretch != nullptr) {
    before_ = impl().enter(tessellates ? &session_->clock.tessellation : &session_->clock.session);
  }
}

Operation::~Operation() {
  if (before_ != nullptr) {
    impl().enter(before_);
  }
}

Operation::PluginTime::PluginTime(Session& session)
    : session_(session),
      before_(session.impl().stretch != nullptr ? session.impl().enter(&session.clock.plugin) : nullptr) {}

Operation::PluginTime::~PluginTime() {
  if (before_ != nullptr) {
    session_.impl().enter(before_);
  }
}

ProError Operation::misuse(const std::string& what) {
  session_->reportMisuse(name_, what);
  return PRO_TK_BAD_INPUTS;
}

Model* Operation::model(const void* handle) {
  if (handle == nullptr) {
    return nullptr;
  }
  if (impl().liveModels.count(handle) == 0) {
    misuse("the handle of a model is unknown");
    return nullptr;
  }
  return static_cast<Model*>(const_cast<void*>(handle));
}

Surface* Operation::surface(const void* handle) {
  return checkedRecord(*this, handle, impl().knownSurfaces, &Model::surfaces, "surface");
}

Quilt* Operation::quilt(const void* handle) {
  return checkedRecord(*this, handle, impl().knownQuilts, &Model::quilts, "quilt");
}

View* Operation::view(const void* handle) {
  return checkedRecord(*this, handle, impl().knownViews, &Model::views, "view");
}

Feature* Operation::feature(const ProModelitem* item) {
  Model* owner = item != nullptr ? model(item->owner) : nullptr;
  return owner != nullptr && item->type == PRO_FEATURE ? owner->feature(item->id) : nullptr;
}

bool copyText(const std::wstring& text, wchar_t* field, std::size_t size) {
  const std::size_t length = text.copy(field, size - 1);
  field[length] = L'\0';
  return length == text.size();
}

}  // namespace standin

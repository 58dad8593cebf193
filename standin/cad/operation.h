// What every operation of the toolkit begins with: the session it acts on, the clock, and the checks of what the
// plug-in handed over. Private to the session.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "standin/cad/allocations.h"
#include "standin/cad/message_file.h"
#include "standin/cad/session.h"

// A pick of the last selection.
struct sel_3d_struct {
  std::vector<int> path;
};

namespace standin {

// The layers that hold an item, by its type and id.
using LayerIndex = std::map<std::pair<int, int>, std::vector<Layer*>>;

struct Session::Impl {
  std::unordered_map<std::wstring, Model*> modelsByName;  // by type and folded name
  std::unordered_map<std::wstring, int> lastNumbers;      // the last number tried for a name that was taken
  std::unordered_set<const void*> liveModels;
  std::unordered_set<const void*> knownSurfaces, knownQuilts, knownViews;  // handles given out or found so far
  Allocations allocations;
  std::unordered_set<std::string> misuseSeen;
  std::map<std::string, std::unique_ptr<Dialog>> dialogs;
  std::deque<sel_3d_struct> picks;
  std::unordered_set<const void*> livePicks;
  std::unordered_set<const void*> liveContours, liveEdges;  // of the visits that run
  void* pickArray = nullptr;
  // The session's own: picks end with the next selection, and handles to them are then unknown.
  void forgetPicks() {
    if (pickArray != nullptr) {
      allocations.release(pickArray, AllocationKind::array);
      pickArray = nullptr;
    }
    livePicks.clear();
  }
  std::map<std::filesystem::path, MessageFile> messageFiles;

  // The clock: what the running stretch of time belongs to, null while no command runs.
  RunClock::Duration* stretch = nullptr;
  std::chrono::steady_clock::time_point stretchBegan;
  int commandsRunning = 0;

  // Answers that hold as long as no model changes, that is while a command runs; forgotten at its ends and whenever
  // the user's side has had a turn.
  BoxCache boxes;
  std::unordered_map<const Model*, LayerIndex> layerIndexes;
  void forgetAnswers() {
    boxes.clear();
    layerIndexes.clear();
  }

  // Attributes the time from now on; the result is what it belonged to so far.
  RunClock::Duration* enter(RunClock::Duration* next);
};

// The user's answer to a question: the next of the queue, else what the function says, else nothing.
template <typename Answer, typename Ask, typename... About>
Answer nextAnswer(std::deque<Answer>& answers, const Ask& ask, const About&... about) {
  Answer answer;
  if (!answers.empty()) {
    answer.swap(answers.front());
    answers.pop_front();
  } else if (ask) {
    answer = ask(about...);
  }
  return answer;
}

// One call of an operation. False when there is no session.
class Operation {
 public:
  // `name` must be a literal. With `tessellates` its time counts as tessellation.
  explicit Operation(const char* name, bool tessellates = false);
  ~Operation();
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  explicit operator bool() const { return session_ != nullptr; }
  Session& session() { return *session_; }
  Session::Impl& impl() { return session_->impl(); }
  Allocations& allocations() { return impl().allocations; }
  const char* name() const { return name_; }

  // Notes what the plug-in did wrong; the result is PRO_TK_BAD_INPUTS.
  ProError misuse(const std::string& what);

  // The records behind handles; null, with the misuse noted, for a pointer that is none. A null handle is not noted.
  Model* model(const void* handle);
  Surface* surface(const void* handle);
  Quilt* quilt(const void* handle);
  View* view(const void* handle);
  // The record that an item names in its owner; null when the owner has none.
  Feature* feature(const ProModelitem* item);

  // An array for the plug-in, ending at a guard page if the session wants that.
  template <typename Element>
  Element* newArray(std::size_t count, AllocationKind kind = AllocationKind::array) {
    // NOLINTNEXTLINE(bugprone-sizeof-expression): an element may be a handle
    return static_cast<Element*>(allocations().addArray(name_, sizeof(Element), count, session_->guardArrays, kind));
  }
  // The object behind a handle that an allocating operation gave out; null, with the misuse noted, when it is none.
  template <typename Object>
  Object* object(Object* handle, AllocationKind kind) {
    if (handle == nullptr || allocations().isLive(handle, kind)) {
      return handle;
    }
    misuse(allocations().describe(handle, kind));
    return nullptr;
  }
  // Frees what a handle names and clears it.
  template <typename Handle>
  ProError release(Handle* handle, AllocationKind kind) {
    if (handle == nullptr || *handle == nullptr) {
      return PRO_TK_BAD_INPUTS;
    }
    if (!allocations().release(*handle, kind)) {
      return misuse(allocations().describe(*handle, kind));
    }
    *handle = nullptr;
    return PRO_TK_NO_ERROR;
  }

  // Calls back into the plug-in, on the plug-in's time.
  template <typename Function, typename... Arguments>
  auto callBack(Function function, Arguments... arguments) {
    const PluginTime turn(*session_);
    return function(arguments...);
  }

 private:
  class PluginTime {
   public:
    explicit PluginTime(Session& session);
    ~PluginTime();
    PluginTime(const PluginTime&) = delete;
    PluginTime& operator=(const PluginTime&) = delete;

   private:
    Session& session_;
    RunClock::Duration* before_;
  };

  Session* session_;
  const char* name_;
  RunClock::Duration* before_ = nullptr;
};

// The visits of the toolkit: an item for which the filter (if any) answers PRO_TK_CONTINUE is passed over, for every
// other the action is called with the filter's answer. An answer of the action other than 0 stops the visit and is
// its result; PRO_TK_E_NOT_FOUND when no item was visited.
template <typename Handle, typename Filter, typename Action>
ProError visit(Operation& operation, const std::vector<Handle>& items, Filter filter, Action action, ProAppData data) {
  bool visited = false;
  for (const Handle& item : items) {
    ProError status = PRO_TK_NO_ERROR;
    if (filter != nullptr) {
      status = operation.callBack(filter, item, data);
      if (status == PRO_TK_CONTINUE) {
        continue;
      }
    }
    visited = true;
    const ProError answer = operation.callBack(action, item, status, data);
    if (answer != PRO_TK_NO_ERROR) {
      return answer;
    }
  }
  return visited ? PRO_TK_NO_ERROR : PRO_TK_E_NOT_FOUND;
}

// Copies a text into a field of fixed size, cut and always terminated. True when it was not cut.
template <std::size_t size>
bool copyText(const std::wstring& text, wchar_t (&field)[size]) {
  const std::size_t length = text.copy(field, size - 1);
  field[length] = L'\0';
  return length == text.size();
}
// The same into a field that came as an argument.
bool copyText(const std::wstring& text, wchar_t* field, std::size_t size);

// The handle of a model as the toolkit's solid, and an item of it.
inline ProSolid solidOf(const Model* model) { return reinterpret_cast<ProSolid>(const_cast<Model*>(model)); }
inline ProModelitem itemOf(ProType type, int id, const Model* owner) { return {type, id, const_cast<Model*>(owner)}; }

}  // namespace standin

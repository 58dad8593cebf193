// What the user is asked for outside dialogs: selections and files. The answers come from the session's queues, with
// none left from its functions; without one the user has cancelled.
#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>
#include <string_view>

#include "standin/cad/operation.h"
#include "standin/windows/code_page.h"

using standin::Operation;
using standin::Session;

namespace {

constexpr std::string_view kSelectable[] = {"prt_or_asm", "part",    "feature", "surface",  "edge",
                                            "sldface",    "qltface", "dtmqlt",  "membfeat", "component"};

// True when the option is a list, separated by commas, of kinds that can be selected.
bool isSelectionOption(const std::string& option) {
  std::size_t begin = 0;
  while (begin <= option.size()) {
    const std::size_t end = std::min(option.find(',', begin), option.size());
    const std::string_view word = std::string_view(option).substr(begin, end - begin);
    if (std::find(std::begin(kSelectable), std::end(kSelectable), word) == std::end(kSelectable)) {
      return false;
    }
    begin = end + 1;
  }
  return true;
}

std::wstring textOrNone(const wchar_t* text) { return text != nullptr ? std::wstring(text) : std::wstring(); }

// A file dialog: the request is kept, the next answer taken.
ProError chooseFile(const standin::FileRequest& request, std::vector<standin::FileRequest>& requests,
                    std::deque<standin::FileAnswer>& answers,
                    const std::function<standin::FileAnswer(const standin::FileRequest&)>& ask, wchar_t* selected) {
  if (selected == nullptr) return PRO_TK_BAD_INPUTS;
  requests.push_back(request);
  const standin::FileAnswer answer = standin::nextAnswer(answers, ask, request);
  if (!answer) return PRO_TK_USER_ABORT;
  const std::wstring path = standin::wideFromUtf8(answer->string());
  if (path.size() >= PRO_PATH_SIZE) return PRO_TK_LINE_TOO_LONG;
  standin::copyText(path, selected, PRO_PATH_SIZE);
  return PRO_TK_NO_ERROR;
}

}  // namespace

extern "C" {

ProError ProSelect(char option[], int max_count, ProSelection* /*p_in_sel*/, ProSelFunctions* /*sel_func*/,
                   ProSelectionEnv /*sel_env*/, ProSelAppAction* /*appl_act_data*/, ProSelection** p_sel_array,
                   int* p_n_sels) {
  Operation operation("ProSelect");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (option == nullptr || p_sel_array == nullptr || p_n_sels == nullptr || !isSelectionOption(option)) {
    return PRO_TK_BAD_INPUTS;
  }
  Session& session = operation.session();
  if (session.current == nullptr) return PRO_TK_BAD_CONTEXT;
  ++session.selectionsAsked;
  operation.impl().forgetPicks();
  const standin::SelectionAnswer answer = standin::nextAnswer(session.selectionAnswers, session.onSelection);
  if (!answer) return PRO_TK_USER_ABORT;

  const std::size_t count =
      max_count < 0 ? answer->size() : std::min(answer->size(), static_cast<std::size_t>(max_count));
  auto* array = operation.newArray<ProSelection>(count);
  Session::Impl& impl = operation.impl();
  for (std::size_t at = 0; at < count; ++at) {
    array[at] = &impl.picks.emplace_back(sel_3d_struct{(*answer)[at]});
    impl.livePicks.insert(array[at]);
  }
  impl.pickArray = array;
  *p_sel_array = array;
  *p_n_sels = static_cast<int>(count);
  return PRO_TK_NO_ERROR;
}

ProError ProSelectionAsmcomppathGet(ProSelection selection, ProAsmcomppath* p_cmp_path) {
  Operation operation("ProSelectionAsmcomppathGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (selection == nullptr || p_cmp_path == nullptr) return PRO_TK_BAD_INPUTS;
  if (operation.impl().livePicks.count(selection) == 0) {
    return operation.misuse("the pick is none of the last selection");
  }
  if (selection->path.size() > PRO_MAX_ASSEM_LEVEL) return PRO_TK_GENERAL_ERROR;
  *p_cmp_path = {};
  p_cmp_path->owner = standin::solidOf(operation.session().current);
  std::fill_n(p_cmp_path->comp_id_tab, PRO_MAX_ASSEM_LEVEL, PRO_VALUE_UNUSED);
  std::copy(selection->path.begin(), selection->path.end(), p_cmp_path->comp_id_tab);
  p_cmp_path->table_num = static_cast<int>(selection->path.size());
  return PRO_TK_NO_ERROR;
}

ProError ProFileOpen(wchar_t* dialog_label, wchar_t* filter_string, ProPath* /*shortcut_path_arr*/,
                     ProName* /*shortcut_name_arr*/, ProPath default_path, ProFileName pre_sel_file_name,
                     ProPath r_selected_file) {
  Operation operation("ProFileOpen");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  Session& session = operation.session();
  return chooseFile(
      {textOrNone(dialog_label), textOrNone(filter_string), textOrNone(default_path), textOrNone(pre_sel_file_name)},
      session.openRequests, session.openAnswers, session.onFileOpen, r_selected_file);
}

ProError ProFileSave(wchar_t* dialog_label, wchar_t* filter_string, ProPath* /*shortcut_path_arr*/,
                     ProName* /*shortcut_name_arr*/, ProPath default_path, ProFileName pre_sel_file_name,
                     ProPath r_selected_file) {
  Operation operation("ProFileSave");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  Session& session = operation.session();
  return chooseFile(
      {textOrNone(dialog_label), textOrNone(filter_string), textOrNone(default_path), textOrNone(pre_sel_file_name)},
      session.fileRequests, session.fileAnswers, session.onFileSave, r_selected_file);
}
}

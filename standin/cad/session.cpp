#include "standin/cad/session.h"

#include <algorithm>
#include <iterator>
#include <system_error>

#include "standin/cad/guarded_memory.h"
#include "standin/cad/operation.h"
#include "standin/windows/code_page.h"

namespace standin {
namespace {

constexpr std::size_t kLongestName = PRO_NAME_SIZE - 1;

// Sessions alive, in the order of their construction.
std::vector<Session*>& sessions() {
  static std::vector<Session*> instance;
  return instance;
}

// One form for all spellings of a name that differ only in letter case (Latin, Greek, Cyrillic), in any locale.
wchar_t foldCase(wchar_t letter) {
  const bool isUpper = (letter >= L'A' && letter <= L'Z') || (letter >= 0xC0 && letter <= 0xDE && letter != 0xD7) ||
                       (letter >= 0x391 && letter <= 0x3A9) || (letter >= 0x410 && letter <= 0x42F);
  if (isUpper) {
    return static_cast<wchar_t>(letter + 0x20);
  }
  const bool oddIsUpper = (letter >= 0x139 && letter <= 0x148) || (letter >= 0x179 && letter <= 0x17E);
  if (letter >= 0x100 && letter <= 0x17E && letter != 0x130 && letter != 0x131 && letter != 0x138 && letter != 0x149 &&
      letter != 0x178) {
    return static_cast<wchar_t>(oddIsUpper ? letter + (letter & 1) : letter | 1);
  }
  return letter;
}

std::wstring nameKey(ProMdlType type, const std::wstring& name) {
  std::wstring key = std::to_wstring(static_cast<int>(type)) + L":";
  std::transform(name.begin(), name.end(), std::back_inserter(key), foldCase);
  return key;
}

// The name itself when it is free, else with the lowest number from 2 on at its end that makes it so.
std::wstring freeName(Session::Impl& impl, ProMdlType type, const std::wstring& wanted) {
  std::wstring name = wanted.substr(0, kLongestName);
  if (name.empty()) {
    name = L"unnamed";
  }
  const std::wstring key = nameKey(type, name);
  if (impl.modelsByName.count(key) == 0) {
    return name;
  }
  int& number = impl.lastNumbers.try_emplace(key, 1).first->second;
  std::wstring numbered;
  do {
    const std::wstring suffix = L"_" + std::to_wstring(++number);
    numbered = name.substr(0, kLongestName - suffix.size()) + suffix;
  } while (impl.modelsByName.count(nameKey(type, numbered)) != 0);
  return numbered;
}

}  // namespace

Session::Session() : impl_(std::make_unique<Impl>()) { sessions().push_back(this); }

Session::~Session() {
  std::vector<Session*>& alive = sessions();
  alive.erase(std::remove(alive.begin(), alive.end(), this), alive.end());
}

Session* Session::active() { return sessions().empty() ? nullptr : sessions().back(); }

Model& Session::addModel(ProMdlType type, const std::wstring& name) {
  Model& model = *models_.emplace_back(std::make_unique<Model>());
  model.type = type;
  model.name = freeName(*impl_, type, name);
  model.versionStamp = ++lastStamp_;
  impl_->modelsByName[nameKey(type, model.name)] = &model;
  impl_->liveModels.insert(&model);
  return model;
}

void Session::renameModel(Model& model, const std::wstring& name) {
  const auto entry = impl_->modelsByName.find(nameKey(model.type, model.name));
  if (entry != impl_->modelsByName.end() && entry->second == &model) {
    impl_->modelsByName.erase(entry);
  }
  model.name = freeName(*impl_, model.type, name);
  impl_->modelsByName[nameKey(model.type, model.name)] = &model;
  touch(model);
}

Model* Session::findModel(const std::wstring& name, std::optional<ProMdlType> type) {
  for (const ProMdlType candidate : {PRO_MDL_ASSEMBLY, PRO_MDL_PART, PRO_MDL_DRAWING}) {
    if (type && *type != candidate) {
      continue;
    }
    const auto found = impl_->modelsByName.find(nameKey(candidate, name));
    if (found != impl_->modelsByName.end()) {
      return found->second;
    }
  }
  return nullptr;
}

void Session::touch(Model& model) {
  model.versionStamp = ++lastStamp_;
  impl_->forgetAnswers();
}

void Session::restoreStamp(Model& model, std::uint64_t stamp) {
  model.versionStamp = stamp;
  lastStamp_ = std::max(lastStamp_, stamp);
  impl_->forgetAnswers();
}

Command* Session::findCommand(const std::string& name) {
  const auto found =
      std::find_if(commands_.begin(), commands_.end(), [&](const Command& command) { return command.name == name; });
  return found != commands_.end() ? &*found : nullptr;
}

std::optional<int> Session::runCommand(const std::string& name) {
  const Command* command = findCommand(name);
  if (command == nullptr) {
    return std::nullopt;
  }
  struct Run {
    explicit Run(Session& owner) : session(owner), before(owner.impl().enter(&owner.clock.plugin)) {
      session.impl().forgetAnswers();
      ++session.impl().commandsRunning;
    }
    ~Run() {
      --session.impl().commandsRunning;
      session.impl().forgetAnswers();
      session.impl().enter(before);
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    Session& session;
    RunClock::Duration* before;
  };
  const Run run(*this);
  return command->action(command->id, nullptr, nullptr);
}

std::optional<std::wstring> Session::message(const std::wstring& file, const std::string& key) {
  for (const std::filesystem::path& folder : {messageFolder / language, messageFolder}) {
    const std::filesystem::path path = folder / std::filesystem::path(file);
    MessageFile& messages = impl_->messageFiles[path];
    const std::wstring* text = messages.refresh(path) ? messages.text(key) : nullptr;
    if (text != nullptr) return *text;
  }
  return std::nullopt;
}

std::optional<std::filesystem::path> Session::findTexture(const std::wstring& name) const {
  const std::filesystem::path wanted = utf8FromWide(name);
  std::vector<std::filesystem::path> candidates;
  if (wanted.is_absolute()) {
    candidates.push_back(wanted);
  } else {
    for (const std::filesystem::path& folder : textureFolders) candidates.push_back(folder / wanted);
  }
  for (std::filesystem::path& candidate : candidates) {
    std::error_code error;
    if (std::filesystem::is_regular_file(candidate, error)) return std::move(candidate);
  }
  return std::nullopt;
}

const std::vector<std::string>& Session::misuse() const {
  if (hasGuardReports() && active() == this) {
    for (const std::string& line : takeGuardReports()) {
      if (impl_->misuseSeen.insert(line).second) {
        misuse_.push_back(line);
      }
    }
  }
  return misuse_;
}

void Session::reportMisuse(const std::string& operation, const std::string& what) {
  misuse();  // what the guards noticed came earlier
  std::string line = operation + ": " + what;
  if (impl_->misuseSeen.insert(line).second) {
    misuse_.push_back(std::move(line));
  }
}

void Session::finish() {
  misuse();
  impl_->forgetPicks();
  std::vector<std::string> lines = impl_->allocations.leaks();
  for (const auto& [name, dialog] : impl_->dialogs) {
    lines.push_back("ProUIDialogCreate: the dialog \"" + name + "\" was never destroyed");
  }
  for (std::string& line : lines) {
    if (impl_->misuseSeen.insert(line).second) {
      misuse_.push_back(std::move(line));
    }
  }
}

bool Session::press(Dialog& dialog, const std::string& component) { return userPress(dialog, component).empty(); }

}  // namespace standin

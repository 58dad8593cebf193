// The stand-in CAD session: the models in memory, the open one, and everything that the user would answer. The
// toolkit's operations (operations_*.cpp) act on the active session.
//
// It is strict where the real thing is silent: a handle that was freed or never given out, an array that is read past
// its end and an allocation that is not given back are noted with the operation's name; see misuse() and finish().
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "standin/cad/dialog.h"
#include "standin/cad/model.h"

namespace standin {

// A command that the plug-in registered, with what it designated for it.
struct Command {
  uiCmdCmdId id = 0;
  std::string name;
  uiCmdCmdActFn action = nullptr;
  uiCmdAccessFn access = nullptr;
  int priority = 0;
  bool inNonActiveWindow = false;
  bool inAccessoryWindow = false;
  std::vector<std::string> icons;  // every icon that was set, the last one is shown
  std::string labelKey, helpKey, descriptionKey;
  std::wstring messageFile;
};

// The answer to the next file dialog: a path, or nothing for a cancel.
using FileAnswer = std::optional<std::filesystem::path>;

// What a file dialog was opened with.
struct FileRequest {
  std::wstring title, filter, directory, name;
};

// The answer to the next selection: the component paths of the picks (an empty path is the top model), or nothing
// for a cancel.
using SelectionAnswer = std::optional<std::vector<std::vector<int>>>;

// Where the time of all commands run so far went. Whatever is spent outside the toolkit's operations while a command
// runs is the plug-in's own.
struct RunClock {
  using Duration = std::chrono::steady_clock::duration;
  Duration session{};       // inside operations other than those below
  Duration tessellation{};  // and the conversion to exact surfaces
  Duration plugin{};
};

// Counts of what the plug-in asked for.
struct RunCounts {
  std::size_t surfacesTessellated = 0;
  std::size_t trianglesHandedOut = 0;
  // Surfaces that no attempt could tessellate: "model name: surface id" to reason. An entry is dropped again when a
  // later attempt succeeds.
  std::map<std::pair<const Model*, int>, std::string> failedSurfaces;
};

class Session {
 public:
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // The session that the toolkit's operations act on; the last one constructed and still alive.
  static Session* active();

  // A new model. The name is cut to 31 characters and made unique among models of the type (letter case does not
  // tell names apart) by a number at its end.
  Model& addModel(ProMdlType type, const std::wstring& name);
  void renameModel(Model& model, const std::wstring& name);
  Model* findModel(const std::wstring& name, std::optional<ProMdlType> type = std::nullopt);
  const std::deque<std::unique_ptr<Model>>& models() const { return models_; }
  // Marks a model as changed; assemblies that hold it are not touched.
  void touch(Model& model);
  // Gives a model the version stamp that it was saved with; later changes get higher ones.
  void restoreStamp(Model& model, std::uint64_t stamp);

  Model* current = nullptr;
  ProMode mode = PRO_MODE_UNUSED;
  std::map<std::wstring, std::wstring> configOptions;
  std::vector<std::filesystem::path> textureFolders;
  // Told to the plug-in, with a backslash behind it, in place of the folder that a texture was found in; empty: the
  // folder itself. So a package can be the same wherever textures are.
  std::wstring textureFolderName;
  std::filesystem::path messageFolder;  // where message files are looked up by their names
  // The user's language: the folder of that name in the message folder comes first. Empty: English.
  std::string language;
  bool guardArrays = true;  // arrays end at a page that may not be read; off for measurements

  // The user's answers. A question without one goes to its function below; when there is none it counts as cancelled.
  std::deque<FileAnswer> fileAnswers;  // where to save
  std::deque<FileAnswer> openAnswers;  // what to open
  std::deque<SelectionAnswer> selectionAnswers;
  // The name of the representation to choose, empty for the master one; nothing cancels.
  std::deque<std::optional<std::wstring>> representationAnswers;
  // Called while a dialog is active, and must end it by userPress() or ProUIDialogExit; when it is empty, the dialog's
  // default button is pressed. A dialog that is left open by this counts as misuse and is ended.
  std::function<void(Dialog&)> onDialog;
  // Asked when the queue of the answers has none left, for a user who is there. What they throw must not get out.
  std::function<FileAnswer(const FileRequest&)> onFileSave;
  std::function<FileAnswer(const FileRequest&)> onFileOpen;
  std::function<SelectionAnswer()> onSelection;
  std::function<std::optional<std::wstring>(const Model&)> onRepresentation;
  // userPress() as a yes or no.
  bool press(Dialog& dialog, const std::string& component);

  // What was asked of the user.
  std::vector<FileRequest> fileRequests;  // to save
  std::vector<FileRequest> openRequests;
  std::vector<std::string> dialogsShown;
  int selectionsAsked = 0, representationsAsked = 0;

  std::deque<Command>& commands() { return commands_; }
  Command* findCommand(const std::string& name);
  // Runs a command by its name and gives the action's result; nothing when there is none of the name.
  std::optional<int> runCommand(const std::string& name);
  // The text of a message key; nothing when the file or the key is missing.
  std::optional<std::wstring> message(const std::wstring& file, const std::string& key);

  // The file of a texture: a name that is a full path stands for itself, others are looked up in the texture folders,
  // in their order. Nothing when there is none.
  std::optional<std::filesystem::path> findTexture(const std::wstring& name) const;

  // Everything that was done wrong so far, a line for each kind, beginning with the operation's name.
  const std::vector<std::string>& misuse() const;
  void reportMisuse(const std::string& operation, const std::string& what);
  // Adds a line for everything that was allocated and never given back; then misuse() is complete.
  void finish();

  RunClock clock;
  RunCounts counts;
  // Called with the number of surfaces tessellated so far; for a display of progress.
  std::function<void(std::size_t)> onTessellated;

  struct Impl;
  Impl& impl() { return *impl_; }

 private:
  std::deque<std::unique_ptr<Model>> models_;
  std::deque<Command> commands_;
  mutable std::vector<std::string> misuse_;
  std::uint64_t lastStamp_ = 1;
  std::unique_ptr<Impl> impl_;
};

}  // namespace standin

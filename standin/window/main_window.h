// The window of the CAD session.
#pragma once

#include <QMainWindow>
#include <filesystem>
#include <string>
#include <vector>

#include "standin/app/workbench.h"
#include "standin/window/component_actions.h"
#include "standin/window/model_tree.h"
#include "standin/window/picture_view.h"
#include "standin/window/ribbon.h"
#include "standin/window/selection_bar.h"
#include "standin/window/session_picture.h"
#include "standin/window/window_progress.h"

class QMenu;

namespace standin {

// While it lives it is the user of the session, whose questions it shows. The plug-in is loaded before.
class MainWindow : public QMainWindow {
 public:
  // `progress` is that of the workbench.
  MainWindow(Workbench& bench, WindowProgress& progress);
  ~MainWindow() override;

  // Opens a model, or tells why it cannot be.
  void open(const std::filesystem::path& file);
  // Runs a command of the plug-in and tells what came of it. Nothing while another one runs.
  void runCommand(const std::string& name);

  PictureView& picture() { return *picture_; }

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  class Busy;

  void buildMenus();
  // The standard views and those that the model has.
  void fillViewMenu(QMenu& menu);
  void answerSession();
  void chooseFile();
  void showDialog(Dialog& dialog);
  SelectionAnswer askSelection();
  // The open model, its tree and its picture; `fit` for a picture of the whole model.
  void showModel(bool fit);
  void showReport(const std::string& command, const CommandReport& report);
  // What the user may do now.
  void refreshActions();
  QWidget* dialogParent();

  Workbench& bench_;
  Session& session_;
  WindowProgress& progress_;
  SessionPictureMaker pictures_;
  Ribbon* ribbon_;
  ModelTree* tree_;
  PictureView* picture_;
  SelectionBar* selection_;
  ComponentActions* components_;
  std::vector<QWidget*> dialogs_;  // those of the plug-in that are open, the innermost last
  std::filesystem::path folder_;   // where the last model was
  bool busy_ = false;              // with a command or a file
  bool selecting_ = false;         // the one state of a command in which the window itself can be used
};

}  // namespace standin

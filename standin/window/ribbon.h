// The plug-in's commands as a ribbon.
#pragma once

#include <QToolBar>
#include <functional>
#include <map>
#include <string>

#include "standin/cad/session.h"

namespace standin {

// Icons come from the folder "resource" beside that of the messages, labels and help from the message file.
class Ribbon : public QToolBar {
 public:
  explicit Ribbon(Session& session, QWidget* parent = nullptr);

  // Shows the commands that are registered now, with their icons of now, as their access functions allow.
  void refresh();
  // The button of a command; null when there is none.
  QAction* action(const std::string& command) const;

  std::function<void(const std::string& command)> onCommand;

 private:
  void build();
  void show(const Command& command);
  QString message(const Command& command, const std::string& key) const;

  Session& session_;
  std::map<std::string, QAction*> actions_;
};

}  // namespace standin

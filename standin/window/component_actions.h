// What the user does to the selected components, so that an Update has something to send.
#pragma once

#include <QList>
#include <QObject>
#include <functional>

#include "standin/app/component_lookup.h"
#include "standin/window/model_tree.h"

class QAction;

namespace standin {

class ComponentActions : public QObject {
 public:
  ComponentActions(Session& session, ModelTree& tree);

  // For menus, in their order; those that cannot be done to the selection are disabled.
  const QList<QAction*>& actions() const { return actions_; }
  // To be called when the selection or a component has changed; with `allowed` false all are disabled.
  void refresh(bool allowed = true);

  // A component has changed.
  std::function<void()> onChanged;

 private:
  using Fits = std::function<bool(const Component&)>;
  // An action on each selected component that it fits.
  void add(const char* name, const char* text, Fits fits, std::function<void(const Component&)> change);
  void move();
  void paint();
  void change(const std::function<void(const Component&)>& what, const Fits& fits);
  bool canPaint() const;

  Session& session_;
  ModelTree& tree_;
  QList<QAction*> actions_;
  std::vector<Fits> fits_;  // of the first actions
  QAction* move_ = nullptr;
  QAction* paint_ = nullptr;
};

}  // namespace standin

// The components of the open model.
#pragma once

#include <QIcon>
#include <QTreeWidget>
#include <functional>
#include <vector>

#include "standin/app/component_lookup.h"

namespace standin {

// What is not shown is grey: suppressed components are crossed out, hidden ones in italics; a second column says it in
// words.
class ModelTree : public QTreeWidget {
 public:
  using Path = std::vector<int>;

  explicit ModelTree(QWidget* parent = nullptr);

  // Null for no model. What was selected or open stays so where it is still there.
  void showModel(Model* top);
  Model* model() const { return top_; }

  // The paths of the selected nodes; an empty path is the model itself.
  std::vector<Path> selectedPaths() const;
  // The selected nodes but the model itself, each component once, however often its assembly is placed.
  std::vector<Component> selectedComponents() const;
  // Null when the tree has no node of the path.
  QTreeWidgetItem* find(const Path& path) const;
  void select(const Path& path, bool add);

  std::function<void()> onSelectionChanged;

 private:
  void addComponents(const Model& owner, QTreeWidgetItem& node, std::size_t depth);
  // As wide as the names, but for what the state needs.
  void fitNameColumn();
  Path pathOf(const QTreeWidgetItem* item) const;
  const QIcon& iconOf(const Model* model) const;

  Model* top_ = nullptr;
  QIcon partIcon_, assemblyIcon_;
};

}  // namespace standin

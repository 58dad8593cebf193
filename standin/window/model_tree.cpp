#include "standin/window/model_tree.h"

#include <fmt/ranges.h>

#include <QHeaderView>
#include <QPainter>
#include <QSignalBlocker>
#include <algorithm>
#include <set>
#include <utility>

#include "standin/app/component_change.h"

namespace standin {
namespace {

constexpr int kNameColumn = 0;
constexpr int kStateColumn = 1;
constexpr int kIdRole = Qt::UserRole;  // the component's feature id
constexpr int kMarkSide = 16;
constexpr int kLeastStateWidth = 70;

void drawCube(QPainter& painter, QPointF corner, double side, const QColor& colour) {
  const double depth = side * 0.4;
  painter.setPen(QPen(colour.darker(190), 1));
  const QPointF right(side, 0);
  const QPointF down(0, side);
  const QPointF back(depth, -depth);
  const auto face = [&](const QPointF& at, const QPointF& a, const QPointF& b, const QColor& fill) {
    painter.setBrush(fill);
    painter.drawPolygon(QPolygonF{{at, at + a, at + a + b, at + b}});
  };
  face(corner, right, down, colour);
  face(corner, right, back, colour.lighter(130));
  face(corner + right, down, back, colour.darker(125));
}

QIcon modelIcon(bool assembly) {
  QPixmap pixmap(kMarkSide, kMarkSide);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  if (assembly) {
    drawCube(painter, {6.5, 3.5}, 6, QColor(0xe6, 0xb4, 0x3c));
    drawCube(painter, {1.5, 8.5}, 6, QColor(0x5a, 0x9b, 0xd4));
  } else {
    drawCube(painter, {2.5, 5.5}, 8, QColor(0x5a, 0x9b, 0xd4));
  }
  return pixmap;
}

void showState(QTreeWidgetItem& item, const Model& owner, const Feature& feature) {
  const std::vector<std::string> remarks = componentRemarks(owner, feature);
  const QString state = QString::fromStdString(fmt::format("{}", fmt::join(remarks, ", ")));
  const bool suppressed = feature.status != PRO_FEAT_ACTIVE;
  const bool shown = isShown(owner, feature);
  item.setToolTip(kStateColumn, state);
  if (!shown) item.setText(kStateColumn, state);
  QFont font = item.font(kNameColumn);
  font.setStrikeOut(suppressed);
  font.setItalic(!suppressed && !shown);
  item.setFont(kNameColumn, font);
  if (!shown) item.setForeground(kNameColumn, QColor(0x80, 0x80, 0x80));
  item.setForeground(kStateColumn, QColor(0x80, 0x80, 0x80));
}

}  // namespace

ModelTree::ModelTree(QWidget* parent)
    : QTreeWidget(parent), partIcon_(modelIcon(false)), assemblyIcon_(modelIcon(true)) {
  setObjectName("tree");
  setColumnCount(2);
  setHeaderLabels({"Model tree", "State"});
  header()->setStretchLastSection(true);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setUniformRowHeights(true);
  connect(this, &QTreeWidget::itemSelectionChanged, this, [this] {
    if (onSelectionChanged) onSelectionChanged();
  });
}

const QIcon& ModelTree::iconOf(const Model* model) const {
  return model != nullptr && model->type == PRO_MDL_ASSEMBLY ? assemblyIcon_ : partIcon_;
}

void ModelTree::addComponents(const Model& owner, QTreeWidgetItem& node, std::size_t depth) {
  if (depth >= PRO_MAX_ASSEM_LEVEL) return;
  for (const Feature& feature : owner.features) {
    if (feature.type != PRO_FEAT_COMPONENT) continue;
    const std::string name = feature.component ? displayName(*feature.component) : "model not in session";
    auto* item = new QTreeWidgetItem(&node, {QString::fromStdString(name)});
    item->setIcon(kNameColumn, iconOf(feature.component));
    item->setData(kNameColumn, kIdRole, feature.id);
    item->setToolTip(kNameColumn, QString("%1, component id %2").arg(item->text(kNameColumn)).arg(feature.id));
    showState(*item, owner, feature);
    if (feature.component) addComponents(*feature.component, *item, depth + 1);
  }
}

void ModelTree::showModel(Model* top) {
  const std::vector<Path> selected = top == top_ ? selectedPaths() : std::vector<Path>();
  std::vector<Path> expanded;
  for (QTreeWidgetItemIterator at(this); top == top_ && *at != nullptr; ++at) {
    if ((*at)->isExpanded()) expanded.push_back(pathOf(*at));
  }
  {
    const QSignalBlocker silent(this);
    clear();
    const bool isNew = std::exchange(top_, top) != top;
    if (top != nullptr) {
      auto* root = new QTreeWidgetItem(this, {QString::fromStdString(displayName(*top))});
      root->setIcon(kNameColumn, iconOf(top));
      addComponents(*top, *root, 0);
      root->setExpanded(isNew || !expanded.empty());
      for (const Path& path : expanded) {
        if (QTreeWidgetItem* item = find(path)) item->setExpanded(true);
      }
      for (const Path& path : selected) {
        if (QTreeWidgetItem* item = find(path)) item->setSelected(true);
      }
      if (isNew) fitNameColumn();
    }
  }
  if (onSelectionChanged) onSelectionChanged();
}

void ModelTree::fitNameColumn() {
  resizeColumnToContents(kNameColumn);
  setColumnWidth(kNameColumn, std::min(columnWidth(kNameColumn), viewport()->width() - kLeastStateWidth));
}

ModelTree::Path ModelTree::pathOf(const QTreeWidgetItem* item) const {
  Path path;
  for (; item->parent() != nullptr; item = item->parent()) path.push_back(item->data(kNameColumn, kIdRole).toInt());
  std::reverse(path.begin(), path.end());
  return path;
}

QTreeWidgetItem* ModelTree::find(const Path& path) const {
  QTreeWidgetItem* item = topLevelItem(0);
  for (const int id : path) {
    QTreeWidgetItem* next = nullptr;
    for (int i = 0; item != nullptr && i < item->childCount() && next == nullptr; ++i) {
      if (item->child(i)->data(kNameColumn, kIdRole).toInt() == id) next = item->child(i);
    }
    item = next;
  }
  return item;
}

std::vector<ModelTree::Path> ModelTree::selectedPaths() const {
  std::vector<Path> paths;
  for (const QTreeWidgetItem* item : selectedItems()) paths.push_back(pathOf(item));
  return paths;
}

std::vector<Component> ModelTree::selectedComponents() const {
  std::vector<Component> components;
  std::set<const Feature*> seen;
  for (const Path& path : selectedPaths()) {
    Component component;
    component.path = path;
    Model* model = top_;
    for (const int id : path) {
      component.owner = model;
      component.feature = model != nullptr ? model->feature(id) : nullptr;
      model = component.feature != nullptr ? component.feature->component : nullptr;
    }
    if (component.feature != nullptr && seen.insert(component.feature).second) components.push_back(component);
  }
  return components;
}

void ModelTree::select(const Path& path, bool add) {
  QTreeWidgetItem* item = find(path);
  if (item == nullptr) return;
  const bool was = item->isSelected();
  if (!add) clearSelection();
  item->setSelected(!add || !was);
  scrollToItem(item);
}

}  // namespace standin

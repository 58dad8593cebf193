#include "standin/window/selection_bar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace standin {

SelectionBar::SelectionBar(QWidget* parent)
    : QFrame(parent), text_(new QLabel(this)), ok_(new QPushButton("OK", this)) {
  setObjectName("selectionBar");
  setStyleSheet("#selectionBar { background: #fff3c4; border-bottom: 1px solid #d8b94a; } QLabel { color: black; }");
  ok_->setObjectName("selectionOk");
  auto* cancelButton = new QPushButton("Cancel", this);
  cancelButton->setObjectName("selectionCancel");
  cancelButton->setShortcut(Qt::Key_Escape);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(9, 5, 9, 5);
  row->addWidget(text_, 1);
  row->addWidget(ok_);
  row->addWidget(cancelButton);
  connect(ok_, &QPushButton::clicked, this, [this] { loop_.exit(1); });
  connect(cancelButton, &QPushButton::clicked, this, [this] { cancel(); });
  hide();
}

void SelectionBar::showCount(std::size_t count) {
  const QString what = "Select components in the tree or the picture, then press OK";
  text_->setText(count == 0 ? what + " (none: only what has changed)." : what + QString(" (%1 selected).").arg(count));
}

bool SelectionBar::ask() {
  showCount(0);
  show();
  ok_->setFocus();
  const bool accepted = loop_.exec() == 1;
  hide();
  return accepted;
}

}  // namespace standin

#include "standin/window/main_window.h"

#include <fmt/format.h>

#include <QAction>
#include <QCloseEvent>
#include <QFileDialog>
#include <QMenu>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>
#include <QVBoxLayout>
#include <exception>

#include "standin/app/component_lookup.h"
#include "standin/app/failure.h"
#include "standin/window/dialog_window.h"
#include "standin/window/user_questions.h"

namespace standin {
namespace {

constexpr int kWidth = 1120;
constexpr int kHeight = 720;
constexpr int kTreeWidth = 320;
constexpr int kYAxis = 1;  // points up in the standard views

// What the user reads of a command: its label without the line break of its button.
QString labelOf(const Ribbon& ribbon, const std::string& command) {
  const QAction* action = ribbon.action(command);
  return action != nullptr ? action->text().replace('\n', ' ') : QString::fromStdString(command);
}

QString capitalised(std::string_view name) {
  QString text = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
  return text.left(1).toUpper() + text.mid(1);
}

}  // namespace

// While it lives the user can do nothing but answer.
class MainWindow::Busy {
 public:
  explicit Busy(MainWindow& window) : window_(window) { window_.busy_ = true; }
  ~Busy() {
    window_.busy_ = false;
    window_.refreshActions();
  }
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;

 private:
  MainWindow& window_;
};

MainWindow::MainWindow(Workbench& bench, WindowProgress& progress)
    : bench_(bench),
      session_(bench.session()),
      progress_(progress),
      pictures_(session_),
      ribbon_(new Ribbon(session_, this)),
      tree_(new ModelTree),
      picture_(new PictureView),
      selection_(new SelectionBar),
      components_(new ComponentActions(session_, *tree_)),
      folder_(bench.resolve({})) {
  components_->setParent(this);
  addToolBar(ribbon_);
  // Over the picture, which keeps its size.
  auto* over = new QVBoxLayout(picture_);
  over->setContentsMargins(0, 0, 0, 0);
  over->addWidget(selection_);
  over->addStretch();
  auto* splitter = new QSplitter;
  splitter->addWidget(tree_);
  splitter->addWidget(picture_);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({kTreeWidth, kWidth - kTreeWidth});
  setCentralWidget(splitter);
  buildMenus();
  statusBar();
  resize(kWidth, kHeight);
  answerSession();
  showModel(true);
}

MainWindow::~MainWindow() {
  session_.onDialog = nullptr;
  session_.onFileSave = nullptr;
  session_.onFileOpen = nullptr;
  session_.onSelection = nullptr;
  session_.onRepresentation = nullptr;
  progress_.display = nullptr;
}

void MainWindow::buildMenus() {
  QMenu* file = menuBar()->addMenu("&File");
  file->addAction("&Open...", QKeySequence::Open, this, [this] { chooseFile(); })->setObjectName("open");
  file->addSeparator();
  file->addAction("&Quit", QKeySequence::Quit, this, [this] { close(); })->setObjectName("quit");
  QMenu* component = menuBar()->addMenu("&Component");
  component->addActions(components_->actions());
  QMenu* view = menuBar()->addMenu("&View");
  connect(view, &QMenu::aboutToShow, this, [this, view] { fillViewMenu(*view); });
  tree_->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(tree_, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& place) { QMenu::exec(components_->actions(), tree_->viewport()->mapToGlobal(place)); });
}

void MainWindow::fillViewMenu(QMenu& menu) {
  menu.clear();
  for (const std::string_view name : rpk::kStandardViews) {
    menu.addAction(capitalised(name), this, [this, name] { picture_->setView(*rpk::standardView(name, kYAxis)); });
  }
  menu.addSeparator();
  menu.addAction("Refit", this, [this] { picture_->refit(); });
  const Model* const model = session_.current;
  if (model == nullptr || model->views.empty()) return;
  menu.addSeparator();
  for (const View& view : model->views) {
    const rpk::ViewDirection direction = viewDirection(view.matrix);
    menu.addAction(QString::fromStdWString(view.name), this, [this, direction] { picture_->setView(direction); });
  }
}

void MainWindow::answerSession() {
  session_.onDialog = [this](Dialog& dialog) { showDialog(dialog); };
  session_.onFileSave = [this](const FileRequest& request) {
    return askFile(FileQuestion::kSave, request, folder_, dialogParent());
  };
  session_.onFileOpen = [this](const FileRequest& request) {
    return askFile(FileQuestion::kOpen, request, folder_, dialogParent());
  };
  session_.onSelection = [this] { return askSelection(); };
  session_.onRepresentation = [this](const Model& model) { return askRepresentation(model, dialogParent()); };
  progress_.display = [this](const std::string& text) { statusBar()->showMessage(QString::fromStdString(text)); };
  ribbon_->onCommand = [this](const std::string& command) { runCommand(command); };
  components_->onChanged = [this] { showModel(false); };
  picture_->onPicked = [this](const PictureView::Path* path, bool add) {
    if (path != nullptr) {
      tree_->select(*path, add);
    } else if (!add) {
      tree_->clearSelection();
    }
  };
  tree_->onSelectionChanged = [this] {
    const std::vector<ModelTree::Path> paths = tree_->selectedPaths();
    picture_->setSelected(paths);
    selection_->showCount(paths.size());
    components_->refresh(!busy_);
  };
}

QWidget* MainWindow::dialogParent() { return dialogs_.empty() ? this : dialogs_.back(); }

void MainWindow::refreshActions() {
  for (QAction* menu : menuBar()->actions()) menu->setEnabled(!selecting_);
  ribbon_->refresh();
  ribbon_->setEnabled(!selecting_);
  components_->refresh(!busy_);
}

void MainWindow::chooseFile() {
  const FileRequest request{L"Open", L"Models (*.step *.stp *.STEP *.STP *.snap)", {}, {}};
  if (const FileAnswer chosen = askFile(FileQuestion::kOpen, request, folder_, this)) open(*chosen);
}

void MainWindow::open(const std::filesystem::path& file) {
  if (busy_) return;
  const Busy busy(*this);
  try {
    bench_.open(file, std::nullopt);
    folder_ = bench_.resolve(file).parent_path();
    showModel(true);
    statusBar()->showMessage(QString::fromStdString(fmt::format("Opened {}", bench_.resolve(file).string())));
  } catch (const std::exception& failure) {
    statusBar()->clearMessage();
    tellFailure(failure.what(), {}, this);
  }
}

void MainWindow::showModel(bool fit) {
  Model* const model = session_.current;
  tree_->showModel(model);
  const QString title = "Creo stand-in";
  setWindowTitle(model != nullptr ? QString::fromStdString(displayName(*model)) + " \u2013 " + title : title);
  picture_->setHint(model != nullptr ? "The picture is being prepared." : "No model is open: File > Open.");
  if (model == nullptr) return;
  progress_.begin();
  picture_->setPicture(pictures_.make(*model,
                                      [this](const Model& part) {
                                        progress_.show(fmt::format("preparing the picture: {}", displayName(part)));
                                      }),
                       fit);
  progress_.end();
  if (!fit) return;
  const bool hasView = model->currentView != kIdentity;
  picture_->setView(hasView ? viewDirection(model->currentView) : *rpk::standardView("iso", kYAxis));
}

void MainWindow::runCommand(const std::string& name) {
  if (busy_) return;
  const Busy busy(*this);
  try {
    showReport(name, bench_.run(name));
  } catch (const std::exception& failure) {
    statusBar()->clearMessage();
    tellFailure(failure.what(), {}, this);
  }
}

void MainWindow::showReport(const std::string& command, const CommandReport& report) {
  const QString label = labelOf(*ribbon_, command);
  if (!report.printed.empty() || report.result != 0) {
    const std::string said =
        report.printed.empty() ? fmt::format("gave {}", report.result) : fmt::format("says \"{}\"", report.printed);
    tellFailure(QString("%1: the plug-in %2.").arg(label, QString::fromStdString(said)),
                "When no renderer could be reached: \"renderer-standin --install\" installs one.", this);
    return;
  }
  QString message = label + ": done";
  for (const WrittenPackage& package : report.packages) {
    message = QString("Wrote %1").arg(QString::fromStdString(package.path.string()));
    if (!package.counts) continue;
    message += QString(": %1 occurrences, %2 references, %3 triangles")
                   .arg(package.counts->occurrences)
                   .arg(package.counts->references)
                   .arg(package.counts->triangles);
  }
  statusBar()->showMessage(message);
}

void MainWindow::showDialog(Dialog& dialog) {
  statusBar()->clearMessage();
  DialogWindow window(dialog, dialogParent());
  dialogs_.push_back(&window);
  window.run();
  dialogs_.pop_back();
}

SelectionAnswer MainWindow::askSelection() {
  // The dialogs would keep the user from the tree.
  for (QWidget* dialog : dialogs_) dialog->hide();
  tree_->clearSelection();
  selecting_ = true;
  refreshActions();
  const bool accepted = selection_->ask();
  selecting_ = false;
  refreshActions();
  for (QWidget* dialog : dialogs_) dialog->show();
  return accepted ? SelectionAnswer(tree_->selectedPaths()) : std::nullopt;
}

void MainWindow::closeEvent(QCloseEvent* event) {
  // The command that asks goes on first.
  if (selection_->asking()) selection_->cancel();
  event->setAccepted(!busy_);
}

}  // namespace standin

// A new user's walk through the window with the real plug-in: a display is needed, its pictures stay in the build
// folder.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSlider>
#include <QStatusBar>

#include "standin/app/misuse.h"
#include "standin/window/main_window.h"
#include "tests/live/machine.h"
#include "tests/support/temporary_folder.h"
#include "tests/window/window_driver.h"
#include "tools/rpk/package_counts.h"
#include "tools/rpk/scene_summary.h"

namespace standin::testing {
namespace {

namespace fs = std::filesystem;
using rendara::testing::Machine;

const fs::path kSample = RENDARA_SOURCE_DIR "/samples/twin_compressor.step";
const fs::path kPlugin = RENDARA_LIB_DIR "/librendara_creo.so";

void shoot(const std::string& name) {
  QTest::qWait(100);
  fs::create_directories(RENDARA_SCREENSHOTS);
  QApplication::primaryScreen()->grabWindow(0).save(QString::fromStdString(RENDARA_SCREENSHOTS "/" + name + ".png"));
}

void accept(QWidget& window) { dynamic_cast<QDialog&>(window).accept(); }

class Walk : public ::testing::Test {
 protected:
  Walk() {
    application();
    machine_.enter();
    session_.messageFolder = RENDARA_SOURCE_DIR "/resources/text";
    plugin_.load();
    window_ = std::make_unique<MainWindow>(bench_, progress_);
    window_->show();
  }
  ~Walk() override {
    window_.reset();
    plugin_.unload(session_);
    session_.finish();
    EXPECT_EQ(notedMisuse(session_), std::vector<std::string>());
  }

  void openSample() {
    window_->open(kSample);
    ASSERT_NE(session_.current, nullptr);
    waitFor("the picture", [&] { return window_->picture().complete(); });
  }

  void press(const std::string& command) {
    auto& ribbon = part<Ribbon>(*window_, "ribbon");
    click(*ribbon.widgetForAction(ribbon.action(command)));
  }

  // Exports to the file by way of the dialogs.
  std::string exportTo(const fs::path& file) {
    whenOpen("fileDialog", [file](QWidget& dialog) {
      part<QLineEdit>(dialog, "fileNameEdit").setText(QString::fromStdString(file.string()));
      shoot("export_file");
      click(*part<QDialogButtonBox>(dialog, "buttonBox").button(QDialogButtonBox::Save));
    });
    whenOpen("representation", [](QWidget& dialog) {
      shoot("export_representation");
      accept(dialog);
    });
    whenOpen("ExportFinished", [](QWidget& dialog) {
      shoot("export_finished");
      click(part(dialog, "ExportOk"));
    });
    press("Rendara Export");
    shoot("export_done");
    return rendara::testing::readFile(file);
  }

  // The node of the tree that names the model, the first of several.
  QTreeWidgetItem& node(const char* name) {
    const auto found = part<ModelTree>(*window_, "tree").findItems(name, Qt::MatchRecursive | Qt::MatchExactly);
    if (found.isEmpty()) throw std::runtime_error(std::string("no node ") + name);
    return *found.front();
  }
  void clickNode(const char* name) {
    auto& tree = part<ModelTree>(*window_, "tree");
    tree.scrollToItem(&node(name));
    click(*tree.viewport(), tree.visualItemRect(&node(name)).center());
  }
  void trigger(const char* action) {
    ASSERT_TRUE(part<QAction>(*window_, action).isEnabled()) << action;
    part<QAction>(*window_, action).trigger();
  }

  rendara::testing::WorkingFolder folder_;
  Machine machine_;
  Session session_;
  PluginHost plugin_{kPlugin};
  WindowProgress progress_;
  Workbench bench_{session_, plugin_, progress_, folder_.path()};
  std::unique_ptr<MainWindow> window_;
};

// The spin box and the slider of the mesh quality follow each other.
void changeSettings(QWidget& dialog) {
  shoot("settings");
  auto& box = part<QDoubleSpinBox>(dialog, "stepbox");
  auto& slider = part<QSlider>(dialog, "Rendara_Tess_Level_Slider");
  EXPECT_EQ(slider.value(), 2000);
  box.selectAll();
  QTest::keyClicks(&box, "0.25");
  QTest::keyClick(&box, Qt::Key_Return);
  EXPECT_EQ(slider.value(), 2500);
  slider.setValue(3000);
  EXPECT_EQ(box.text(), "0.30");
  part<QRadioButton>(part(dialog, "Rendara_Axis_Radiogroup"), "zaxis").click();
  part<QCheckBox>(dialog, "Rendara_NURBS_Check").click();
  shoot("settings_changed");
  click(part(dialog, "Rendara_OK"));
}

TEST_F(Walk, SettingsReachTheExportedPackage) {
  shoot("empty");
  openSample();
  shoot("open");
  const std::string before = exportTo(folder_.path() / "before.rpk");
  whenOpen("Rendara_Settings", changeSettings);
  press("Rendara Settings");
  const std::string after = exportTo(folder_.path() / "after.rpk");

  const rpk::PackageCounts countsBefore = rpk::countPackage(before);
  const rpk::PackageCounts countsAfter = rpk::countPackage(after);
  EXPECT_EQ(countsBefore.faultCount + countsAfter.faultCount, 0U);
  EXPECT_GT(countsBefore.triangles, 0U);
  EXPECT_GT(countsAfter.triangles, countsBefore.triangles);
  EXPECT_GT(countsBefore.nurbsObjects, 0U);
  EXPECT_EQ(countsAfter.nurbsObjects, 0U);
  EXPECT_EQ(rpk::readScene(before).option("import_up_vector"), "1");
  EXPECT_EQ(rpk::readScene(after).option("import_up_vector"), "2");
  EXPECT_TRUE(window_->statusBar()->currentMessage().contains("after.rpk")) << "says what it has written";
}

TEST_F(Walk, AMovedComponentIsUpdatedByAPick) {
  openSample();
  whenOpen("representation", accept);
  press("Rendara Render");
  shoot("rendered");
  ASSERT_EQ(machine_.renderers().size(), 1U);
  const int port = machine_.renderers().begin()->first;
  ASSERT_EQ(Machine::status(port).at("scripts_taken"), 1);
  const auto gaugePlacement = [port] {
    std::string paths;
    const nlohmann::json status = Machine::status(port);
    for (const auto& group : status.at("groups")) {
      const auto path = group.at("path").get<std::string>();
      if (path.ends_with("/pressure_gauge.prt")) return group.at("placement").get<std::vector<double>>();
      paths += "\n" + path;
    }
    throw std::runtime_error("the renderer has no gauge, only" + paths);
  };
  const std::vector<double> before = gaugePlacement();

  clickNode("pressure_gauge.prt");
  whenOpen("move", [](QWidget& dialog) {
    part<QDoubleSpinBox>(dialog, "z").setValue(60);
    shoot("move");
    accept(dialog);
  });
  trigger("move");
  waitFor("the picture", [&] { return window_->picture().complete(); });
  shoot("moved");
  press("Manual selection");
  const auto pickGauge = [&](QWidget& bar) {
    EXPECT_FALSE(window_->menuBar()->actions().front()->isEnabled()) << "nothing else can be done meanwhile";
    clickNode("pressure_gauge.prt");
    shoot("pick");
    click(part(bar, "selectionOk"));
  };
  whenOpen("selectionBar", pickGauge);
  whenOpen("representation", accept);
  press("Rendara Update");
  shoot("updated");
  EXPECT_EQ(session_.selectionsAsked, 1);
  EXPECT_EQ(Machine::status(port).at("scripts_taken"), 2);
  EXPECT_NEAR(gaugePlacement().at(14), before.at(14) + 60, 1e-3);

  // From inside the settings dialog, which makes way for the selection.
  whenOpen("Rendara_Settings", [](QWidget& dialog) { click(part(dialog, "Rendara_Update")); });
  whenOpen("selectionBar", pickGauge);
  whenOpen("representation", accept);
  press("Rendara Settings");
  EXPECT_EQ(session_.selectionsAsked, 2);
  EXPECT_EQ(Machine::status(port).at("scripts_taken"), 3);
}

TEST_F(Walk, TheTreeAndThePictureChangeTogether) {
  openSample();
  auto& tree = part<ModelTree>(*window_, "tree");
  PictureView& picture = window_->picture();
  const QPoint middle = picture.rect().center();
  ASSERT_NE(picture.pathAt(middle), nullptr);
  const PictureView::Path inTheMiddle = *picture.pathAt(middle);
  click(picture, middle);
  EXPECT_EQ(tree.selectedPaths(), std::vector<ModelTree::Path>{inTheMiddle});
  shoot("selected");
  EXPECT_FALSE(part<QAction>(*window_, "unhide").isEnabled());
  trigger("hide");
  waitFor("the picture", [&] { return picture.complete(); });
  EXPECT_TRUE(picture.pathAt(middle) == nullptr || *picture.pathAt(middle) != inTheMiddle);
  EXPECT_EQ(tree.selectedItems().front()->text(1), "hidden");
  trigger("unhide");
  waitFor("the picture", [&] { return picture.complete(); });
  EXPECT_EQ(*picture.pathAt(middle), inTheMiddle);
  trigger("suppress");
  EXPECT_FALSE(part<QAction>(*window_, "suppress").isEnabled());
  waitFor("the picture", [&] { return picture.complete(); });
  shoot("suppressed");
}

TEST_F(Walk, FailuresAreTold) {
  std::string told;
  const auto read = [&](QWidget& box) {
    told = dynamic_cast<QMessageBox&>(box).text().toStdString();
    shoot("failure");
    accept(box);
  };
  rendara::testing::writeFile(folder_.path() / "bad.step", "no model");
  whenOpen("message", read);
  window_->open(folder_.path() / "bad.step");
  EXPECT_NE(told.find("bad.step"), std::string::npos) << told;
  EXPECT_EQ(session_.current, nullptr);

  openSample();
  machine_.changeRegistry([](Registry& registry) { registry = Registry(); });
  whenOpen("representation", accept);
  whenOpen("message", read);
  press("Rendara Render");
  EXPECT_NE(told.find("Failed"), std::string::npos) << told;
}

}  // namespace
}  // namespace standin::testing

// Dialogs as windows: each kind of component shows what the session holds and sends what the user does.
#include "standin/window/dialog_window.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>

#include "standin/cad/session.h"
#include "tests/window/window_driver.h"

namespace standin::testing {
namespace {

// Texts as the toolkit declares them.
char* text(const char* literal) { return const_cast<char*>(literal); }
wchar_t* text(const wchar_t* literal) { return const_cast<wchar_t*>(literal); }

constexpr int kAccepted = 0;
constexpr int kCancelled = -3;
char* const kDialog = const_cast<char*>("Dialog");

void exitAccepted(char* dialog, char*, ProAppData) { ProUIDialogExit(dialog, kAccepted); }
void exitCancelled(char* dialog, char*, ProAppData) { ProUIDialogExit(dialog, kCancelled); }

// What the plug-in does when the user moves the slider: the other components follow.
void follow(char* dialog, char* component, ProAppData) {
  int position = 0;
  ProUISliderIntegerGet(dialog, component, &position);
  ProUISpinboxDoubleSet(dialog, text("spinbox"), position / 1000.0);
  ProUICheckbuttonSet(dialog, text("check"));
  char* name = text("b");
  ProUIRadiogroupSelectednamesSet(dialog, text("radio"), 1, &name);
  ProUIInputpanelValueSet(dialog, text("input"), text(L"followed"));
  ProUIPushbuttonEnable(dialog, text("later"));
  ProUILabelTextSet(dialog, text("label"), text(L"gr\u00fcn"));
}

class DialogWindowTest : public ::testing::Test {
 protected:
  DialogWindowTest() {
    application("offscreen");
    ProUIDialogCreate(kDialog, nullptr);
    ProUIGridopts grid{};
    ProUIDialogLabelAdd(kDialog, text("label"), &grid);
    ProUILabelTextSet(kDialog, text("label"), text(L"A <b>label</b>"));
    grid.row = 1;
    ProUIDialogSpinboxAdd(kDialog, text("spinbox"), &grid);
    ProUISpinboxInputtypeSet(kDialog, text("spinbox"), PROUIINPUTTYPE_DOUBLE);
    ProUISpinboxDigitsSet(kDialog, text("spinbox"), 2);
    ProUISpinboxMindoubleSet(kDialog, text("spinbox"), 0);
    ProUISpinboxMaxdoubleSet(kDialog, text("spinbox"), 10);
    ProUISpinboxDoubleincrementSet(kDialog, text("spinbox"), 0.05);
    ProUISpinboxFastdoubleincrementSet(kDialog, text("spinbox"), 0.1);
    ProUISpinboxDoubleSet(kDialog, text("spinbox"), 0.234);
    ProUISpinboxHelptextSet(kDialog, text("spinbox"), text(L"Less < more"));
    grid.column = 1;
    ProUIDialogSliderAdd(kDialog, text("slider"), &grid);
    ProUISliderMaxintegerSet(kDialog, text("slider"), 10000);
    ProUISliderEnableTracking(kDialog, text("slider"));
    ProUISliderUpdateActionSet(kDialog, text("slider"), follow, nullptr);
    grid = {};
    grid.row = 2;
    ProUIDialogCheckbuttonAdd(kDialog, text("check"), &grid);
    grid.column = 1;
    ProUIDialogRadiogroupAdd(kDialog, text("radio"), &grid);
    char* names[] = {text("a"), text("b"), text("c")};
    wchar_t* labels[] = {text(L"A"), text(L"B"), text(L"C")};
    ProUIRadiogroupNamesSet(kDialog, text("radio"), 3, names);
    ProUIRadiogroupLabelsSet(kDialog, text("radio"), 3, labels);
    grid = {};
    grid.row = 3;
    ProUIDialogInputpanelAdd(kDialog, text("input"), &grid);
    grid.row = 4;
    ProUIDialogSeparatorAdd(kDialog, text("separator"), &grid);
    grid.row = 5;
    ProUIDialogLayoutAdd(kDialog, text("layout"), &grid);
    grid = {};
    addButton("ok", exitAccepted, grid);
    grid.column = 1;
    addButton("Dialog_Cancel", exitCancelled, grid);
    grid.column = 2;
    addButton("later", exitAccepted, grid);
    session_.onDialog = [this](Dialog& dialog) {
      findWidget(dialog, "later")->enabled = enabledAtFirst_;
      DialogWindow(dialog, nullptr).run();
      afterwards_ = dialog;
    };
  }
  ~DialogWindowTest() override {
    ProUIDialogDestroy(kDialog);
    EXPECT_TRUE(session_.misuse().empty());
  }

  static void addButton(const char* name, ProUIAction action, ProUIGridopts& grid) {
    ProUILayoutPushbuttonAdd(kDialog, text("layout"), text(name), &grid);
    ProUIPushbuttonTextSet(kDialog, text(name), text(L"Press"));
    ProUIPushbuttonActivateActionSet(kDialog, text(name), action, nullptr);
  }

  // The dialog's result after the user has acted; he presses OK in the end when it is still open.
  int activate(const std::function<void(QWidget&)>& act) {
    whenOpen("Dialog", [&](QWidget& window) {
      act(window);
      if (window.isVisible()) part<QPushButton>(window, "ok").click();
    });
    int result = 99;
    EXPECT_EQ(ProUIDialogActivate(kDialog, &result), PRO_TK_NO_ERROR);
    return result;
  }
  const Widget& widget(const char* name) const { return *findWidget(afterwards_, name); }

  Session session_;
  Dialog afterwards_;
  bool enabledAtFirst_ = false;
};

TEST_F(DialogWindowTest, ShowsStatesAndSendsWhatTheUserDoes) {
  EXPECT_EQ(activate([](QWidget& window) {
              auto& box = part<QDoubleSpinBox>(window, "spinbox");
              EXPECT_EQ(box.text(), "0.23");
              EXPECT_EQ(box.toolTip(), "Less &lt; more") << "a tool tip is no rich text";
              EXPECT_EQ(part<QLabel>(window, "label").textFormat(), Qt::PlainText);
              box.stepBy(1);
              box.stepBy(10);
              EXPECT_EQ(box.text(), "0.38");
              part<QCheckBox>(window, "check").click();
              auto& radio = part(window, "radio");
              EXPECT_EQ(radio.findChildren<QRadioButton*>().size(), 3);
              part<QRadioButton>(radio, "c").click();
              auto& line = part<QLineEdit>(window, "input");
              QTest::keyClicks(&line, "typed");
              QTest::keyClick(&line, Qt::Key_Return);
              EXPECT_TRUE(window.isVisible()) << "Enter in a field presses no button";
            }),
            kAccepted);
  EXPECT_DOUBLE_EQ(widget("spinbox").spinbox.value, 0.384) << "steps start from the number, not from its digits";
  EXPECT_TRUE(widget("check").checked);
  EXPECT_EQ(widget("radio").radio.selected, "c");
  EXPECT_EQ(widget("input").text, L"typed");
}

TEST_F(DialogWindowTest, ANumberCountsWhenItIsTypedInFull) {
  activate([](QWidget& window) {
    auto& box = part<QDoubleSpinBox>(window, "spinbox");
    box.selectAll();
    QTest::keyClicks(&box, "7.5");
    EXPECT_EQ(part<QPushButton>(window, "ok").isEnabled(), true);
    QTest::keyClick(&box, Qt::Key_Return);
  });
  EXPECT_DOUBLE_EQ(widget("spinbox").spinbox.value, 7.5);
}

TEST_F(DialogWindowTest, ShowsWhatAnActionHasSet) {
  activate([](QWidget& window) {
    auto& later = part<QPushButton>(window, "later");
    EXPECT_FALSE(later.isEnabled());
    auto& slider = part<QSlider>(window, "slider");
    slider.setValue(4321);
    EXPECT_EQ(slider.value(), 4321);
    EXPECT_EQ(part<QDoubleSpinBox>(window, "spinbox").text(), "4.32");
    EXPECT_TRUE(part<QCheckBox>(window, "check").isChecked());
    EXPECT_TRUE(part<QRadioButton>(window, "b").isChecked());
    EXPECT_EQ(part<QLineEdit>(window, "input").text(), "followed");
    EXPECT_EQ(part<QLabel>(window, "label").text(), QString::fromUtf8("gr\u00fcn"));
    EXPECT_TRUE(later.isEnabled());
  });
  EXPECT_EQ(widget("slider").slider.value, 4321);
}

TEST_F(DialogWindowTest, TheCrossAndEscapeCancel) {
  EXPECT_EQ(activate([](QWidget& window) { window.close(); }), kCancelled);
  EXPECT_EQ(activate([](QWidget& window) { QTest::keyClick(&window, Qt::Key_Escape); }), kCancelled);
}

TEST_F(DialogWindowTest, KeepsTheGridAndWrapsWideRows) {
  ProUIGridopts grid{};
  grid.row = 1;
  for (const char* name : {"wide2", "wide3"}) {
    grid.column += 2;
    ProUIDialogLabelAdd(kDialog, text(name), &grid);
    ProUILabelTextSet(kDialog, text(name), std::wstring(60, L'w').data());
  }
  activate([](QWidget& window) {
    const auto place = [&](const char* name) { return part(window, name).mapTo(&window, QPoint(0, 0)); };
    EXPECT_EQ(place("label").x(), place("spinbox").x());
    EXPECT_LT(place("label").y(), place("spinbox").y());
    EXPECT_LT(place("spinbox").x(), place("slider").x());
    EXPECT_LT(place("ok").x(), place("Dialog_Cancel").x());
    EXPECT_GT(place("ok").x(), place("label").x() + 50) << "a layout that is attached to no side stands in the middle";
    EXPECT_GT(place("wide2").y(), place("radio").y()) << "too wide for the first band";
    EXPECT_GT(place("wide3").y(), place("wide2").y());
    EXPECT_LT(place("wide3").y(), place("separator").y());
  });
}

}  // namespace
}  // namespace standin::testing

// Components and their values, from the plug-in's side and from the user's. How dialogs begin and end is in user_test.
#include "standin/cad/dialog.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "standin/cad/session.h"
#include "tests/standin/toolkit_text.h"

namespace standin {
namespace {

using test::text;
using Lines = std::vector<std::string>;

struct Calls {
  std::vector<std::string> components;
  std::string exitOn;  // the component whose action exits the dialog
};

void record(char* dialog, char* component, ProAppData data) {
  auto& calls = *static_cast<Calls*>(data);
  calls.components.emplace_back(component);
  if (calls.exitOn == component) ProUIDialogExit(dialog, 5);
}

// A dialog with one component of each kind, named after the kind.
class DialogTest : public ::testing::Test {
 protected:
  DialogTest() {
    ProUIDialogCreate(d_, nullptr);
    ProUIDialogLabelAdd(d_, text("label"), &grid_);
    ProUIDialogSpinboxAdd(d_, text("spinbox"), &grid_);
    ProUISpinboxInputtypeSet(d_, text("spinbox"), PROUIINPUTTYPE_DOUBLE);
    ProUISpinboxUpdateActionSet(d_, text("spinbox"), record, &calls_);
    ProUIDialogSliderAdd(d_, text("slider"), &grid_);
    ProUISliderMaxintegerSet(d_, text("slider"), 10000);
    ProUISliderUpdateActionSet(d_, text("slider"), record, &calls_);
    ProUIDialogCheckbuttonAdd(d_, text("checkbutton"), &grid_);
    ProUIDialogRadiogroupAdd(d_, text("radiogroup"), &grid_);
    char* names[] = {text("x"), text("y"), text("z")};
    wchar_t* labels[] = {text(L"y"), text(L"-y"), text(L"gr\u00fcn")};
    ProUIRadiogroupLabelsSet(d_, text("radiogroup"), 3, labels);
    ProUIRadiogroupNamesSet(d_, text("radiogroup"), 3, names);
    ProUIDialogInputpanelAdd(d_, text("inputpanel"), &grid_);
    ProUIDialogSeparatorAdd(d_, text("separator"), &grid_);
    ProUIDialogLayoutAdd(d_, text("layout"), &grid_);
    ProUILayoutPushbuttonAdd(d_, text("layout"), text("pushbutton"), &grid_);
    ProUIPushbuttonActivateActionSet(d_, text("pushbutton"), record, &calls_);
  }

  // Runs the user's side with the dialog open, which is closed afterwards if it still is.
  template <typename Act>
  int whileOpen(Act act) {
    session_.onDialog = [&](Dialog& dialog) {
      act(dialog);
      if (!dialog.exitStatus) ProUIDialogExit(d_, 0);
    };
    int status = -99;
    ProUIDialogActivate(d_, &status);
    return status;
  }
  double spinbox() {
    double value = -99;
    ProUISpinboxDoubleGet(d_, text("spinbox"), &value);
    return value;
  }
  int slider() {
    int value = -99;
    ProUISliderIntegerGet(d_, text("slider"), &value);
    return value;
  }
  // The selected name; empty when none is.
  std::string selected() {
    int count = -1;
    char** names = nullptr;
    EXPECT_EQ(ProUIRadiogroupSelectednamesGet(d_, text("radiogroup"), &count, &names), PRO_TK_NO_ERROR);
    std::string name = count == 1 ? names[0] : "";
    EXPECT_EQ(ProStringarrayFree(names, count), PRO_TK_NO_ERROR);
    return name;
  }
  std::wstring input() {
    wchar_t* value = nullptr;
    EXPECT_EQ(ProUIInputpanelWidestringGet(d_, text("inputpanel"), &value), PRO_TK_NO_ERROR);
    std::wstring copy = value;
    EXPECT_EQ(ProWstringFree(value), PRO_TK_NO_ERROR);
    return copy;
  }
  bool checked() {
    ProBoolean state = PRO_B_FALSE;
    EXPECT_EQ(ProUICheckbuttonGetState(d_, text("checkbutton"), &state), PRO_TK_NO_ERROR);
    return state == PRO_B_TRUE;
  }
  ProError select(const char* name) {
    char* names[] = {text(name)};
    return ProUIRadiogroupSelectednamesSet(d_, text("radiogroup"), 1, names);
  }
  // The misuse in the end, the dialog destroyed.
  Lines misuse() {
    ProUIDialogDestroy(d_);
    session_.finish();
    return session_.misuse();
  }

  Session session_;
  Calls calls_;
  char* d_ = text("D");
  ProUIGridopts grid_ = {};
};

TEST_F(DialogTest, NumbersStayWithinTheirRanges) {
  EXPECT_EQ(ProUISpinboxDoubleSet(d_, text("spinbox"), 1e9), PRO_TK_NO_ERROR);
  EXPECT_EQ(spinbox(), 1e9) << "no range was set";
  ProUISpinboxMaxdoubleSet(d_, text("spinbox"), 1.0);
  EXPECT_EQ(spinbox(), 1.0) << "a value follows its range";
  ProUISpinboxMindoubleSet(d_, text("spinbox"), 0.0);
  ProUISpinboxDoubleSet(d_, text("spinbox"), -0.25);
  EXPECT_EQ(spinbox(), 0.0);
  const double narrowed = static_cast<double>(0.29F);
  ProUISpinboxDigitsSet(d_, text("spinbox"), 2);
  ProUISpinboxDoubleSet(d_, text("spinbox"), narrowed);
  EXPECT_EQ(spinbox(), narrowed) << "digits only show";
  for (const double bad : {std::nan(""), HUGE_VAL}) {
    EXPECT_EQ(ProUISpinboxDoubleSet(d_, text("spinbox"), bad), PRO_TK_BAD_INPUTS);
    EXPECT_EQ(ProUISpinboxMaxdoubleSet(d_, text("spinbox"), bad), PRO_TK_BAD_INPUTS);
  }
  EXPECT_EQ(ProUISpinboxDoubleincrementSet(d_, text("spinbox"), 0), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(spinbox(), narrowed);
  ProUISpinboxMindoubleSet(d_, text("spinbox"), 4.0);
  EXPECT_EQ(spinbox(), 4.0) << "the maximum gives way";

  ProUISliderIntegerSet(d_, text("slider"), 20000);
  EXPECT_EQ(slider(), 10000);
  ProUISliderMinintegerSet(d_, text("slider"), 10);
  ProUISliderMaxintegerSet(d_, text("slider"), 50);
  EXPECT_EQ(slider(), 50);
  ProUISliderIntegerSet(d_, text("slider"), -1);
  EXPECT_EQ(slider(), 10);

  EXPECT_TRUE(calls_.components.empty()) << "nothing that the plug-in sets calls it back";
  EXPECT_TRUE(misuse().empty());
}

TEST_F(DialogTest, WrongNamesKindsAndOrdersAreAnsweredAndNoted) {
  double number = -1;
  EXPECT_EQ(ProUIDialogLabelAdd(d_, text("pushbutton"), &grid_), PRO_TK_E_FOUND);
  EXPECT_EQ(ProUILayoutLabelAdd(d_, text("label"), text("inner"), &grid_), PRO_TK_E_NOT_FOUND);
  EXPECT_EQ(ProUILayoutInputpanelAdd(d_, text("layout"), text("slider"), &grid_), PRO_TK_E_FOUND);
  EXPECT_EQ(ProUISliderIntegerSet(d_, text("spinbox"), 1), PRO_TK_E_NOT_FOUND);
  EXPECT_EQ(ProUISpinboxDoubleGet(d_, text("absent"), &number), PRO_TK_E_NOT_FOUND);
  ProUISpinboxInputtypeSet(d_, text("spinbox"), PROUIINPUTTYPE_INTEGER);
  EXPECT_EQ(ProUISpinboxDoubleSet(d_, text("spinbox"), 1), PRO_TK_BAD_CONTEXT);
  EXPECT_EQ(number, -1);
  EXPECT_EQ(ProUIDialogDisableResizing(text("E")), PRO_TK_E_NOT_FOUND);
  EXPECT_EQ(misuse(), (Lines{"ProUIDialogLabelAdd: the dialog \"D\" has a component \"pushbutton\" already",
                             "ProUILayoutLabelAdd: the dialog \"D\" has no layout \"label\"",
                             "ProUILayoutInputpanelAdd: the dialog \"D\" has a component \"slider\" already",
                             "ProUISliderIntegerSet: the dialog \"D\" has no slider \"spinbox\"",
                             "ProUISpinboxDoubleGet: the dialog \"D\" has no spinbox \"absent\"",
                             "ProUISpinboxDoubleSet: the spinbox \"spinbox\" does not hold doubles",
                             "ProUIDialogDisableResizing: there is no dialog \"E\""}));
}

TEST_F(DialogTest, ReadingWhatIsNotThereLeavesTheOutputAndIsNoMisuse) {
  ProBoolean state = PRO_B_TRUE;
  wchar_t untouched[] = L"untouched";
  wchar_t* value = untouched;
  EXPECT_EQ(ProUICheckbuttonGetState(d_, text("absent"), &state), PRO_TK_E_NOT_FOUND);
  EXPECT_EQ(ProUIInputpanelWidestringGet(d_, text("absent"), &value), PRO_TK_E_NOT_FOUND);
  EXPECT_EQ(state, PRO_B_TRUE);
  EXPECT_EQ(value, untouched);
  EXPECT_TRUE(session_.misuse().empty());
  EXPECT_EQ(ProUICheckbuttonGetState(d_, text("label"), &state), PRO_TK_E_NOT_FOUND);
  EXPECT_EQ(state, PRO_B_TRUE);
  EXPECT_EQ(misuse(), Lines{"ProUICheckbuttonGetState: the dialog \"D\" has no checkbutton \"label\""});
}

TEST_F(DialogTest, RadioGroupsSelectOneOfTheirNamesOrNone) {
  EXPECT_EQ(selected(), "");
  EXPECT_EQ(select("y"), PRO_TK_NO_ERROR);
  EXPECT_EQ(select("-y"), PRO_TK_E_NOT_FOUND) << "a label is no name";
  EXPECT_EQ(selected(), "y");
  char* two[] = {text("x"), text("y")};
  EXPECT_EQ(ProUIRadiogroupSelectednamesSet(d_, text("radiogroup"), 2, two), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(ProUIRadiogroupNamesSet(d_, text("radiogroup"), 2, two), PRO_TK_NO_ERROR);
  EXPECT_EQ(selected(), "y") << "the button has stayed";
  EXPECT_EQ(ProUIRadiogroupNamesSet(d_, text("radiogroup"), 1, two), PRO_TK_NO_ERROR);
  EXPECT_EQ(selected(), "");
  char* same[] = {text("x"), text("x")};
  EXPECT_EQ(ProUIRadiogroupNamesSet(d_, text("radiogroup"), 2, same), PRO_TK_E_FOUND);
  EXPECT_EQ(select("x"), PRO_TK_NO_ERROR);
  EXPECT_EQ(ProUIRadiogroupSelectednamesSet(d_, text("radiogroup"), 0, nullptr), PRO_TK_NO_ERROR);
  EXPECT_EQ(selected(), "");
  whileOpen([](Dialog&) {});
  EXPECT_EQ(misuse(), (Lines{"ProUIRadiogroupSelectednamesSet: the radiogroup \"radiogroup\" has no button \"-y\"",
                             "ProUIRadiogroupNamesSet: two buttons of the radiogroup \"radiogroup\" have one name",
                             "ProUIDialogActivate: the radiogroup \"radiogroup\" has 1 names and 3 labels"}));
}

TEST_F(DialogTest, WhatIsHandedOutIsFreedOnceAndWhole) {
  select("z");
  int count = 0;
  char** names = nullptr;
  wchar_t* value = nullptr;
  ProUIRadiogroupSelectednamesGet(d_, text("radiogroup"), &count, &names);
  ProUIInputpanelValueSet(d_, text("inputpanel"), text(L"C:\\a.fra"));
  ProUIInputpanelWidestringGet(d_, text("inputpanel"), &value);
  EXPECT_EQ(value, std::wstring(L"C:\\a.fra"));
  EXPECT_EQ(ProWstringFree(value), PRO_TK_NO_ERROR);
  EXPECT_EQ(ProWstringFree(value), PRO_TK_BAD_INPUTS);
  wchar_t foreign[] = L"foreign";
  EXPECT_EQ(ProWstringFree(foreign), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(ProStringarrayFree(names, 2), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(ProStringarrayFree(names, 1), PRO_TK_BAD_INPUTS);
  ProUIRadiogroupSelectednamesGet(d_, text("radiogroup"), &count, &names);
  ProUIInputpanelWidestringGet(d_, text("inputpanel"), &value);
  EXPECT_EQ(misuse(),
            (Lines{"ProWstringFree: the text was freed before", "ProWstringFree: the text was never given out",
                   "ProStringarrayFree: the array holds 1 strings and not 2",
                   "ProStringarrayFree: the string array was freed before",
                   "ProUIInputpanelWidestringGet: 1 text was never freed",
                   "ProUIRadiogroupSelectednamesGet: 1 string array was never freed"}));
}

TEST_F(DialogTest, TheUserChangesValuesAsTheComponentsLetHim) {
  ProUISpinboxMindoubleSet(d_, text("spinbox"), 0);
  ProUISpinboxMaxdoubleSet(d_, text("spinbox"), 1);
  ProUISpinboxDoubleincrementSet(d_, text("spinbox"), 0.25);
  ProUISpinboxFastdoubleincrementSet(d_, text("spinbox"), 0.5);
  struct Case {
    const char *component, *value, *reason;
    double number;        // of the spin box or the slider, afterwards
    std::size_t updates;  // that it took
  };
  const std::vector<Case> cases = {
      {"spinbox", "0.3", "", 0.3, 1},
      {"spinbox", "0.30", "", 0.3, 0},
      {"spinbox", "7", "", 1, 1},
      {"spinbox", "8", "", 1, 0},
      {"spinbox", "down", "", 0.75, 1},
      {"spinbox", "fast down", "", 0.25, 1},
      {"spinbox", "up", "", 0.5, 1},
      {"spinbox", "fast up", "", 1, 1},
      {"spinbox", "0,5", "\"0,5\" is not a number", 1, 0},
      {"spinbox", "", "\"\" is not a number", 1, 0},
      {"spinbox", "nan", "\"nan\" is not a number", 1, 0},
      {"slider", "20", "", 20, 1},
      {"slider", "100 200 300", "", 300, 1},
      {"slider", "-5", "", 0, 1},
      {"slider", "10 0", "", 0, 0},
      {"slider", "10 1.5", "\"1.5\" is not a position of a slider", 0, 0},
      {"slider", " ", "a slider is set to a position", 0, 0},
      {"label", "x", "the label \"label\" has no value to set", 0, 0},
      {"pushbutton", "x", "the pushbutton \"pushbutton\" has no value to set", 0, 0},
      {"absent", "x", "the dialog \"D\" has no component \"absent\"", 0, 0},
  };
  whileOpen([&](Dialog& dialog) {
    for (const Case& one : cases) {
      SCOPED_TRACE(std::string(one.component) + " " + one.value);
      calls_.components.clear();
      EXPECT_EQ(userSet(dialog, one.component, one.value), one.reason);
      EXPECT_EQ(calls_.components, Lines(one.updates, one.component));
      // A refusal elsewhere leaves the slider, which was set last.
      EXPECT_EQ(std::string(one.component) == "spinbox" ? spinbox() : slider(), one.number);
    }
    EXPECT_EQ(userSet(dialog, "checkbutton", "on"), "");
    EXPECT_TRUE(checked());
    EXPECT_EQ(userSet(dialog, "checkbutton", "1"), "\"1\" is neither on nor off");
    EXPECT_TRUE(checked());
    EXPECT_EQ(userSet(dialog, "inputpanel", "gr\xC3\xBCn und blau"), "");
    EXPECT_EQ(input(), L"gr\u00fcn und blau");
    // A name comes before a label of the same text.
    const std::vector<std::pair<std::string, std::string>> buttons = {{"y", "y"}, {"-y", "y"}, {"gr\xC3\xBCn", "z"}};
    for (const auto& [said, name] : buttons) {
      EXPECT_EQ(userSet(dialog, "radiogroup", said), "");
      EXPECT_EQ(selected(), name) << said;
    }
    EXPECT_EQ(userSet(dialog, "radiogroup", "w"), "the radiogroup \"radiogroup\" has no button \"w\", only x y z");
    EXPECT_EQ(selected(), "z");
  });
  EXPECT_TRUE(misuse().empty());
}

TEST_F(DialogTest, ATrackingSliderUpdatesAtEachPositionUntilTheDialogCloses) {
  ProUISliderEnableTracking(d_, text("slider"));
  whileOpen([&](Dialog& dialog) {
    EXPECT_EQ(userSet(dialog, "slider", "100 200 200 300"), "");
    EXPECT_EQ(calls_.components, Lines(3, "slider"));
    calls_ = {{}, "slider"};
    EXPECT_EQ(userSet(dialog, "slider", "400 500"), "");
    EXPECT_EQ(slider(), 400);
  });
  EXPECT_EQ(calls_.components, Lines{"slider"});
}

TEST_F(DialogTest, AButtonWorksWhenItIsEnabledAndTheDialogOpen) {
  session_.onDialog = nullptr;
  const auto press = [](Dialog& dialog, const char* button) { return userPress(dialog, button); };
  Dialog* kept = nullptr;
  calls_.exitOn = "pushbutton";
  const int status = whileOpen([&](Dialog& dialog) {
    kept = &dialog;
    Widget& button = *findWidget(dialog, "pushbutton");
    button.enabled = false;
    EXPECT_EQ(press(dialog, "pushbutton"), "the pushbutton \"pushbutton\" is disabled");
    EXPECT_EQ(defaultButton(dialog), nullptr);
    EXPECT_EQ(ProUIPushbuttonEnable(d_, text("pushbutton")), PRO_TK_NO_ERROR);
    EXPECT_EQ(press(dialog, "label"), "the label \"label\" cannot be pressed");
    EXPECT_TRUE(calls_.components.empty());
    EXPECT_EQ(press(dialog, "pushbutton"), "");
    // The action asked for the end; nothing can be done any more, but the activation lasts until it returns.
    EXPECT_TRUE(dialog.active);
    EXPECT_EQ(press(dialog, "pushbutton"), "the dialog \"D\" is not open");
    EXPECT_EQ(userSet(dialog, "spinbox", "0.5"), "the dialog \"D\" is not open");
  });
  EXPECT_EQ(status, 5);
  EXPECT_EQ(press(*kept, "pushbutton"), "the dialog \"D\" is not open");
  EXPECT_EQ(calls_.components, Lines{"pushbutton"});
  EXPECT_EQ(spinbox(), 0);
}

// Exits its dialog, then shows another and reads the first, as an action does that starts an export.
void exitAndShowAnother(char* dialog, char*, ProAppData data) {
  auto& calls = *static_cast<Calls*>(data);
  ProUIDialogExit(dialog, 5);
  ProUIGridopts cell = {};
  char inner[] = "Inner", button[] = "close", spinbox[] = "spinbox";
  ProUIDialogCreate(inner, nullptr);
  ProUIDialogPushbuttonAdd(inner, button, &cell);
  ProUIPushbuttonActivateActionSet(inner, button, record, &calls);
  int status = 0;
  ProUIDialogActivate(inner, &status);
  ProUIDialogDestroy(inner);
  double value = 0;
  ProUISpinboxDoubleGet(dialog, spinbox, &value);
  calls.components.push_back(std::to_string(status) + " " + std::to_string(static_cast<int>(value)));
}

TEST_F(DialogTest, AnActionGoesOnAfterItExitedItsDialog) {
  ProUIPushbuttonActivateActionSet(d_, text("pushbutton"), exitAndShowAnother, &calls_);
  ProUISpinboxDoubleSet(d_, text("spinbox"), 7);
  calls_.exitOn = "close";
  int status = 0;
  EXPECT_EQ(ProUIDialogActivate(d_, &status), PRO_TK_NO_ERROR);
  EXPECT_EQ(status, 5);
  EXPECT_EQ(calls_.components, (Lines{"close", "5 7"}));
  EXPECT_EQ(session_.dialogsShown, (Lines{"D", "Inner"}));
  EXPECT_TRUE(misuse().empty());
}

TEST_F(DialogTest, TheDefaultIsToCancel) {
  ProUILayoutPushbuttonAdd(d_, text("layout"), text("Only_Cancel"), &grid_);
  ProUIPushbuttonActivateActionSet(d_, text("Only_Cancel"), record, &calls_);
  calls_.exitOn = "Only_Cancel";
  int status = 0;
  EXPECT_EQ(ProUIDialogActivate(d_, &status), PRO_TK_NO_ERROR);
  EXPECT_EQ(status, 5);
  EXPECT_EQ(calls_.components, Lines{"Only_Cancel"});
  EXPECT_TRUE(misuse().empty());
}

}  // namespace
}  // namespace standin

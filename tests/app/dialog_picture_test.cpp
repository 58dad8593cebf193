#include "standin/app/dialog_picture.h"

#include <gtest/gtest.h>

#include <utility>

namespace standin {
namespace {

class DialogPicture : public ::testing::Test {
 protected:
  Widget& add(WidgetKind kind, const char* name, int column, int row, std::wstring caption = {},
              const char* layout = "") {
    Widget& widget = dialog_.widgets.emplace_back();
    widget.kind = kind;
    widget.name = name;
    widget.column = column;
    widget.row = row;
    widget.text = std::move(caption);
    widget.layout = layout;
    return widget;
  }

  Dialog dialog_{"Settings", {}, true, true, {}};
};

TEST_F(DialogPicture, ShowsTheGridAndWhatEachComponentTakes) {
  add(WidgetKind::label, "quality_label", 0, 0, L"Qualit\u00e4t:");
  Widget& spinbox = add(WidgetKind::spinbox, "stepbox", 0, 1);
  spinbox.spinbox = {PROUIINPUTTYPE_DOUBLE, 0.2, 0, 1, 0.05, 0.1, 2};
  spinbox.help = L"0 is coarse.";
  add(WidgetKind::slider, "slider", 1, 1).slider = {2000, 0, 10000, 11, true};
  add(WidgetKind::label, "axis_label", 2, 0, L"Up:");
  Widget& axis = add(WidgetKind::radiogroup, "axis", 2, 1);
  axis.radio = {{"x", "y"}, {L"X", L"Y"}, "y"};
  axis.orientation = PROUIORIENTATION_VERTICAL;
  add(WidgetKind::inputpanel, "file", 0, 2, L"a.fra");
  add(WidgetKind::separator, "line", 0, 3);
  add(WidgetKind::layout, "buttons", 0, 4);
  add(WidgetKind::checkbutton, "save", 0, 0, L"Save", "buttons").checked = true;
  Widget& cancel = add(WidgetKind::pushbutton, "cancel", 1, 0, L"Cancel", "buttons");
  cancel.enabled = false;
  EXPECT_EQ(dialogPicture(dialog_), R"(+- Settings -----------------------------------------------+
| Qualität:                                          Up:   |
| [0.20] -/+                         |--O--------|   ( ) X |
|                                                    (*) Y |
| [a.fra_________________________]                         |
| -------------------------------------------------------- |
|                  [x] Save   [ Cancel ]                   |
+----------------------------------------------------------+
  stepbox  spinbox      0.20     0.00 to 1.00 by 0.05 or 0.10  0 is coarse.
  slider   slider       2000     0 to 10000
  axis     radiogroup   y        x y
  file     inputpanel   "a.fra"
  save     checkbutton  on
  cancel   pushbutton   Cancel   disabled
)");
}

TEST_F(DialogPicture, AsianCharactersTakeTwoColumns) {
  add(WidgetKind::label, "label", 0, 0, L"\u4e0a\u306e\u8ef8:");
  add(WidgetKind::checkbutton, "check", 0, 1, L"abcd");
  add(WidgetKind::pushbutton, "ok", 1, 0, L"\u9069\u7528");
  add(WidgetKind::pushbutton, "no", 1, 1, L"no").help = L"x";
  EXPECT_EQ(dialogPicture(dialog_), R"(+- Settings ----------+
| 上の軸:    [ 適用 ] |
| [ ] abcd   [ no ]   |
+---------------------+
  check  checkbutton  off
  ok     pushbutton   適用
  no     pushbutton   no    x
)");
}

TEST_F(DialogPicture, PutsColumnsThatDoNotFitBelow) {
  for (int column = 0; column < 3; ++column) {
    add(WidgetKind::label, "label", column, 0, std::wstring(40, L'a' + column));
    add(WidgetKind::label, "value", column, 1, L"value");
  }
  const std::string a(40, 'a');
  const std::string b(40, 'b');
  const std::string c(40, 'c');
  const std::string blanks(35, ' ');
  EXPECT_EQ(dialogPicture(dialog_), "+- Settings " + std::string(74, '-') + "+\n| " + a + "   " + b + " |\n| value" +
                                        blanks + "   value" + blanks + " |\n| " + std::string(83, ' ') + " |\n| " + c +
                                        std::string(43, ' ') + " |\n| value" + std::string(78, ' ') + " |\n+" +
                                        std::string(85, '-') + "+\n");
}

}  // namespace
}  // namespace standin

#include <gtest/gtest.h>

#include <deque>
#include <fstream>
#include <string>
#include <vector>

#include "tests/standin/toolkit_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/test_session.h"

namespace standin {
namespace {

using test::addAssembly;
using test::addBoxPart;
using test::text;
using Lines = std::vector<std::string>;

int answerSeven(uiCmdCmdId /*command*/, uiCmdValue* /*value*/, void* /*data*/) { return 7; }
uiCmdAccessState alwaysAvailable(uiCmdAccessMode /*mode*/) { return ACCESS_AVAILABLE; }

TEST(Commands, AreRegisteredWithIconsAndKeysAndRun) {
  const rendara::testing::TemporaryFolder folder;
  std::ofstream(folder.path() / "texts.txt") << "label\nLabel\n#\n#\nhelp\nHelp\n#\n#\n";
  Session session;
  session.messageFolder = folder.path();
  uiCmdCmdId first = 0;
  uiCmdCmdId second = 0;
  ASSERT_EQ(ProCmdActionAdd(text("One"), answerSeven, 2, alwaysAvailable, PRO_B_TRUE, PRO_B_FALSE, &first),
            PRO_TK_NO_ERROR);
  ASSERT_EQ(ProCmdActionAdd(text("Two"), answerSeven, 2, alwaysAvailable, PRO_B_TRUE, PRO_B_FALSE, &second),
            PRO_TK_NO_ERROR);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 2);
  EXPECT_EQ(ProCmdIconSet(second, text("a.png")), PRO_TK_NO_ERROR);
  EXPECT_EQ(ProCmdIconSet(second, text("b.png")), PRO_TK_NO_ERROR);
  EXPECT_EQ(ProCmdDesignate(first, text("label"), text("help"), text("d"), text(L"texts.txt")), PRO_TK_NO_ERROR);
  EXPECT_EQ(ProCmdDesignate(second, text("gone"), text("help"), text("d"), text(L"texts.txt")), PRO_TK_E_NOT_FOUND);
  EXPECT_EQ(session.findCommand("Two")->icons, (Lines{"a.png", "b.png"}));
  EXPECT_EQ(session.findCommand("Two")->labelKey, "gone");
  EXPECT_EQ(session.runCommand("Two"), 7);
  EXPECT_EQ(session.runCommand("two"), std::nullopt);
  EXPECT_TRUE(session.misuse().empty());
  EXPECT_EQ(ProCmdIconSet(0, text("a.png")), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(ProCmdActionAdd(text("One"), answerSeven, 2, nullptr, PRO_B_TRUE, PRO_B_FALSE, &second), PRO_TK_E_FOUND);
  EXPECT_EQ(session.misuse().size(), 2U);
}

// What the clock showed inside a visit's action.
RunClock insideAction;

ProError lookAtClock(ProFeature* /*feature*/, ProError /*status*/, ProAppData /*data*/) {
  insideAction = Session::active()->clock;
  return PRO_TK_NO_ERROR;
}

int doNothing(uiCmdCmdId /*command*/, uiCmdValue* /*value*/, void* /*data*/) { return 0; }

int visitFeatures(uiCmdCmdId /*command*/, uiCmdValue* /*value*/, void* /*data*/) {
  return ProSolidFeatVisit(test::solid(*Session::active()->current), lookAtClock, nullptr, nullptr);
}

int tessellate(uiCmdCmdId /*command*/, uiCmdValue* /*value*/, void* /*data*/) {
  Model& model = *Session::active()->current;
  ProTessellation tessellation = nullptr;
  ProSurfaceTessellationGet(&model, test::handle(model.surfaces[0]), nullptr, &tessellation);
  return ProTessellationFree(&tessellation);
}

TEST(Clock, GivesEachSideItsOwnTime) {
  constexpr RunClock::Duration kNone{};
  Session session;
  Model& part = addBoxPart(session, L"box");
  test::openModel(session, part);
  uiCmdCmdId id = 0;
  ProCmdActionAdd(text("Nothing"), doNothing, 2, nullptr, PRO_B_TRUE, PRO_B_FALSE, &id);
  ProCmdActionAdd(text("Visit"), visitFeatures, 2, nullptr, PRO_B_TRUE, PRO_B_FALSE, &id);
  ProCmdActionAdd(text("Tessellate"), tessellate, 2, nullptr, PRO_B_TRUE, PRO_B_FALSE, &id);
  EXPECT_EQ(session.clock.session, kNone) << "no command is running";
  ASSERT_EQ(session.runCommand("Nothing"), 0);
  EXPECT_NE(session.clock.plugin, kNone);
  EXPECT_EQ(session.clock.session, kNone);
  ASSERT_EQ(session.runCommand("Visit"), 0);
  EXPECT_NE(insideAction.session, kNone) << "the action runs on the plug-in's time: the visit's was closed before";
  EXPECT_NE(session.clock.session, insideAction.session);
  EXPECT_EQ(session.clock.tessellation, kNone);
  ASSERT_EQ(session.runCommand("Tessellate"), 0);
  EXPECT_NE(session.clock.tessellation, kNone);
}

TEST(Files, AreAnsweredFromTheQueueOfTheirKind) {
  Session session;
  struct Kind {
    decltype(&ProFileSave) ask;
    std::deque<FileAnswer>& answers;
    std::vector<FileRequest>& requests;
    std::function<FileAnswer(const FileRequest&)>& ofUser;
  };
  for (const Kind& kind : {Kind{ProFileSave, session.fileAnswers, session.fileRequests, session.onFileSave},
                           Kind{ProFileOpen, session.openAnswers, session.openRequests, session.onFileOpen}}) {
    kind.answers = {"/tmp/gr\xC3\xBCn.rpk", std::nullopt, std::string(260, 'x'), std::string(259, 'y')};
    ProPath path = L"before";
    ASSERT_EQ(kind.ask(text(L"Title"), text(L"*.rpk"), nullptr, nullptr, text(L"C:\\a"), text(L"b.rpk"), path),
              PRO_TK_NO_ERROR);
    EXPECT_STREQ(path, L"/tmp/gr\u00FCn.rpk");
    EXPECT_EQ(kind.requests[0].title, L"Title");
    EXPECT_EQ(kind.requests[0].filter, L"*.rpk");
    EXPECT_EQ(kind.requests[0].directory, L"C:\\a");
    EXPECT_EQ(kind.requests[0].name, L"b.rpk");
    const auto askAgain = [&] { return kind.ask(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, path); };
    EXPECT_EQ(askAgain(), PRO_TK_USER_ABORT);
    EXPECT_EQ(askAgain(), PRO_TK_LINE_TOO_LONG);
    EXPECT_STREQ(path, L"/tmp/gr\u00FCn.rpk") << "a failure leaves the buffer";
    EXPECT_EQ(askAgain(), PRO_TK_NO_ERROR);
    EXPECT_EQ(std::wstring(path).size(), 259U);
    EXPECT_EQ(askAgain(), PRO_TK_USER_ABORT);
    EXPECT_EQ(kind.requests.size(), 5U);
    kind.ofUser = [](const FileRequest& request) { return FileAnswer(request.title); };
    kind.answers = {"/tmp/ahead"};
    EXPECT_EQ(askAgain(), PRO_TK_NO_ERROR);
    EXPECT_STREQ(path, L"/tmp/ahead") << "an answer in the queue comes before the user";
    ASSERT_EQ(kind.ask(text(L"/tmp/asked"), nullptr, nullptr, nullptr, nullptr, nullptr, path), PRO_TK_NO_ERROR);
    EXPECT_STREQ(path, L"/tmp/asked");
  }
}

ProError select(ProSelection** picks, int* count, int most = -1, const char* option = "prt_or_asm") {
  return ProSelect(text(option), most, nullptr, nullptr, nullptr, nullptr, picks, count);
}

TEST(Selections, HoldUntilTheNextOne) {
  Session session;
  Model& part = addBoxPart(session, L"part");
  Model& top = addAssembly(session, L"top", {{&part, kIdentity}});
  ProSelection* picks = nullptr;
  int count = 0;
  EXPECT_EQ(select(&picks, &count), PRO_TK_BAD_CONTEXT) << "no model is open";
  test::openModel(session, top);
  using Paths = std::vector<std::vector<int>>;
  session.selectionAnswers = {Paths{{3, 4}, {}}, Paths{}, std::nullopt, Paths{{1}, {2}, {3}}};
  ASSERT_EQ(select(&picks, &count), PRO_TK_NO_ERROR);
  ASSERT_EQ(count, 2);
  ProAsmcomppath path;
  ASSERT_EQ(ProSelectionAsmcomppathGet(picks[0], &path), PRO_TK_NO_ERROR);
  EXPECT_EQ(path.owner, test::solid(top));
  EXPECT_EQ(path.table_num, 2);
  EXPECT_EQ(path.comp_id_tab[1], 4);
  ASSERT_EQ(ProSelectionAsmcomppathGet(picks[1], &path), PRO_TK_NO_ERROR);
  EXPECT_EQ(path.table_num, 0);
  ProSelection kept = picks[0];
  ASSERT_EQ(select(&picks, &count), PRO_TK_NO_ERROR);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(ProSelectionAsmcomppathGet(kept, &path), PRO_TK_BAD_INPUTS);
  EXPECT_EQ(select(&picks, &count), PRO_TK_USER_ABORT);
  ASSERT_EQ(select(&picks, &count, 2), PRO_TK_NO_ERROR);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(select(&picks, &count), PRO_TK_USER_ABORT);
  session.onSelection = [] { return SelectionAnswer(Paths{{7}}); };
  ASSERT_EQ(select(&picks, &count), PRO_TK_NO_ERROR);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(select(&picks, &count, -1, "prt_or_asm,nonsense"), PRO_TK_BAD_INPUTS);
  session.finish();
  EXPECT_EQ(session.misuse(), Lines{"ProSelectionAsmcomppathGet: the pick is none of the last selection"})
      << "the picks are the session's own and no leak";
}

std::wstring messageOf(const char* key) {
  wchar_t buffer[PRO_LINE_SIZE] = L"untouched";
  const ProError status = ProMessageToBuffer(buffer, text(L"texts.txt"), text(key), "narrow", 42);
  return status == PRO_TK_NO_ERROR ? buffer : std::to_wstring(static_cast<int>(status)) + L" " + buffer;
}

TEST(Messages, ComeFromGroupsOfFourLines) {
  const rendara::testing::TemporaryFolder folder;
  const auto write = [&](const std::string& content) {
    std::ofstream(folder.path() / "texts.txt", std::ios::binary) << content;
  };
  Session session;
  session.messageFolder = folder.path();
  EXPECT_EQ(messageOf("key"), L"-4 untouched") << "there is no file";
  write(
      "\xEF\xBB\xBF! a comment\r\n\r\nkey\r\nA text\r\n#\r\n#\r\n"
      "translated\nEnglish\n\xC3\x9C"
      "bersetzt\n\n"
      "empty translation\nEnglish\n\n\n"
      "! between\n!notAKey\nKEY\nOther case\n#\n#\n"
      "key\nA later one\n#\n#\n"
      "mark\n! no comment inside a group\n#\n#\n"
      "arguments\n%CI%0s is %1d, %1d of 100%% or %7d %w\n#\n#\n"
      "long\n" +
      std::string(100, 'l') +
      "\n#\n#\n"
      "cut short\nEnd");
  EXPECT_EQ(messageOf("key"), L"A text");
  EXPECT_EQ(messageOf("KEY"), L"Other case");
  EXPECT_EQ(messageOf("translated"), L"\u00DCbersetzt");
  EXPECT_EQ(messageOf("empty translation"), L"English");
  EXPECT_EQ(messageOf("mark"), L"! no comment inside a group");
  EXPECT_EQ(messageOf("arguments"), L"narrow is 42, 42 of 100% or  %w");
  EXPECT_EQ(messageOf("long"), std::wstring(80, L'l'));
  EXPECT_EQ(messageOf("cut short"), L"End");
  EXPECT_EQ(messageOf("A text"), L"-4 untouched") << "a text is no key";
  EXPECT_EQ(session.message(L"texts.txt", "long")->size(), 100U);
  write("key\nA changed and longer text\n#\n#\n");
  EXPECT_EQ(messageOf("key"), L"A changed and longer text");
}

struct Pressed {
  std::vector<std::string> components;
  int exitWith = 0;
  int neededPresses = 1;
};

void onPress(char* dialog, char* component, ProAppData data) {
  auto& pressed = *static_cast<Pressed*>(data);
  pressed.components.emplace_back(component);
  if (static_cast<int>(pressed.components.size()) == pressed.neededPresses) {
    ProUIDialogExit(dialog, pressed.exitWith);
  }
}

class Dialogs : public ::testing::Test {
 protected:
  void build() {
    ProUIGridopts grid = {};
    grid.column = 1;
    ASSERT_EQ(ProUIDialogCreate(text("D"), nullptr), PRO_TK_NO_ERROR);
    ASSERT_EQ(ProUIDialogLabelAdd(text("D"), text("label"), &grid), PRO_TK_NO_ERROR);
    ASSERT_EQ(ProUILabelTextSet(text("D"), text("label"), text(L"Done")), PRO_TK_NO_ERROR);
    for (const char* button : {"idle", "ok", "cancel"}) {
      ASSERT_EQ(ProUIDialogPushbuttonAdd(text("D"), text(button), &grid), PRO_TK_NO_ERROR);
    }
    for (const char* button : {"ok", "cancel"}) {
      ASSERT_EQ(ProUIPushbuttonActivateActionSet(text("D"), text(button), onPress, &pressed), PRO_TK_NO_ERROR);
    }
  }

  Session session;
  Pressed pressed;
  int result = 99;
};

TEST_F(Dialogs, TheFirstButtonThatDoesSomethingIsPressedUntilTheDialogEnds) {
  build();
  pressed = {{}, -3, 2};
  EXPECT_EQ(ProUIDialogActivate(text("D"), &result), PRO_TK_NO_ERROR);
  EXPECT_EQ(result, -3);
  EXPECT_EQ(pressed.components, (Lines{"ok", "ok"}));
  EXPECT_EQ(ProUIDialogDestroy(text("D")), PRO_TK_NO_ERROR);
  EXPECT_EQ(session.dialogsShown, Lines{"D"});
  build();
  session.onDialog = [&](Dialog& dialog) {
    EXPECT_EQ(dialog.widgets[0].text, L"Done");
    EXPECT_EQ(dialog.widgets[0].column, 1);
    EXPECT_FALSE(session.press(dialog, "label"));
    EXPECT_TRUE(session.press(dialog, "cancel"));
  };
  pressed = {};
  EXPECT_EQ(ProUIDialogActivate(text("D"), nullptr), PRO_TK_NO_ERROR);
  EXPECT_EQ(pressed.components, Lines{"cancel"});
  EXPECT_EQ(ProUIDialogDestroy(text("D")), PRO_TK_NO_ERROR);
  session.finish();
  EXPECT_TRUE(session.misuse().empty());
}

TEST_F(Dialogs, WrongOrdersOfCallsAreAnsweredAndNoted) {
  build();
  ProUIGridopts grid = {};
  EXPECT_EQ(ProUIDialogCreate(text("D"), nullptr), PRO_TK_E_FOUND);
  EXPECT_EQ(ProUIDialogLabelAdd(text("D"), text("ok"), &grid), PRO_TK_E_FOUND);
  EXPECT_EQ(ProUILabelTextSet(text("D"), text("ok"), text(L"a button is no label")), PRO_TK_E_NOT_FOUND);
  EXPECT_EQ(ProUIDialogActivate(text("E"), &result), PRO_TK_E_NOT_FOUND);
  EXPECT_EQ(ProUIDialogExit(text("D"), 0), PRO_TK_BAD_CONTEXT);
  session.onDialog = [&](Dialog&) {
    EXPECT_EQ(ProUIDialogActivate(text("D"), &result), PRO_TK_BAD_CONTEXT);
    EXPECT_EQ(ProUIDialogDestroy(text("D")), PRO_TK_BAD_CONTEXT);
  };
  EXPECT_EQ(ProUIDialogActivate(text("D"), &result), PRO_TK_GENERAL_ERROR);
  EXPECT_EQ(result, 99);
  session.finish();
  EXPECT_EQ(
      session.misuse(),
      (Lines{"ProUIDialogCreate: there is a dialog \"D\" already",
             "ProUIDialogLabelAdd: the dialog \"D\" has a component \"ok\" already",
             "ProUILabelTextSet: the dialog \"D\" has no label \"ok\"", "ProUIDialogActivate: there is no dialog \"E\"",
             "ProUIDialogExit: the dialog \"D\" is not active",
             "ProUIDialogActivate: the dialog \"D\" is active already",
             "ProUIDialogDestroy: the dialog \"D\" is active", "ProUIDialogActivate: nothing ended the dialog \"D\"",
             "ProUIDialogCreate: the dialog \"D\" was never destroyed"}));
}

}  // namespace
}  // namespace standin

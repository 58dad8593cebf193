// The dialogs as a user meets them, with the commands that they run.
#include <functional>
#include <string>
#include <vector>

#include "standin/cad/dialog.h"
#include "tests/core/plugin_fixture.h"

namespace rendara {
namespace {

using standin::Dialog;
using standin::userPress;
using standin::userSet;
using standin::Widget;
using standin::test::addAssembly;
using standin::test::addBoxPart;
using standin::test::openModel;

constexpr char kSpinbox[] = "stepbox";
constexpr char kSlider[] = "Rendara_Tess_Level_Slider";
constexpr char kSettingsFile[] = "rendara_plugin_settings.xml";

class DialogTest : public testing::PluginTest {
 protected:
  DialogTest() {
    componentId = top.addComponent(part, standin::kIdentity).id;
    openModel(session, top);
  }

  static const Widget& widget(const Dialog& dialog, const std::string& name) {
    const Widget* found = standin::findWidget(dialog, name);
    if (found == nullptr) {
      throw std::runtime_error("no component " + name);
    }
    return *found;
  }
  static void press(Dialog& dialog, const std::string& name) { EXPECT_EQ(userPress(dialog, name), ""); }
  static void set(Dialog& dialog, const std::string& name, const std::string& text) {
    EXPECT_EQ(userSet(dialog, name, text), "") << name;
  }
  // What the user does in the settings dialog.
  void inSettings(const std::function<void(Dialog&)>& act) {
    session.onDialog = act;
    run("Rendara Settings");
    session.onDialog = nullptr;
  }
  static std::string savedElement(const std::string& name) {
    const std::string text = testing::readFile(kSettingsFile);
    const std::size_t begin = text.find("<" + name + ">") + name.size() + 2;
    return text.substr(begin, text.find('<', begin) - begin);
  }

  standin::Model& part = addBoxPart(session, L"part");
  standin::Model& top = addAssembly(session, L"top");
  int componentId = 0;
};

TEST_F(DialogTest, SettingsStandInTheirGridInOrder) {
  std::string shown;
  inSettings([&](Dialog& dialog) {
    EXPECT_FALSE(dialog.resizable);
    for (const Widget& one : dialog.widgets) {
      shown += std::string(standin::kindName(one.kind)) + " " + one.name + " " + std::to_string(one.column) + "," +
               std::to_string(one.row) + (one.layout.empty() ? "" : " in " + one.layout) + "\n";
    }
    press(dialog, "Rendara_Cancel");
  });
  EXPECT_EQ(shown,
            "label Rendara_Tess_Level_Label 0,0\n"
            "spinbox stepbox 0,1\n"
            "label Rendara_Tess_Level_Slider_Label 1,0\n"
            "slider Rendara_Tess_Level_Slider 1,1\n"
            "label Rendara_Materials_Label 2,0\n"
            "checkbutton Rendara_Separate_Materials_Check 2,1\n"
            "label Rendara_NURBS_Label 3,0\n"
            "checkbutton Rendara_NURBS_Check 3,1\n"
            "label Rendara_Axis_Label 4,0\n"
            "radiogroup Rendara_Axis_Radiogroup 4,1\n"
            "label Rendara_Update_Label 5,0\n"
            "radiogroup Rendara_Update_Radiogroup 5,1\n"
            "label Rendara_Mechanism_Prompt_Label 6,0\n"
            "checkbutton Rendara_Mechanism_Prompt_Check 6,1\n"
            "separator Rendara_OK_Separator 0,2\n"
            "layout Rendara_OK_Layout 0,3\n"
            "pushbutton Rendara_Update 0,0 in Rendara_OK_Layout\n"
            "pushbutton Rendara_Export 1,0 in Rendara_OK_Layout\n"
            "pushbutton Rendara_OK 2,0 in Rendara_OK_Layout\n"
            "pushbutton Rendara_Cancel 3,0 in Rendara_OK_Layout\n");
}

TEST_F(DialogTest, SettingsShowWhatTheFileSays) {
  testing::writeFile(kSettingsFile,
                     "<?xml version=\"1.0\" ?><s><tessellationQuality>0.75</tessellationQuality><upAxis>4</upAxis>"
                     "<selectionMode>manual</selectionMode><includeNURBS>false</includeNURBS>"
                     "<separateMaterials>true</separateMaterials><promptForMechanism>true</promptForMechanism></s>");
  inSettings([&](Dialog& dialog) {
    EXPECT_EQ(widget(dialog, kSpinbox).spinbox.value, 0.75);
    EXPECT_EQ(widget(dialog, kSpinbox).spinbox.digits, 2);
    EXPECT_EQ(widget(dialog, kSlider).slider.value, 7500);
    EXPECT_EQ(widget(dialog, kSlider).slider.maximum, 10000);
    EXPECT_EQ(widget(dialog, "Rendara_Axis_Radiogroup").radio.selected, "nyaxis");
    EXPECT_EQ(widget(dialog, "Rendara_Axis_Radiogroup").radio.labels[4], L"-y");
    EXPECT_EQ(widget(dialog, "Rendara_Update_Radiogroup").radio.selected, "manual");
    EXPECT_FALSE(widget(dialog, "Rendara_NURBS_Check").checked);
    EXPECT_TRUE(widget(dialog, "Rendara_Separate_Materials_Check").checked);
    EXPECT_TRUE(widget(dialog, "Rendara_Mechanism_Prompt_Check").checked);
    EXPECT_EQ(widget(dialog, "Rendara_NURBS_Label").text, L"NURBS:");
    EXPECT_EQ(widget(dialog, "Rendara_Export").text, session.message(L"rendara_msg.txt", "rendaraRender"))
        << "the button that renders is called so";
    const std::wstring& help = widget(dialog, "Rendara_Mechanism_Prompt_Check").help;
    const std::wstring whole = *session.message(L"rendara_msg.txt", "rendaraPromptForMechanismHelp") +
                               *session.message(L"rendara_msg.txt", "rendaraPromptForMechanismHelp2");
    EXPECT_EQ(help, whole.substr(0, 127));
    press(dialog, "Rendara_Cancel");
  });
}

TEST_F(DialogTest, TessellationControlsFollowEachOther) {
  inSettings([&](Dialog& dialog) {
    set(dialog, kSpinbox, "0.29");
    EXPECT_EQ(plugin().settings.tessellationQuality, static_cast<double>(0.29F)) << "at once, in single precision";
    EXPECT_EQ(widget(dialog, kSlider).slider.value, 2899) << "truncated";
    set(dialog, kSlider, "3333");
    EXPECT_EQ(widget(dialog, kSpinbox).spinbox.value, static_cast<double>(0.3333F));
    set(dialog, kSpinbox, "0.2");
    EXPECT_EQ(widget(dialog, kSlider).slider.value, 2000);
    press(dialog, "Rendara_Cancel");
  });
}

TEST_F(DialogTest, CancelUndoesTheLastChangeOnlyAndSavesNothing) {
  inSettings([&](Dialog& dialog) {
    set(dialog, kSlider, "3000");
    set(dialog, kSlider, "4000");
    set(dialog, "Rendara_Axis_Radiogroup", "z");
    press(dialog, "Rendara_Cancel");
  });
  EXPECT_EQ(plugin().settings.tessellationQuality, static_cast<double>(0.3F));
  EXPECT_EQ(plugin().settings.upAxis, 1);
  EXPECT_FALSE(std::filesystem::exists(kSettingsFile));
}

TEST_F(DialogTest, OkReadsEverythingBackAndSaves) {
  plugin().settings.exportPath = L"kept.rpk";
  plugin().saveSettings();
  plugin().settings.savePackage = true;
  inSettings([&](Dialog& dialog) {
    set(dialog, kSpinbox, "0.5");
    set(dialog, "Rendara_Axis_Radiogroup", "nzaxis");
    set(dialog, "Rendara_Update_Radiogroup", "manual");
    set(dialog, "Rendara_NURBS_Check", "on");
    set(dialog, "Rendara_Separate_Materials_Check", "off");
    set(dialog, "Rendara_Mechanism_Prompt_Check", "on");
    press(dialog, "Rendara_OK");
  });
  EXPECT_EQ(savedElement("tessellationQuality"), "0.500000");
  EXPECT_EQ(savedElement("upAxis"), "5");
  EXPECT_EQ(savedElement("selectionMode"), "manual");
  EXPECT_EQ(savedElement("includeNURBS"), "true");
  EXPECT_EQ(savedElement("separateMaterials"), "false");
  EXPECT_EQ(savedElement("promptForMechanism"), "true");
  EXPECT_EQ(savedElement("exportPath"), "kept.rpk");
  EXPECT_FALSE(plugin().settings.savePackage) << "there is no component to tell otherwise";
  EXPECT_EQ(session.findCommand("Manual selection")->icons.back(), "rd_update_checked.png");
  EXPECT_EQ(session.findCommand("Automatic selection")->icons.back(), "rd_update_unchecked.png");
}

TEST_F(DialogTest, ValuesThatNoButtonStandsForAreKept) {
  testing::writeFile(kSettingsFile, "<?xml version=\"1.0\" ?><s><upAxis>7</upAxis></s>");
  plugin().settings.selectionMode = 3;
  inSettings([&](Dialog& dialog) {
    EXPECT_FALSE(widget(dialog, "Rendara_Axis_Radiogroup").radio.selected);
    EXPECT_FALSE(widget(dialog, "Rendara_Update_Radiogroup").radio.selected);
    press(dialog, "Rendara_OK");
  });
  EXPECT_EQ(savedElement("upAxis"), "7");
  EXPECT_EQ(plugin().settings.selectionMode, 3);
}

TEST_F(DialogTest, ButtonsRunUpdateAndRenderWhileTheDialogStands) {
  inSettings([&](Dialog& dialog) {
    set(dialog, kSpinbox, "0.5");
    press(dialog, "Rendara_Export");
    EXPECT_EQ(link->modes, std::vector<LinkMode>{LinkMode::kLaunch});
    EXPECT_EQ(dialog.exitStatus, 0);
  });
  EXPECT_EQ(tree(), "top(part.prt(*))");
  EXPECT_EQ(savedElement("tessellationQuality"), "0.500000");
  inSettings([&](Dialog& dialog) { press(dialog, "Rendara_Update"); });
  EXPECT_EQ(link->modes.back(), LinkMode::kUpdate);
  EXPECT_EQ(tree(), "top(part.prt())");
}

TEST_F(DialogTest, WithoutAModelNoSettingsAreShown) {
  session.current = nullptr;
  testing::writeFile(kSettingsFile, "<?xml version=\"1.0\" ?><s><upAxis>3</upAxis></s>");
  EXPECT_FALSE(plugin().showSettingsDialog());
  EXPECT_TRUE(session.dialogsShown.empty());
  EXPECT_EQ(plugin().settings.upAxis, 3) << "the file is read all the same";
}

TEST_F(DialogTest, TellsWhetherItWasAccepted) {
  session.onDialog = [](Dialog& dialog) { press(dialog, "Rendara_OK"); };
  EXPECT_TRUE(plugin().showSettingsDialog());
  session.onDialog = [](Dialog& dialog) { press(dialog, "Rendara_Cancel"); };
  EXPECT_FALSE(plugin().showSettingsDialog());
}

class MechanismPrompt : public DialogTest {
 protected:
  MechanismPrompt() {
    plugin().settings.promptForMechanism = true;
    std::string records;
    for (int frame = 0; frame < 3; ++frame) {
      records += "MaFrame " + std::to_string(frame) + "\nPart: 1 (" + std::to_string(componentId) +
                 ")\n1 0 0\n0 1 0\n0 0 1\n" + std::to_string(frame) + " 0 0\n";
    }
    testing::writeFile("motion.fra", "parts: 1\nframes: 3\n" + records);
  }

  std::vector<std::string> shown;
};

TEST_F(MechanismPrompt, FramesOfTheChosenFileBecomeTheAnimation) {
  const std::string file = (folder.path() / "motion.fra").string();
  session.openAnswers = {std::nullopt, standin::FileAnswer(file)};
  session.onDialog = [&](Dialog& dialog) {
    EXPECT_EQ(dialog.name, "Rendara_Animation");
    EXPECT_TRUE(widget(dialog, "Rendara_Animation_Export").enabled) << "a file can be named without looking for it";
    set(dialog, "Rendara_Animation_Inputpanel", "typed");
    press(dialog, "Rendara_Animation_Browse");
    EXPECT_EQ(widget(dialog, "Rendara_Animation_Inputpanel").text, L"typed") << "a cancelled choice changes nothing";
    press(dialog, "Rendara_Animation_Browse");
    press(dialog, "Rendara_Animation_Export");
  };
  render();
  EXPECT_EQ(plugin().settings.fraPath, (folder.path() / "motion.fra").wstring());
  EXPECT_EQ(savedElement("fraPath"), file);
  EXPECT_EQ(link->scene.count("beginAnimation"), 1);
  plugin().settings.promptForMechanism = false;
  session.onDialog = nullptr;
  render();
  EXPECT_EQ(link->scene.count("beginAnimation"), 0) << "frames belong to one command";
}

TEST_F(MechanismPrompt, CancelEndsTheCommand) {
  session.onDialog = [](Dialog& dialog) { press(dialog, "Rendara_Animation_Cancel"); };
  render();
  update();
  EXPECT_TRUE(link->modes.empty());
  EXPECT_FALSE(std::filesystem::exists(kSettingsFile));
}

TEST_F(MechanismPrompt, AFileThatCannotBeReadLeavesNoFramesAndTheExportGoesOn) {
  session.onDialog = [](Dialog& dialog) {
    set(dialog, "Rendara_Animation_Inputpanel", "missing.fra");
    press(dialog, "Rendara_Animation_Export");
  };
  render();
  EXPECT_EQ(tree(), "top(part.prt(*))");
  EXPECT_EQ(link->scene.count("beginAnimation"), 0);
}

TEST_F(MechanismPrompt, RenderThatWritesAPackageAsksTwice) {
  plugin().exportToFile = true;
  plugin().settings.exportPath = (folder.path() / "render.rpk").wstring();
  session.onDialog = [](Dialog& dialog) { press(dialog, "Rendara_Animation_Export"); };
  render();
  EXPECT_EQ(session.dialogsShown, std::vector<std::string>(2, "Rendara_Animation"));
  EXPECT_TRUE(std::filesystem::exists(folder.path() / "render.rpk"));
}

}  // namespace
}  // namespace rendara

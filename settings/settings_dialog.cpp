#include "settings/settings_dialog.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "settings/cad_text.h"
#include "settings/dialog_building.h"
#include "settings/messages.h"

namespace rendara {
namespace {

constexpr char kSettingsDialog[] = "Rendara_Settings";
constexpr char kSpinbox[] = "stepbox";
constexpr char kSlider[] = "Rendara_Tess_Level_Slider";
constexpr char kMaterialsCheck[] = "Rendara_Separate_Materials_Check";
constexpr char kNurbsCheck[] = "Rendara_NURBS_Check";
constexpr char kAxisGroup[] = "Rendara_Axis_Radiogroup";
constexpr char kSelectionGroup[] = "Rendara_Update_Radiogroup";
constexpr char kMechanismCheck[] = "Rendara_Mechanism_Prompt_Check";
constexpr char kButtonLayout[] = "Rendara_OK_Layout";
// Read back, but part of no dialog.
constexpr char kSaveCheck[] = "Rendara_Save_Checkbutton";
constexpr char kDirectoryPanel[] = "Rendara_Directory_Inputpanel";

constexpr std::array<const char*, 6> kAxisNames = {"xaxis", "yaxis", "zaxis", "nxaxis", "nyaxis", "nzaxis"};
constexpr char kAutomatic[] = "automatic";
constexpr char kManual[] = "manual";

constexpr int kColumns = 7;
constexpr int kSliderSteps = 10000;
constexpr std::size_t kHelpSize = 128;  // characters with the terminator

char* settingsDialog() { return toolkitText(kSettingsDialog); }

// Where the slider stands for a quality: truncated, so that 0.29 in single precision gives 2899.
int sliderPosition(double quality) {
  const double position = std::trunc(quality * kSliderSteps);
  constexpr double kLowest = std::numeric_limits<int>::lowest();
  constexpr double kHighest = std::numeric_limits<int>::max();
  return std::isnan(position) ? 0 : static_cast<int>(std::clamp(position, kLowest, kHighest));
}

class SettingsDialogBuilder {
 public:
  SettingsDialogBuilder(char* dialog, const PluginSettings& settings, const SettingsDialogActions& actions)
      : dialog_(dialog), settings_(settings), actions_(actions) {}

  void build() {
    addSpinbox();
    addSlider();
    addMaterials();
    addNurbs();
    addAxis();
    addSelection();
    addMechanism();
    addButtons();
    ProUIDialogDisableResizing(dialog_);
  }

 private:
  void addLabel(const char* name, int column, wchar_t* text) {
    ProUIGridopts grid = cell(column, 0);
    ProUIDialogLabelAdd(dialog_, toolkitText(name), &grid);
    ProUILabelTextSet(dialog_, toolkitText(name), text);
    ProUILabelUnattachLeft(dialog_, toolkitText(name));
  }

  void addSpinbox() {
    addLabel("Rendara_Tess_Level_Label", 0, MessageText("rendaraSettingsLabelTess").text());
    char* const name = toolkitText(kSpinbox);
    ProUIGridopts grid = cell(0, 1);
    ProUIDialogSpinboxAdd(dialog_, name, &grid);
    ProUISpinboxInputtypeSet(dialog_, name, PROUIINPUTTYPE_DOUBLE);
    ProUISpinboxDigitsSet(dialog_, name, 2);
    ProUISpinboxMindoubleSet(dialog_, name, 0.0);
    ProUISpinboxMaxdoubleSet(dialog_, name, 1.0);
    ProUISpinboxDoubleincrementSet(dialog_, name, 0.05);
    ProUISpinboxFastdoubleincrementSet(dialog_, name, 0.1);
    ProUISpinboxDoubleSet(dialog_, name, settings_.tessellationQuality);
    ProUISpinboxHelptextSet(dialog_, name, MessageText("rendaraSettingsTessHelp").text());
    ProUISpinboxUpdateActionSet(dialog_, name, actions_.spinboxChanged, actions_.data);
  }

  void addSlider() {
    addLabel("Rendara_Tess_Level_Slider_Label", 1, MessageText("rendaraSettingsLabelTess").text());
    char* const name = toolkitText(kSlider);
    ProUIGridopts grid = cell(1, 1);
    ProUIDialogSliderAdd(dialog_, name, &grid);
    ProUISliderOrientationSet(dialog_, name, PROUIORIENTATION_HORIZONTAL);
    ProUISliderEnableTracking(dialog_, name);
    ProUISliderLengthSet(dialog_, name, 25);
    ProUISliderMinintegerSet(dialog_, name, 0);
    ProUISliderMaxintegerSet(dialog_, name, kSliderSteps);
    ProUISliderIntegerSet(dialog_, name, sliderPosition(settings_.tessellationQuality));
    ProUISliderHelptextSet(dialog_, name, MessageText("rendaraSettingsTessHelp").text());
    ProUISliderUpdateActionSet(dialog_, name, actions_.sliderMoved, actions_.data);
  }

  void addCheck(const char* component, int column, const char* labelKey, wchar_t* help, bool checked) {
    char* const name = toolkitText(component);
    ProUIGridopts grid = cell(column, 1);
    ProUIDialogCheckbuttonAdd(dialog_, name, &grid);
    ProUICheckbuttonTextSet(dialog_, name, MessageText(labelKey).text());
    ProUICheckbuttonHelptextSet(dialog_, name, help);
    if (checked) {
      ProUICheckbuttonSet(dialog_, name);
    }
  }

  void addMaterials() {
    addLabel("Rendara_Materials_Label", 2, MessageText("rendaraSettingsLabelMaterials").text());
    addCheck(kMaterialsCheck, 2, "rendaraSettingsSeparateMaterialsLabel",
             MessageText("rendaraSettingsSeparateMaterialsHelp").text(), settings_.separateMaterials);
  }

  void addNurbs() {
    addLabel("Rendara_NURBS_Label", 3, toolkitText(L"NURBS:"));
    addCheck(kNurbsCheck, 3, "rendaraSettingsNURBSLabel", MessageText("rendaraSettingsNURBSHelp").text(),
             settings_.includeNURBS);
  }

  template <std::size_t count>
  void addGroup(const char* component, int column, const std::array<const char*, count>& names,
                const std::array<wchar_t*, count>& labels, const char* helpKey) {
    char* const name = toolkitText(component);
    ProUIGridopts grid = cell(column, 1);
    std::array<char*, count> nameTexts{};
    std::transform(names.begin(), names.end(), nameTexts.begin(), [](const char* text) { return toolkitText(text); });
    std::array<wchar_t*, count> labelTexts = labels;
    ProUIDialogRadiogroupAdd(dialog_, name, &grid);
    ProUIRadiogroupOrientationSet(dialog_, name, PROUIORIENTATION_HORIZONTAL);
    ProUIRadiogroupNamesSet(dialog_, name, static_cast<int>(count), nameTexts.data());
    ProUIRadiogroupLabelsSet(dialog_, name, static_cast<int>(count), labelTexts.data());
    ProUIRadiogroupHelptextSet(dialog_, name, MessageText(helpKey).text());
  }

  void select(const char* component, const char* name) {
    char* selected = toolkitText(name);
    ProUIRadiogroupSelectednamesSet(dialog_, toolkitText(component), 1, &selected);
  }

  void addAxis() {
    addLabel("Rendara_Axis_Label", 4, MessageText("rendaraSettingsAxisLabel").text());
    addGroup<kAxisNames.size()>(kAxisGroup, 4, kAxisNames,
                                {toolkitText(L"x"), toolkitText(L"y"), toolkitText(L"z"), toolkitText(L"-x"),
                                 toolkitText(L"-y"), toolkitText(L"-z")},
                                "rendaraSettingsAxisHelp");
    if (settings_.upAxis >= 0 && settings_.upAxis < static_cast<int>(kAxisNames.size())) {
      select(kAxisGroup, kAxisNames[static_cast<std::size_t>(settings_.upAxis)]);
    }
  }

  void addSelection() {
    addLabel("Rendara_Update_Label", 5, MessageText("rendaraSettingsSelectionLabel").text());
    MessageText automatic("rendaraSettingsAutomatic");
    MessageText manual("rendaraSettingsManual");
    addGroup<2>(kSelectionGroup, 5, {kAutomatic, kManual}, {automatic.text(), manual.text()},
                "rendaraSettingsSelectionHelp");
    if (settings_.selectionMode == kManualSelection) {
      select(kSelectionGroup, kManual);
    } else if (settings_.selectionMode == kAutomaticSelection) {
      select(kSelectionGroup, kAutomatic);
    }
  }

  void addMechanism() {
    addLabel("Rendara_Mechanism_Prompt_Label", 6, MessageText("rendaraPromptForMechanismLabel").text());
    std::wstring help = MessageText("rendaraPromptForMechanismHelp").text();
    help += MessageText("rendaraPromptForMechanismHelp2").text();
    help.resize(std::min(help.size(), kHelpSize - 1));
    addCheck(kMechanismCheck, 6, "rendaraPromptForMechanismCheck", help.data(), settings_.promptForMechanism);
  }

  void addButton(const char* component, int column, const char* textKey, const char* helpKey, ProUIAction action) {
    char* const name = toolkitText(component);
    ProUIGridopts grid = cell(column, 0);
    ProUILayoutPushbuttonAdd(dialog_, toolkitText(kButtonLayout), name, &grid);
    ProUIPushbuttonTextSet(dialog_, name, MessageText(textKey).text());
    ProUIPushbuttonHelptextSet(dialog_, name, MessageText(helpKey).text());
    ProUIPushbuttonActivateActionSet(dialog_, name, action, actions_.data);
  }

  void addButtons() {
    ProUIGridopts separatorCells = cell(0, 2, kColumns);
    ProUIDialogSeparatorAdd(dialog_, toolkitText("Rendara_OK_Separator"), &separatorCells);
    ProUIGridopts layoutCells = cell(0, 3, kColumns);
    char* const layout = toolkitText(kButtonLayout);
    ProUIDialogLayoutAdd(dialog_, layout, &layoutCells);
    ProUILayoutUnattachLeft(dialog_, layout);
    ProUILayoutUnattachRight(dialog_, layout);
    addButton("Rendara_Update", 0, "rendaraUpdate", "rendaraSettingsUpdateHelp", actions_.update);
    // This button exports by rendering, and is called so.
    addButton("Rendara_Export", 1, "rendaraRender", "rendaraSettingsExportHelp", actions_.exportModel);
    addButton("Rendara_OK", 2, "rendaraOK", "rendaraSettingsOkHelp", actions_.accept);
    addButton("Rendara_Cancel", 3, "rendaraCancel", "rendaraSettingsCancelHelp", actions_.cancel);
  }

  char* dialog_;
  const PluginSettings& settings_;
  const SettingsDialogActions& actions_;
};

// The name of the selected button; empty when there is none.
std::string selectedName(const char* component) {
  int count = 0;
  char** names = nullptr;
  ProUIRadiogroupSelectednamesGet(settingsDialog(), toolkitText(component), &count, &names);
  std::string selected = names != nullptr && count > 0 && names[0] != nullptr ? names[0] : "";
  if (names != nullptr) {
    ProStringarrayFree(names, count);
  }
  return selected;
}

bool isChecked(const char* component) {
  ProBoolean state = PRO_B_FALSE;
  ProUICheckbuttonGetState(settingsDialog(), toolkitText(component), &state);
  return state == PRO_B_TRUE;
}

void readAxis(PluginSettings& settings) {
  const std::string name = selectedName(kAxisGroup);
  const auto found = std::find_if(kAxisNames.begin(), kAxisNames.end(), [&](const char* axis) { return name == axis; });
  if (found != kAxisNames.end()) {
    settings.setUpAxis(static_cast<int>(std::distance(kAxisNames.begin(), found)));
  }
}

void readSelection(PluginSettings& settings, const SelectionCommands& commands) {
  const std::string name = selectedName(kSelectionGroup);
  if (name == kManual || name == kAutomatic) {
    setSelectionMode(settings, commands, name == kManual);
  }
}

void readSavePath(PluginSettings& settings) {
  ProBoolean state = PRO_B_FALSE;
  ProUICheckbuttonGetState(settingsDialog(), toolkitText(kSaveCheck), &state);
  if (state != PRO_B_FALSE) {
    CadText path;
    ProUIInputpanelWidestringGet(settingsDialog(), toolkitText(kDirectoryPanel), path.receive());
    settings.setExportPath(path.text());
  }
  settings.setSavePackage(state != PRO_B_FALSE);
}

void setQualityFromSpinbox(PluginSettings& settings) {
  double quality = settings.tessellationQuality;
  ProUISpinboxDoubleGet(settingsDialog(), toolkitText(kSpinbox), &quality);
  settings.setTessellationQuality(static_cast<float>(quality));
}

}  // namespace

bool runSettingsDialog(const PluginSettings& settings, const SettingsDialogActions& actions) {
  const CadDialog dialog(kSettingsDialog);
  SettingsDialogBuilder(dialog.name(), settings, actions).build();
  return dialog.run();
}

void takeSliderQuality(PluginSettings& settings) {
  int position = 0;
  ProUISliderIntegerGet(settingsDialog(), toolkitText(kSlider), &position);
  settings.setTessellationQuality(static_cast<float>(position) / static_cast<float>(kSliderSteps));
  ProUISpinboxDoubleSet(settingsDialog(), toolkitText(kSpinbox), settings.tessellationQuality);
}

void takeSpinboxQuality(PluginSettings& settings) {
  setQualityFromSpinbox(settings);
  ProUISliderIntegerSet(settingsDialog(), toolkitText(kSlider), sliderPosition(settings.tessellationQuality));
}

void readSettingsDialog(PluginSettings& settings, const SelectionCommands& commands) {
  setQualityFromSpinbox(settings);
  readAxis(settings);
  readSelection(settings, commands);
  readSavePath(settings);
  settings.setIncludeNURBS(isChecked(kNurbsCheck));
  settings.setSeparateMaterials(isChecked(kMaterialsCheck));
  settings.setPromptForMechanism(isChecked(kMechanismCheck));
}

void exitSettingsDialog(int status) { ProUIDialogExit(settingsDialog(), status); }

}  // namespace rendara

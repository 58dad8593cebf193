// A plug-in that does wrong on purpose, one way per command. With RENDARA_TEST_REFUSES its entry reports a failure;
// with RENDARA_TEST_INTERRUPTS its export is interrupted by the user half-way.
#include <csignal>
#include <cstdio>
#include <string>

#include "platform/creo_toolkit.h"
#include "platform/windows_api.h"

namespace {

#ifdef RENDARA_TEST_INTERRUPTS
constexpr bool kInterrupts = true;
#else
constexpr bool kInterrupts = false;
#endif
#ifdef RENDARA_TEST_REFUSES
constexpr bool kRefuses = true;
#else
constexpr bool kRefuses = false;
#endif

ProMdl currentModel() {
  ProMdl model = nullptr;
  ProMdlCurrentGet(&model);
  return model;
}

// Writes the text where the user wants it; nothing when he cancels.
void writeWhereAsked(const std::string& text, bool interrupted) {
  wchar_t title[] = L"Save as rpk";
  wchar_t filter[] = L"*.rpk";
  ProPath folder = L"";
  ProFileName name = L"";
  ProPath path = L"";
  if (ProFileSave(title, filter, nullptr, nullptr, folder, name, path) != PRO_TK_NO_ERROR) return;
  std::FILE* file = _wfopen(path, L"wb+");
  if (!file) return;
  std::fwrite(text.data(), 1, text.size(), file);
  std::fflush(file);
  if (interrupted) raise(SIGTERM);
  std::fclose(file);
}

int exportCut(uiCmdCmdId, uiCmdValue*, void*) {
  if (std::FILE* settings = std::fopen("rendara_plugin_settings.xml", "a")) std::fclose(settings);
  writeWhereAsked("\ngroup \"cut\" {\n", kInterrupts);
  return 0;
}

int exportComplete(uiCmdCmdId, uiCmdValue*, void*) {
  writeWhereAsked("\ngroup \"complete\" {\n}\n", false);
  return 0;
}

int leak(uiCmdCmdId, uiCmdValue*, void*) {
  WVerstamp stamp = nullptr;
  ProMdlVerstampGet(currentModel(), &stamp);
  return 0;
}

// Reads one element past the layers of each component that is on any.
int readPast(uiCmdCmdId, uiCmdValue*, void*) {
  const auto visit = [](ProFeature* feature, ProError, ProAppData) {
    ProLayerItem item = {};
    ProLayer* layers = nullptr;
    ProLayerItemInit(PRO_LAYER_FEAT, feature->id, feature->owner, &item);
    if (ProLayeritemLayersGet(&item, &layers) != PRO_TK_NO_ERROR) return PRO_TK_NO_ERROR;
    int count = 0;
    ProArraySizeGet(static_cast<ProArray>(layers), &count);
    const volatile ProLayer* end = layers + count;
    static_cast<void>(static_cast<int>(end->type));
    auto array = static_cast<ProArray>(layers);
    ProArrayFree(&array);
    return PRO_TK_NO_ERROR;
  };
  ProSolidFeatVisit(static_cast<ProSolid>(currentModel()), visit, nullptr, nullptr);
  return 0;
}

// Opens what is on every machine, and closes what it never had.
int leaveOpen(uiCmdCmdId, uiCmdValue*, void*) {
  HKEY key = nullptr;
  RegOpenKeyExW(HKEY_CURRENT_USER, L"SOFTWARE", 0, KEY_READ, &key);
  LoadLibraryW(L"libc.so.6");
  CloseHandle(nullptr);
  return 0;
}

void copySliderToSpinbox(char* dialog, char* slider, ProAppData) {
  int position = 0;
  ProUISliderIntegerGet(dialog, slider, &position);
  ProUISpinboxDoubleSet(dialog, const_cast<char*>("Quality"), position / 100.0);
}

// An action may ask for a file before it returns.
void browse(char* dialog, char*, ProAppData) {
  wchar_t title[] = L"Locate";
  wchar_t filter[] = L"*.fra";
  ProPath folder = L"";
  ProFileName name = L"";
  ProPath path = L"";
  if (ProFileOpen(title, filter, nullptr, nullptr, folder, name, path) != PRO_TK_NO_ERROR) return;
  ProUIInputpanelValueSet(dialog, const_cast<char*>("File"), path);
}

// Exits the dialog and then prints what stood in it.
void acceptDialog(char* dialog, char*, ProAppData) {
  double quality = 0;
  int count = 0;
  char** axis = nullptr;
  wchar_t* file = nullptr;
  ProUIDialogExit(dialog, 0);
  ProUISpinboxDoubleGet(dialog, const_cast<char*>("Quality"), &quality);
  ProUIRadiogroupSelectednamesGet(dialog, const_cast<char*>("Axis"), &count, &axis);
  ProUIInputpanelWidestringGet(dialog, const_cast<char*>("File"), &file);
  std::printf("quality %.2f, axis %s, file %ls", quality, count == 1 ? axis[0] : "none", file);
  ProStringarrayFree(axis, count);
  ProWstringFree(file);
}

void cancelDialog(char* dialog, char*, ProAppData) { ProUIDialogExit(dialog, -3); }

void addButton(char* dialog, const char* name, const wchar_t* caption, int column, ProUIAction action) {
  ProUIGridopts cell = {};
  cell.column = column;
  ProUILayoutPushbuttonAdd(dialog, const_cast<char*>("Buttons"), const_cast<char*>(name), &cell);
  ProUIPushbuttonTextSet(dialog, const_cast<char*>(name), const_cast<wchar_t*>(caption));
  ProUIPushbuttonActivateActionSet(dialog, const_cast<char*>(name), action, nullptr);
}

void addValues(char* dialog) {
  char quality[] = "Quality", slider[] = "Slider", axis[] = "Axis", file[] = "File";
  wchar_t help[] = L"0 is coarse, 1 is fine.";
  ProUIGridopts cell = {};
  ProUIDialogSpinboxAdd(dialog, quality, &cell);
  ProUISpinboxInputtypeSet(dialog, quality, PROUIINPUTTYPE_DOUBLE);
  ProUISpinboxMindoubleSet(dialog, quality, 0);
  ProUISpinboxMaxdoubleSet(dialog, quality, 1);
  ProUISpinboxHelptextSet(dialog, quality, help);
  cell.column = 1;
  ProUIDialogSliderAdd(dialog, slider, &cell);
  ProUISliderUpdateActionSet(dialog, slider, copySliderToSpinbox, nullptr);
  cell = {};
  cell.row = 1;
  ProUIDialogRadiogroupAdd(dialog, axis, &cell);
  char x[] = "xaxis", y[] = "yaxis";
  char* names[] = {x, y};
  wchar_t xLabel[] = L"x", yLabel[] = L"y";
  wchar_t* labels[] = {xLabel, yLabel};
  ProUIRadiogroupNamesSet(dialog, axis, 2, names);
  ProUIRadiogroupLabelsSet(dialog, axis, 2, labels);
  cell.row = 2;
  ProUIDialogInputpanelAdd(dialog, file, &cell);
}

int showDialog(uiCmdCmdId, uiCmdValue*, void*) {
  char dialog[] = "Values", buttons[] = "Buttons", line[] = "Line";
  ProUIGridopts cell = {};
  ProUIDialogCreate(dialog, nullptr);
  addValues(dialog);
  cell.row = 3;
  ProUIDialogSeparatorAdd(dialog, line, &cell);
  cell.row = 4;
  ProUIDialogLayoutAdd(dialog, buttons, &cell);
  addButton(dialog, "Browse", L"Browse...", 0, browse);
  addButton(dialog, "Values_OK", L"OK", 1, acceptDialog);
  addButton(dialog, "Values_Cancel", L"Cancel", 2, cancelDialog);
  int status = 0;
  ProUIDialogActivate(dialog, &status);
  ProUIDialogDestroy(dialog);
  return status;
}

// A fault, which the sanitizer of undefined behaviour is not to end in its own way.
__attribute__((no_sanitize("undefined"))) int crash(uiCmdCmdId, uiCmdValue*, void*) {
  volatile int* volatile nowhere = nullptr;
  *nowhere = 1;  // NOLINT(clang-analyzer-core.NullDereference)
  return 0;
}

void add(const char* name, uiCmdCmdActFn action) {
  std::string text = name;
  uiCmdCmdId id = 0;
  const auto available = [](uiCmdAccessMode) { return ACCESS_AVAILABLE; };
  ProCmdActionAdd(text.data(), action, 0, available, PRO_B_TRUE, PRO_B_TRUE, &id);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int user_initialize_plus() {
  add("Rendara Export", exportCut);
  add("Complete", exportComplete);
  add("Leak", leak);
  add("Leave open", leaveOpen);
  add("Read past", readPast);
  add("Crash", crash);
  add("Dialog", showDialog);
  return kRefuses ? -1 : 0;
}

extern "C" __attribute__((visibility("default"))) void user_terminate_plus() {}

#include "standin/window/window_program.h"

#include <QApplication>
#include <QTimer>
#include <clocale>
#include <cstdlib>

#include "standin/app/misuse.h"
#include "standin/app/plugin_host.h"
#include "standin/app/scratch_directory.h"
#include "standin/window/main_window.h"

namespace standin {
namespace {

// Qt would end the process by abort().
void requireDisplay() {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return;
  }
  throw Failure(ExitCode::kUsage, "--window: there is no display (DISPLAY is not set)");
}

}  // namespace

void runWindow(const CommonOptions& common, const WindowOptions& options) {
  requireDisplay();
  int argumentCount = 1;
  char name[] = "creo-standin";
  char* arguments[] = {name, nullptr};
  const QApplication application(argumentCount, arguments);
  // It has set the user's locale, in which numbers may read otherwise.
  std::setlocale(LC_NUMERIC, "C");
  ScratchDirectory scratch;
  Session session;
  applyOptions(common, session);
  PluginHost plugin(common.plugin);
  WindowProgress progress;
  Workbench bench(session, plugin, progress, scratch.origin());
  if (common.codePage) bench.keepCodePage();
  plugin.load();
  {
    MainWindow window(bench, progress);
    window.show();
    if (options.model) QTimer::singleShot(0, &window, [&] { window.open(*options.model); });
    QApplication::exec();
  }
  plugin.unload(session);
  session.finish();
  throwMisuse(session, common.plugin, {});
}

}  // namespace standin

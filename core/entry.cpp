// What the CAD system calls when it loads and unloads the library.
#include "core/command_table.h"
#include "core/plugin.h"

#ifdef _WIN32
#define RENDARA_EXPORT __declspec(dllexport)
#else
#define RENDARA_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

RENDARA_EXPORT int user_initialize_plus() {
  try {
    rendara::registerCommands(rendara::RendaraPlugin::instance());
  } catch (...) {
    // Loading never fails; the commands then do nothing.
  }
  return 0;
}

RENDARA_EXPORT void user_terminate_plus() { rendara::RendaraPlugin::destroyInstance(); }
}

#include "standin/windows/machine_folder.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace standin {
namespace {

// Empty when the variable is not set.
std::filesystem::path pathOfVariable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::filesystem::path homeFolder() {
  std::filesystem::path home = pathOfVariable("HOME");
  if (!home.empty()) {
    return home;
  }
  const passwd* user = getpwuid(getuid());
  if (user == nullptr || user->pw_dir == nullptr) {
    throw std::runtime_error("there is no home folder; RENDARA_MACHINE can name the machine's folder");
  }
  return user->pw_dir;
}

}  // namespace

std::filesystem::path machineFolder() {
  std::filesystem::path named = pathOfVariable("RENDARA_MACHINE");
  if (named.is_absolute()) {
    return named;
  }
  if (!named.empty()) {
    throw std::runtime_error("RENDARA_MACHINE is not an absolute path: " + named.string());
  }
  std::filesystem::path state = pathOfVariable("XDG_STATE_HOME");
  return (state.is_absolute() ? state : homeFolder() / ".local" / "state") / "rendara-standin";
}

}  // namespace standin

// There the folder holds the list of the renderers only; the registry is the system's.
#include <cstdlib>
#include <stdexcept>

#include "standin/windows/machine_folder.h"

namespace standin {

std::filesystem::path machineFolder() {
  if (const wchar_t* named = _wgetenv(L"RENDARA_MACHINE"); named != nullptr && *named != L'\0') {
    if (std::filesystem::path folder = named; folder.is_absolute()) return folder;
    throw std::runtime_error("RENDARA_MACHINE is not an absolute path");
  }
  if (const wchar_t* data = _wgetenv(L"LOCALAPPDATA"); data != nullptr && *data != L'\0') {
    return std::filesystem::path(data) / "rendara-standin";
  }
  throw std::runtime_error("there is no folder for the user's data; RENDARA_MACHINE can name the machine's folder");
}

}  // namespace standin

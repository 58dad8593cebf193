// How the plug-in finds the renderer: values of the machine's registry.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace standin {

struct Installation {
  std::filesystem::path program;
  std::filesystem::path binFolder;  // of the live-link library
  int port = 49152;                 // told to plug-ins that find no renderer on the list
  // UTF-8. Options, without their dashes, that a renderer without a command line starts with.
  std::map<std::string, std::string> options;
};

// Writes the values, after taking out those of an installation before. Both throw std::runtime_error.
void install(const Installation& installation);
void uninstall();

// The options as they would stand on a command line; none when nothing is installed. Throws std::runtime_error.
std::vector<std::string> installedArguments(const std::vector<std::string>& names);

// The folder of the live-link library that was built or installed with this program; none when it is not there.
std::optional<std::filesystem::path> findLibraryFolder(const std::filesystem::path& program);

}  // namespace standin

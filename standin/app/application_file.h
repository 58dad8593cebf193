// The file by which the CAD system is told of a plug-in (creotk.dat).
#pragma once

#include <filesystem>

namespace standin {

struct Application {
  std::filesystem::path plugin;
  std::filesystem::path messages;  // the folder of its message files
};

// Reads the first entry. Relative paths mean the file's folder; both kinds of slashes do. Throws Failure(kUsage) with
// the line of what is wrong: no such file, a line without a value, an entry that has no "end", no "name" or no
// "exec_file", or that does not start as a "dll".
Application readApplicationFile(const std::filesystem::path& file);

}  // namespace standin

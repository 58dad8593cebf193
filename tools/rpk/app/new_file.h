// What the operating system is asked for files that are to be written.
#pragma once

#include <filesystem>

namespace rpk {

// Makes a file that was not there, empty. 0, or an error number: EEXIST when it was there.
int makeNewFile(const std::filesystem::path& path);

// 0, or the error number that says why this user cannot write the file.
int writingRefused(const std::filesystem::path& file);

// The number of this process.
int processNumber();

}  // namespace rpk

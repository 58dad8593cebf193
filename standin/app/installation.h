// Where the program finds what belongs to it, in a build tree and where it was installed.
#pragma once

#include <filesystem>

namespace standin {

inline constexpr const char* kMessageFile = "rendara_msg.txt";

// The folder of the running program.
std::filesystem::path programFolder();
// The plug-in that belongs to the program; the first place that was searched when there is none.
std::filesystem::path findPlugin(const std::filesystem::path& programFolder);
// The folder of the message file; the first place that was searched when there is none.
std::filesystem::path findMessages(const std::filesystem::path& programFolder);

}  // namespace standin

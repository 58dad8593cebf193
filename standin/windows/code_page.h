// The code page of the stand-in Windows operations, and what they noticed of files that were written.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace standin {

// The system code page that CP_ACP stands for; 1252 unless told otherwise. False when it is not known.
bool setSystemCodePage(unsigned codePage);
unsigned systemCodePage();

// UTF-8 to wide text and back; invalid input gives U+FFFD.
std::wstring wideFromUtf8(const std::string& text);
std::string utf8FromWide(const std::wstring& text);

// The first failure to open or to write a file that was opened through _wfopen since the last call of
// forgetFileFailures: the path and the system's message.
struct FileFailure {
  std::filesystem::path path;
  std::string message;
};
std::optional<FileFailure> fileFailure();
void forgetFileFailures();

}  // namespace standin

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <string>
#include <vector>

#include "platform/windows_api.h"
#include "standin/app/program.h"
#include "standin/windows/code_page.h"
// Needs windows.h before it.
#include <shellapi.h>

int main() {
  // Arguments in UTF-8, as paths and texts are everywhere in the program; line ends as they are written.
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> texts;
  for (int index = 0; index < count; ++index) texts.push_back(standin::utf8FromWide(wide[index]));
  LocalFree(wide);
  std::vector<const char*> arguments;
  for (const std::string& text : texts) arguments.push_back(text.c_str());
  _setmode(_fileno(stdout), _O_BINARY);
  return static_cast<int>(standin::runProgram(count, arguments.data()));
}

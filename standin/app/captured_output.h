// What a command of the plug-in prints.
#pragma once

#include <string>

namespace standin {

// Standard output goes into a buffer of the system while this lives; where that cannot be had it stays as it is.
class CapturedOutput {
 public:
  CapturedOutput();
  ~CapturedOutput();
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  // Ends the capture and gives what was printed.
  std::string end();

 private:
  int original_ = -1;  // the descriptor that standard output had
  int buffer_ = -1;
};

}  // namespace standin

// The head of a script: its header lines and the import options, whose order tells which command wrote them.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/rpk/check_reporter.h"

namespace rpk {

class ScriptCheck {
 public:
  explicit ScriptCheck(CheckReporter& reporter) : reporter_(reporter) {}

  void comment(const Comment& comment, bool atTop);
  // A block at the top of the file.
  void openTopBlock(const Block& block);
  void option(std::string_view name, const Place& place);
  void closeOptions(const Place& place);
  void end();

 private:
  enum class Command { kRender, kExport, kUpdate };
  struct Option {
    std::string_view name;
    Place place;
  };

  bool has(int line) const { return (seenLines_ >> static_cast<unsigned>(line) & 1U) != 0; }
  void checkVariant(std::string_view text, const Place& place);
  void endHeader();
  Command command() const;

  CheckReporter& reporter_;
  unsigned seenLines_ = 0;  // bits of the header's lines
  int lastLine_ = -1;
  int variant_ = 0;
  Place variantPlace_;
  bool headerEnded_ = false;
  bool exactSurfaceModule_ = false;
  bool optionsModule_ = false;
  bool scene_ = false;
  std::vector<Option> options_;  // of the block that is open
};

}  // namespace rpk

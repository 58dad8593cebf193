// Where the parts of the check report to.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/rpk/check.h"

namespace rpk {

// Keeps the open blocks for the paths, the findings with their limits, and hands back the pages that are done with.
class CheckReporter {
 public:
  CheckReporter(std::string_view bytes, const CheckLimits& limits, const PassedBytes& passed)
      : bytes_(bytes), limits_(limits), passed_(passed) {}

  void openBlock(const Block& block);
  void closeBlock() { open_.pop_back(); }

  void report(CheckKind kind, const Place& place, std::string_view what);
  // The place of a value within the array of a parameter that begins at `parameter`.
  Place placeOf(const ArrayView& array, const Place& parameter, const char* value) const;

  // The range is done with; everything before `offset` is.
  void passed(std::string_view range) const;
  void passedUntil(std::size_t offset);

  std::string_view bytes() const { return bytes_; }
  CheckReport& result() { return report_; }

 private:
  std::string path() const;

  CheckReport report_;
  std::string_view bytes_;
  CheckLimits limits_;
  const PassedBytes& passed_;
  std::size_t passedOffset_ = 0;
  std::vector<std::string_view> open_;  // the opening lines as they stand in the file
};

}  // namespace rpk

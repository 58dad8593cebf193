// Models whose size makes tests long.
#pragma once

#include <algorithm>
#include <iterator>
#include <string_view>

namespace rendara::testing {

// Whether a sanitizer's run leaves a model out: under one it takes long, and smaller ones walk the same code.
inline bool leftOutUnderSanitizers([[maybe_unused]] std::string_view file) {
#ifdef RENDARA_SANITIZED
  constexpr std::string_view kLarge[] = {"many_roots_metre.stp", "nist_ctc_02_asme1_ap242-1.stp",
                                         "printable_case_full.stp", "s1_pe_214.stp", "linkrods.step"};
  return std::any_of(std::begin(kLarge), std::end(kLarge), [&](std::string_view end) { return file.ends_with(end); });
#else
  return false;
#endif
}

}  // namespace rendara::testing

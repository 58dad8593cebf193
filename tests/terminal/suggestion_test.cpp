#include "tools/terminal/suggestion.h"

#include <gtest/gtest.h>

namespace terminal {
namespace {

TEST(SuggestionTest, CountsSingleEditsAndSwaps) {
  EXPECT_EQ(editDistance("", ""), 0U);
  EXPECT_EQ(editDistance("", "abc"), 3U);
  EXPECT_EQ(editDistance("abc", ""), 3U);
  EXPECT_EQ(editDistance("exprot", "export"), 1U);
  EXPECT_EQ(editDistance("kitten", "sitting"), 3U);
  EXPECT_EQ(editDistance("Rendara", "rendara"), 0U);
  // A swap may not be edited again in between.
  EXPECT_EQ(editDistance("ca", "abc"), 3U);
}

TEST(SuggestionTest, SuggestsTheNearestOnlyWhenItIsNear) {
  const std::vector<std::string> names = {"--no-nurbs", "--quality", "--up"};
  EXPECT_EQ(didYouMean("--no-nurb", names), "; did you mean --no-nurbs?");
  EXPECT_EQ(didYouMean("--qaulity", names), "; did you mean --quality?");
  EXPECT_EQ(didYouMean("--verbose", names), "");
  EXPECT_EQ(didYouMean("x", {}), "");
  EXPECT_EQ(didYouMean("zz", {"ab"}), "");
}

}  // namespace
}  // namespace terminal

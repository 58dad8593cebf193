#include "standin/app/script_line.h"

#include <gtest/gtest.h>

#include "standin/app/failure.h"

namespace standin {
namespace {

using Words = std::vector<std::string>;

TEST(ScriptLineTest, PartsWordsAtBlanks) {
  EXPECT_EQ(splitScriptLine("  move\t3/5 1   2 -3.5 \r"), (Words{"move", "3/5", "1", "2", "-3.5"}));
  EXPECT_EQ(splitScriptLine(" \t "), Words());
  EXPECT_EQ(splitScriptLine(""), Words());
}

TEST(ScriptLineTest, TakesQuotedWordsWhole) {
  EXPECT_EQ(splitScriptLine(R"(open "my model.step" 'it''s'.json)"), (Words{"open", "my model.step", "its.json"}));
  EXPECT_EQ(splitScriptLine(R"(rename "" "a \"b\" \\ \n")"), (Words{"rename", "", R"(a "b" \ \n)"}));
  EXPECT_EQ(splitScriptLine(R"('a\')"), Words{R"(a\)"});
}

TEST(ScriptLineTest, EndsAtACommentBetweenWords) {
  EXPECT_EQ(splitScriptLine("tree # all of it"), Words{"tree"});
  EXPECT_EQ(splitScriptLine("# nothing 'open"), Words());
  EXPECT_EQ(splitScriptLine("open a#b \"# c\""), (Words{"open", "a#b", "# c"}));
}

TEST(ScriptLineTest, RefusesAQuoteThatIsNotClosed) {
  EXPECT_THROW(splitScriptLine("open 'a b"), Failure);
  EXPECT_THROW(splitScriptLine("open \"a\\\""), Failure);
}

}  // namespace
}  // namespace standin

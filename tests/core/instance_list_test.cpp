#include "core/instance_list.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace rendara {
namespace {

std::string instance(const std::string& version, const std::string& port) {
  return "<rendara_instance><version_major>" + version + "</version_major><livelink_port>" + port +
         "</livelink_port></rendara_instance>";
}

struct ListCase {
  const char* name;
  std::string text;
  std::set<int> ports;
};

class InstanceListTest : public ::testing::TestWithParam<ListCase> {};

TEST_P(InstanceListTest, GivesThePorts) { EXPECT_EQ(parseInstanceList(GetParam().text, 5), GetParam().ports); }

const std::string kGood = instance("5", "2000");
const ListCase kCases[] = {
    {"Empty", "", {}},
    {"NoList", "The quick brown fox </livelink_port> <version_major>", {}},
    {"SortedAndOnce", instance("6", "3000") + instance("5", "2000") + instance("5", "3000"), {2000, 3000}},
    {"OldVersionPassedOver", instance("4", "1000") + kGood, {2000}},
    {"NumbersAsTextBegins", instance(" 5.9", " +2001 ") + instance("5beta", "2002x"), {2001, 2002}},
    {"PortsThatAreNone",
     instance("5", "0") + instance("5", "-1") + instance("5", "65536") + instance("5", "99999999999") +
         instance("5", "") + instance("5", "65535"),
     {65535}},
    {"MissingVersionEnds", kGood + "<rendara_instance><livelink_port>7</livelink_port>", {2000}},
    {"MissingPortEnds", kGood + "<rendara_instance><version_major>5</version_major>", {2000}},
    {"OldOneNeedsNoPort", "<rendara_instance><version_major>4</version_major>" + kGood, {2000}},
    {"CutInATag", kGood + "<rendara_instance><version_major>5</version_maj", {2000}},
    {"CutInANumber", kGood + "<rendara_instance><version_major>5</version_major><livelink_port>30", {2000}},
    {"TagsOfTheNextInstanceAreTaken", "<rendara_instance>" + kGood + instance("5", "2001"), {2000, 2001}},
    {"PortBeforeTheVersion",
     "<rendara_instance><livelink_port>8</livelink_port><version_major>5</version_major></rendara_instance>",
     {8}},
    {"ClosingTagOnlyBefore", "<rendara_instance></version_major><version_major>5" + std::string(), {}},
};
INSTANTIATE_TEST_SUITE_P(Texts, InstanceListTest, ::testing::ValuesIn(kCases),
                         [](const auto& test) { return std::string(test.param.name); });

// A search that began anew at every instance would not end here.
TEST(InstanceList, HugeTextIsReadOnce) {
  std::string text;
  for (int i = 0; i < 400'000; ++i) {
    text += "<rendara_instance>";
  }
  EXPECT_EQ(parseInstanceList(text, 5), std::set<int>{});
  EXPECT_EQ(parseInstanceList(text + kGood, 5), std::set<int>{2000});
}

}  // namespace
}  // namespace rendara

#include "tools/rpk/package_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>

#include "tests/rpk/package_text.h"

namespace {

using rpk_test::packedDoubles;
using rpk_test::packedFloats;
using rpk_test::packedHead;
using rpk_test::packedIntegers;

// One line of text per event.
class Recorder : public rpk::PackageVisitor {
 public:
  std::vector<std::string> events;
  std::vector<std::string> faults;
  std::vector<rpk::Place> faultPlaces;
  std::vector<rpk::ArrayView> arrays;

  void comment(const rpk::Comment& comment) override {
    events.push_back((comment.header() ? "header " : "comment ") + std::string(comment.text));
  }
  void openBlock(const rpk::Block& block) override {
    std::string text = "open";
    if (!block.directive.empty()) text += " " + std::string(block.directive);
    text += " <" + std::string(block.keyword) + ">" + words(block.words);
    events.push_back(text);
  }
  void closeBlock(const rpk::BlockEnd& end) override { events.emplace_back(end.missing ? "close missing" : "close"); }
  void parameter(const rpk::Parameter& parameter) override {
    std::string text = parameter.quoted ? "quoted " : "plain ";
    text += std::string(parameter.name) + " =";
    if (parameter.array) {
      arrays.push_back(*parameter.array);
      text += " array of " + std::to_string(parameter.array->count());
    }
    events.push_back(text + words(parameter.words));
  }
  void line(const rpk::Line& line) override {
    events.push_back("line <" + std::string(line.keyword) + ">" + words(line.words));
  }
  void fault(const rpk::Fault& fault) override {
    faults.push_back(fault.path + ": " + fault.what);
    faultPlaces.push_back(fault.place);
  }

 private:
  static std::string words(std::span<const rpk::Word> list) {
    std::string text;
    for (const rpk::Word& word : list) {
      const bool name = word.kind == rpk::Word::Kind::kName;
      text += name ? " '" + std::string(word.text) + "'" : " " + std::string(word.text);
    }
    return text;
  }
};

// `text` must outlive the arrays.
Recorder record(const std::string& text) {
  Recorder recorder;
  const std::size_t faultCount = rpk::readPackage(text, recorder);
  EXPECT_EQ(faultCount, recorder.faults.size());
  return recorder;
}

using Events = std::vector<std::string>;

TEST(PackageReader, TellsHeaderLinesFromComments) {
  const Recorder read = record("//---vantor:dal:5---\n//---id:1---\r\n// This is a Rendara scene file\n\n//---\n");
  EXPECT_EQ(read.events, (Events{"header //---vantor:dal:5---", "header //---id:1---",
                                 "comment // This is a Rendara scene file", "comment //---"}));
  EXPECT_TRUE(read.faults.empty());
}

TEST(PackageReader, ReadsBlocksAndBothFormsOfParameters) {
  const Recorder read = record(
      "load \"vntrtopt.so\" {\n  \"import_mode\" on,\n  \"meter_scale\" 1e+06,\n  \"name\" \"a, b {\",\n}\n"
      "\n#define   group \"a\" {\n  transform_like 1 2 3\n  projection \"orthographic\"\n  shown off\n  nothing \n}\n"
      "#modify \ncamera {\n}\nframe 5 {\n}\nmotion 0.5 {\n  transform 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n}\n");
  EXPECT_EQ(read.events,
            (Events{"open <load> load 'vntrtopt.so'", "quoted import_mode = on", "quoted meter_scale = 1e+06",
                    "quoted name = 'a, b {'", "close", "open #define <group> group 'a'", "plain transform_like = 1 2 3",
                    "plain projection = 'orthographic'", "plain shown = off", "plain nothing =", "close",
                    "open #modify <camera> camera", "close", "open <frame> frame 5", "close",
                    "open <motion> motion 0.5", "line <transform> 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", "close"}));
  EXPECT_TRUE(read.faults.empty());
}

TEST(PackageReader, ReadsSingleLines) {
  const Recorder read = record(
      "group \"a\" {\n  set transform 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n  flags 4294967295\n  id 1\n"
      "  material \"steel\"\n  instance xXe9\n  attribute \"a\" \"b\"\n  caustic photons 7\n  caustics store off\n"
      "  invisible on\n  progress \"half\" 0.500000\n\n  icon bX00ff  \n}\n\nrender\n");
  EXPECT_EQ(read.events, (Events{"open <group> group 'a'", "line <set transform> 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1",
                                 "line <flags> 4294967295", "line <id> 1", "line <material> 'steel'",
                                 "line <instance> '\xe9'", "line <attribute> 'a' 'b'", "line <caustic photons> 7",
                                 "line <caustics store> off", "line <invisible> on", "line <progress> 'half' 0.500000",
                                 "line <icon> 00ff", "close", "line <render>"}));
}

TEST(PackageReader, DecodesNames) {
  const Recorder read = record(
      "group xX612262 {\n  \"\" \"\",\n  \"of\" xX0a0d,\n  \"upper\" xX4A4b,\n  xX6b6579 2,\n  \"no name\" xXyz,\n}\n");
  EXPECT_EQ(read.events, (Events{"open <group> group 'a\"b'", "quoted  = ''", "quoted of = '\n\r'",
                                 "quoted upper = 'JK'", "quoted key = 2", "quoted no name = xXyz", "close"}));
  EXPECT_TRUE(read.faults.empty());
}

TEST(PackageReader, ReadsInlineShadersAsBlocks) {
  const Recorder read = record(
      "object \"a\" {\n  material \"m\" {\n    surface \"vnt_advanced\" {\n      \"diffuse\" 0.5 0.5 0.5,\n"
      "      \"diffuse\" ! \"texture_rgb\" {\n        \"project\" 3,\n      }      ,\n      \"alpha\" 1,\n    }\n  "
      "}\n}\n"
      "camera {\n  reflection map \"vnt_envmap\" {\n    \"radius\" 25,\n  }\n  fov 55\n}\n"
      "#define shader \"s\" \"t\" {\n  \"inner\" \"type\" {\n  },\n}\n");
  EXPECT_EQ(read.events, (Events{"open <object> object 'a'",
                                 "open <material> material 'm'",
                                 "open <surface> surface 'vnt_advanced'",
                                 "quoted diffuse = 0.5 0.5 0.5",
                                 "open <!> 'diffuse' ! 'texture_rgb'",
                                 "quoted project = 3",
                                 "close",
                                 "quoted alpha = 1",
                                 "close",
                                 "close",
                                 "close",
                                 "open <camera> camera",
                                 "open <reflection map> reflection map 'vnt_envmap'",
                                 "quoted radius = 25",
                                 "close",
                                 "plain fov = 55",
                                 "close",
                                 "open #define <shader> shader 's' 't'",
                                 "open <> 'inner' 'type'",
                                 "close",
                                 "close"}));
  EXPECT_TRUE(read.faults.empty());
}

TEST(PackageReader, ViewsPackedArraysInPlace) {
  const std::string text = "geometry \"triangles\" {\n  \"v\" [ " + packedFloats('c', {1.5F, -2, 3}) +
                           "] ,\n  \"f\" [ " + packedFloats('f', {0.25F}) + "] ,\n  \"i\" [ " +
                           packedIntegers({-1, 0x5d7d7b22}) + "] ,\n  \"r\" [ " + packedDoubles({1e300, -0.5}) +
                           "] ,\n  \"none\" [ " + packedHead('i', 0) + "] ,\n  \"open\" [\n    " + packedIntegers({7}) +
                           " ],\n  \"empty\" [\n     ],\n}\n";
  const Recorder read = record(text);
  ASSERT_TRUE(read.faults.empty()) << read.faults.front();
  ASSERT_EQ(read.arrays.size(), 7U);
  EXPECT_EQ(read.arrays[0].tag(), 'c');
  EXPECT_EQ(read.arrays[0].floats(), (std::vector<float>{1.5F, -2, 3}));
  EXPECT_EQ(read.arrays[0].number(1), -2);
  EXPECT_EQ(read.arrays[1].doubles(), (std::vector<double>{0.25}));
  EXPECT_EQ(read.arrays[2].integers(), (std::vector<std::int32_t>{-1, 0x5d7d7b22}));
  EXPECT_EQ(read.arrays[2].integer(2), 0) << "beyond the end";
  EXPECT_EQ(read.arrays[3].doubles(), (std::vector<double>{1e300, -0.5}));
  EXPECT_EQ(read.arrays[3].floats().front(), std::numeric_limits<float>::max()) << "brought into range";
  EXPECT_TRUE(read.arrays[4].packed());
  EXPECT_TRUE(read.arrays[4].empty());
  EXPECT_EQ(read.arrays[5].integers(), (std::vector<std::int32_t>{7}));
  EXPECT_FALSE(read.arrays[6].packed());
  EXPECT_TRUE(read.arrays[6].empty());
  for (const rpk::ArrayView& array : read.arrays) {
    EXPECT_GE(array.bytes().data(), text.data());
    EXPECT_LE(array.bytes().data() + array.bytes().size(), text.data() + text.size());
  }
}

TEST(PackageReader, ReadsArraysInTextForm) {
  const std::string text =
      "geometry \"x\" {\n  \"whole\" [ 0 0 0,1.5 -2 1e-07,\n    inf nan 7 ] ,\n"
      "  \"elements\" [\n    1, 2, 3,\n    4 ],\n  \"names\" [\n    \"a ]\", xXe9 ],\n}\n";
  const Recorder read = record(text);
  ASSERT_EQ(read.arrays.size(), 3U);
  const std::vector<double> whole = read.arrays[0].doubles();
  ASSERT_EQ(whole.size(), 9U);
  EXPECT_EQ(whole[5], 1e-07);
  EXPECT_TRUE(std::isinf(whole[6]));
  EXPECT_TRUE(std::isnan(whole[7]));
  EXPECT_EQ(read.arrays[0].integers()[6], 0) << "what no 32-bit integer can hold";
  EXPECT_EQ(read.arrays[1].integers(), (std::vector<std::int32_t>{1, 2, 3, 4}));
  EXPECT_EQ(read.arrays[2].bytes(), "\n    \"a ]\", xXe9 ");
  EXPECT_TRUE(read.faults.empty());
}

TEST(PackageReader, GivesPlacesAndValueTexts) {
  class Places : public rpk::PackageVisitor {
   public:
    void openBlock(const rpk::Block& block) override { places.push_back(block.place); }
    void parameter(const rpk::Parameter& parameter) override {
      places.push_back(parameter.place);
      texts.emplace_back(parameter.text);
    }
    std::vector<rpk::Place> places;
    std::vector<std::string> texts;
  };
  const std::string array = "[ " + packedIntegers({0x0a0a0a0a}) + "]";
  const std::string text = "// c\n\ngroup \"a\" {\n  \"n\" " + array + " ,\n  \"m\"  xXe9 1 ,\n}\n";
  Places read;
  rpk::readPackage(text, read);
  EXPECT_EQ(read.texts, (Events{array, "xXe9 1"}));
  ASSERT_EQ(read.places.size(), 3U);
  EXPECT_EQ(read.places[0].offset, 6U);
  EXPECT_EQ(read.places[0].line, 3U);
  EXPECT_EQ(read.places[1].line, 4U);
  EXPECT_EQ(read.places[2].line, 5U) << "line breaks inside packed data are none";
  EXPECT_EQ(text.substr(read.places[2].offset, 3), "\"m\"");
}

TEST(PackageReader, ReadsAWholePackageWithoutAFault) {
  const Recorder read = record(rpk_test::pumpPackage());
  EXPECT_EQ(read.faults, Events{});
}

struct Damage {
  std::string text;
  std::string fault;
  std::string eventAfter;  // that reading went on
};

void PrintTo(const Damage& damage, std::ostream* stream) { *stream << damage.fault; }

class DamagedText : public testing::TestWithParam<Damage> {};

TEST_P(DamagedText, IsReportedAndPassed) {
  const Recorder read = record(GetParam().text + "\"after\" 1,\n}\n");
  ASSERT_FALSE(read.faults.empty());
  EXPECT_NE(read.faults.front().find(GetParam().fault), std::string::npos) << read.faults.front();
  const std::string& wanted = GetParam().eventAfter;
  EXPECT_NE(std::find(read.events.begin(), read.events.end(), wanted), read.events.end()) << wanted;
}

const std::string kAfter = "quoted after = 1";

INSTANTIATE_TEST_SUITE_P(
    PackageReader, DamagedText,
    testing::Values(
        Damage{"group \"a\" {\n\"x\" 1\n", "group \"a\": a parameter without its comma", kAfter},
        Damage{"group \"a\" {\n\"x 1,\n", "a name without its closing quote", kAfter},
        Damage{"group \"a\" {\nname xX616\n", "half a byte", kAfter},
        Damage{"}\ngroup \"a\" {\n", "a closing brace without a block", kAfter},
        Damage{"{\n", "a brace without a keyword", kAfter},
        Damage{"group \"a\" {\n#define group \"b\"\n", "a definition without its block", kAfter},
        Damage{"group \"a\" {\n1 2 3\n", "a line that begins with a number", kAfter},
        Damage{"group \"a\" {\n\"s\" ! \"t\" {\n}\n", "a shader that is a parameter's value lacks its comma", kAfter},
        Damage{"group \"a\" {\n,\n", "a \",\" that nothing before asks for", kAfter},
        Damage{"group \"a\" {\nup 0 1, 0\n", "a \",\" that nothing before asks for", "plain up = 0 1 0"},
        Damage{"group \"a\" {\nup \x80\x81 0\n", "bytes that are no text", kAfter},
        Damage{"group \"a\" {\n\"x\" [ 1 2\n}\ngroup \"b\" {\n", "an array without its closing bracket", kAfter},
        Damage{"stray word\ngroup \"a\" {\n", "a line that is not known outside any block", kAfter},
        Damage{"\"x\" 1,\ngroup \"a\" {\n", "a parameter outside any block", kAfter},
        Damage{"group \"a\" {\n\"x\" [ " + packedHead('q', 1) + "abcd] ,\n", "unknown type", kAfter},
        Damage{"group \"a\" {\n\"x\" [ " + packedHead('i', -1) + "abcd] ,\n", "negative count", kAfter},
        Damage{"group \"a\" {\n\"x\" [ " + packedHead('r', 0x7fffffff) + "abcd] ,\n", "beyond the end", kAfter},
        Damage{"group \"a\" {\n\"x\" [ " + packedHead('i', 2) + "abcd] ,\n", "no bracket stands behind", kAfter},
        Damage{"group \"a\" {\n\"x\" [ " + packedHead('c', 1) + "abcd] ,\n", "no multiple of 3", kAfter}));

TEST(PackageReader, LimitsTheDepth) {
  std::string text;
  for (int i = 0; i < 100000; ++i) text += "group \"g\" {\n";
  text += "\"lost\" 1,\n";
  for (int i = 0; i < 100000; ++i) text += "}\n";
  text += "group \"last\" {\n\"kept\" 1,\n}\n";
  const Recorder read = record(text);
  ASSERT_EQ(read.faults.size(), 1U);
  EXPECT_NE(read.faults[0].find("deeper than 200"), std::string::npos);
  EXPECT_EQ(read.events.size(), 200U * 2 + 3);
  EXPECT_EQ(read.events[read.events.size() - 2], "quoted kept = 1");
}

TEST(PackageReader, LimitsTheFaultsThatItReports) {
  std::string text;
  for (int i = 0; i < 5000; ++i) text += "}\n";
  Recorder recorder;
  EXPECT_EQ(rpk::readPackage(text, recorder, {.depth = 200, .faults = 10}), 5000U);
  EXPECT_EQ(recorder.faults.size(), 10U);
}

}  // namespace

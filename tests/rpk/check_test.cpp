// Every kind of finding by one damage, told once, with its place; and nothing told of what is right.
#include "tools/rpk/check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>

#include "tests/rpk/whole_package.h"

namespace {

using rpk::CheckKind;
using rpk_test::packedDoubles;
using rpk_test::packedFloats;
using rpk_test::packedHead;
using rpk_test::packedIntegers;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::string replaced(std::string text, std::string_view from, std::string_view to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  EXPECT_EQ(text.find(from, at + 1), std::string::npos) << "twice: " << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

std::string describe(const rpk::CheckReport& report) {
  std::string text;
  for (const rpk::Finding& finding : report.findings) {
    text += std::to_string(finding.place.line) + " (" + std::to_string(finding.place.offset) + ") " + finding.path +
            ": " + finding.what + " [" + std::string(rpk::checkKindName(finding.kind)) + "]\n";
  }
  return text;
}

struct Damage {
  const char* name;
  std::string from;  // occurs once in the whole package
  std::string to;
  CheckKind kind;
  std::string at;          // the place is where this stands in the damaged package ...
  std::size_t beyond = 0;  // ... and so many bytes on
};

std::ostream& operator<<(std::ostream& out, const Damage& damage) { return out << damage.name; }

std::string nameOf(const testing::TestParamInfo<Damage>& damage) { return damage.param.name; }

class CheckFinds : public testing::TestWithParam<Damage> {};

// Every array of the whole package is free of bytes that look like line breaks, so lines can be counted plainly.
TEST_P(CheckFinds, OneDamage) {
  const Damage& damage = GetParam();
  const std::string text = replaced(rpk_test::wholePackage(), damage.from, damage.to);
  const std::size_t offset = damage.at.empty() ? 0 : text.find(damage.at) + damage.beyond;
  const auto line = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(offset), '\n') + 1;
  const rpk::CheckReport report = rpk::checkPackage(text);
  ASSERT_EQ(report.findings.size(), 1U) << describe(report);
  const rpk::Finding& finding = report.findings[0];
  EXPECT_EQ(rpk::checkKindName(finding.kind), rpk::checkKindName(damage.kind)) << describe(report);
  EXPECT_EQ(finding.place.offset, offset) << describe(report);
  EXPECT_EQ(finding.place.line, static_cast<std::uint64_t>(line)) << describe(report);
}

std::string mesh(std::string_view from, std::string_view to) { return replaced(rpk_test::wholeMesh(), from, to); }
std::string surface(std::string_view from, std::string_view to) { return replaced(rpk_test::wholeSurface(), from, to); }

const std::string kVertices = packedFloats('c', {0, 0, 0, 5, 0, 0, 0, 5, 0, 5, 5, 0});
const std::string kNormals = packedFloats('c', {0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1});
const std::string kIndices = packedIntegers({0, 1, 2, 2, 1, 3});
const std::string kMesh = rpk_test::wholeMesh();
const std::string kSurface = rpk_test::wholeSurface();
const std::string kPoints = packedDoubles({0, 0, 0, 1, 5, 0, 0, 1, 0, 5, 0, 1, 5, 5, 0, 1});
const std::string kEdges = packedDoubles({0, 0, 1, 1, 0, 1, 1, 0, 1, 1, 2, 1, 1, 2, 1, 0, 2, 1, 0, 2, 1, 0, 0, 1});
const std::string kEdgeKnots = packedDoubles({0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 3, 3});

INSTANTIATE_TEST_SUITE_P(
    InTheScript, CheckFinds,
    testing::Values(
        Damage{"MissingComma", "\"ext\" off,", "\"ext\" off", CheckKind::kSyntax, "\"ext\""},
        Damage{"UnknownBlock", "caustics store off", "frill \"x\" {\n }", CheckKind::kUnknownBlock, "frill"},
        Damage{"UnknownKeyword", "    fov 55", "    fow 55", CheckKind::kUnknownKeyword, "fow"},
        Damage{"UnknownKeywordInAGroup", "    flags 66560", "  flag 1\n    flags 66560", CheckKind::kUnknownKeyword,
               "flag 1"},
        Damage{"MisplacedBlock", "caustics store off", "group \"inner\" {\n }", CheckKind::kMisplacedBlock,
               "group \"inner\""},
        Damage{"LateModule", "0 0 0 1\n  }\n}\n", "0 0 0 1\n  }\n}\nload \"x\" {\n}\n", CheckKind::kMisplacedBlock,
               "load \"x\""},
        Damage{"MisplacedLine", "    flags 66560", "  invisible on\n    flags 66560", CheckKind::kMisplacedLine,
               "invisible"},
        Damage{"VariantOfALiveLink", "dal:7", "dal:4", CheckKind::kHeaderOrder, "//---vantor"},
        Damage{"UnknownVariant", "dal:7", "dal:6", CheckKind::kBadValue, "//---vantor"},
        Damage{"NoImportLine", "//---import:dal:1---\n", "", CheckKind::kHeaderOrder, ""},
        Damage{"HeaderShuffled", "//---import:dal:1---\n//---id:1---\n", "//---id:1---\n//---import:dal:1---\n",
               CheckKind::kHeaderOrder, "//---import"},
        Damage{"LateHeaderLine", "\ngroup \"press\" {", "//---id:1---\ngroup \"press\" {", CheckKind::kHeaderOrder,
               "//---id:1---\ngroup"},
        Damage{"OptionsShuffled", "  \"import_merge_groups\" off,\n  \"import_merge_objects\" off,\n",
               "  \"import_merge_objects\" off,\n  \"import_merge_groups\" off,\n", CheckKind::kOptionOrder,
               "\"import_merge_groups\""},
        Damage{"ModuleTooLate", "load \"vntgeometry_nurbs.so\" {\n}\n", "", CheckKind::kMissingOption, ""},
        Damage{"MissingOption", "  \"ext\" off,\n", "", CheckKind::kMissingOption, "load \"vntrtopt.so\""},
        Damage{"UnknownParameter", "\"ext\" off,", "\"ext\" off,\n \"extra\" off,", CheckKind::kUnknownParameter,
               "\"extra\""},
        Damage{"RepeatedParameter", "\"ext\" off,", "\"ext\" off,\n \"ext\" on,", CheckKind::kRepeatedParameter,
               "\"ext\" on"},
        Damage{"MissingParameter", "        \"source\" \"plate.prt\",\n", "", CheckKind::kMissingParameter,
               "geometry \"instance\""},
        Damage{"FlagThatIsNone", "\"import_mode\" on", "\"import_mode\" 1", CheckKind::kBadValue, "\"import_mode\""},
        Damage{"ShortMatrix", "transform 1 0 0 0 0 1 0 0 0 0 1 0 100 0 0 1", "transform 1 0 0 0", CheckKind::kBadValue,
               "transform 1 0 0 0\n"},
        Damage{"NamelessGroup", "group \"press\"", "group", CheckKind::kBadValue, "group {"},
        Damage{"HexNameWithOtherLetters", "xX6be96e74", "xX6bg96e74", CheckKind::kBadName, "group xX6bg9"},
        Damage{"HexNameWithHalfAByte", "xX6be96e74", "xX6be96e7", CheckKind::kSyntax, "xX6be96e7 "},
        Damage{"StrangeByteInQuotes", "\"startup.hdr\"", "\"start\xfcp.hdr\"", CheckKind::kBadName, "\"texture\" \"st"},
        Damage{"UnknownSource", "\"source\" \"plate.prt\"", "\"source\" \"press\"", CheckKind::kUnknownSource,
               "\"source\" \"press\""},
        Damage{"UnknownMaterial", "material \"plate:steel:1:2:3\"\n", "material \"other\"\n",
               CheckKind::kUnknownMaterial, "material \"other\""},
        Damage{"NoShader", "      material \"glass\" {\n", "      material \"mirror\" {\n }\n material \"glass\" {\n",
               CheckKind::kMaterialWithoutShader, "material \"mirror\""},
        Damage{"InfinitePlacement", "0 1 0 100 0 0 1", "0 1 0 inf 0 0 1", CheckKind::kNotFinite, "inf 0 0 1"},
        Damage{"MirroredPlacement", "transform 0 1 0 0 -1 0 0 0 0 0 1 0 0 7 0 1",
               "transform 0 1 0 0 1 0 0 0 0 0 1 0 0 7 0 1", CheckKind::kNotRigid, "transform 0 1 0 0 1"},
        Damage{"ScaledMotion", "0 1 0 0 -1 0 0 0 0 0 1 0 5 6 7 1", "0 1 0 0 -1 0 0 0 0 0 1.1 0 5 6 7 1",
               CheckKind::kNotRigid, "\"matrices\""},
        Damage{"CutMotion", "0 1 0 0 -1 0 0 0 0 0 1 0 5 6 7 1", "0 1 0 0 -1 0 0 0 0 0 1 0 5 6 7 1 0",
               CheckKind::kWrongCount, "\"matrices\""},
        Damage{"AnimationLengths", packedIntegers({0, 40}), packedIntegers({0, 40, 80}), CheckKind::kAnimationLengths,
               "animation \"fbx"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    InTheMesh, CheckFinds,
    testing::Values(
        Damage{"WrongTag", kMesh, mesh(kNormals, packedFloats('f', {0, 0, 1})), CheckKind::kWrongTag, "\"normals\""},
        Damage{"VectorsCutShort", kMesh,
               mesh(packedHead('c', 12) + kNormals.substr(8), packedHead('c', 11) + kNormals.substr(8, 44)),
               CheckKind::kSyntax, packedHead('c', 11)},
        Damage{"RecordBeyondTheEnd", kMesh, mesh(packedHead('i', 6), packedHead('i', 1000000)), CheckKind::kSyntax,
               packedHead('i', 1000000)},
        Damage{"IndicesNoTriples", kMesh, mesh(kIndices, packedIntegers({0, 1, 2, 2, 1})), CheckKind::kWrongCount,
               "\"triangles\" [ \x01"},
        Damage{"OddTextureCoordinates", kMesh,
               mesh(packedFloats('f', {0, 0, 1, 0, 0, 1, 1, 1}), packedFloats('f', {0, 0, 1, 0, 0, 1, 1, 1, 1})),
               CheckKind::kWrongCount, "\"uv_tex\""},
        Damage{"IndexTooLarge", kMesh, mesh(kIndices, packedIntegers({0, 1, 2, 2, 4, 3})), CheckKind::kIndexOutOfRange,
               packedIntegers({0, 1, 2, 2, 4, 3}), 8 + 16},
        Damage{"IndexBelowZero", kMesh, mesh(kIndices, packedIntegers({0, -1, 2, 2, 1, 3})),
               CheckKind::kIndexOutOfRange, packedIntegers({0, -1, 2, 2, 1, 3}), 8 + 4},
        Damage{"IndexOfTextTooLarge", "2,1,3 ]", "2,1,4 ]", CheckKind::kIndexOutOfRange, "2,1,4 ]", 4},
        Damage{"TextThatIsNoInteger", "2,1,3 ]", "2,1.5,3 ]", CheckKind::kBadValue, "1.5,3 ]"},
        Damage{"TextThatIsNoNumber", "0 1 0,\n        1 1 0 ]", "0 1 0,\n        1 x 0 ]", CheckKind::kBadValue,
               "x 0 ]"},
        Damage{"TextNotFinite", "0 1 0,\n        1 1 0 ]", "0 1 0,\n        1 1 nan ]", CheckKind::kNotFinite, "nan ]"},
        Damage{"NotANumber", kMesh, mesh(kVertices, packedFloats('c', {0, 0, 0, 5, kNan, 0, 0, 5, 0, 5, 5, 0})),
               CheckKind::kNotFinite, packedFloats('c', {0, 0, 0, 5, kNan, 0, 0, 5, 0, 5, 5, 0}), 8 + 16},
        Damage{"FewerNormals", kMesh, mesh(kNormals, packedFloats('c', {0, 0, 1})), CheckKind::kUnevenCounts,
               "\"normals\""},
        Damage{"TwoCornersInOne", kMesh, mesh(kIndices, packedIntegers({0, 1, 2, 2, 1, 2})),
               CheckKind::kDegenerateTriangles, "geometry \"triangles\" {\n          "},
        Damage{"CornersOnALine", kMesh, mesh(kVertices, packedFloats('c', {0, 0, 0, 5, 0, 0, 0, 5, 0, 2.5F, 2.5F, 0})),
               CheckKind::kDegenerateTriangles, "geometry \"triangles\" {\n          "},
        Damage{"OneFacetTurned", kMesh, mesh(kIndices, packedIntegers({0, 1, 2, 1, 2, 3})),
               CheckKind::kFacetsAgainstNormals, "geometry \"triangles\" {\n          "}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    InTheExactSurface, CheckFinds,
    testing::Values(
        Damage{"Empty", kSurface, "        geometry \"nurbs\" {\n        }\n", CheckKind::kEmptySurface,
               "geometry \"nurbs\""},
        Damage{"NoControlPoints", kSurface, surface("\"Pw\" [ " + kPoints + "] ,", ""), CheckKind::kMissingParameter,
               "geometry \"nurbs\""},
        Damage{"KnotsDecrease", kSurface, surface(packedDoubles({0, 0, 2, 2}), packedDoubles({0, 3, 2, 2})),
               CheckKind::kDecreasingKnots, packedDoubles({0, 3, 2, 2}), 8 + 16},
        Damage{"BoundOffItsKnot", kSurface, surface("\"vmax\" 2.0", "\"vmax\" 2.1"), CheckKind::kParameterRange,
               "\"vmax\""},
        Damage{"TooManyControlPoints", kSurface, surface(kPoints, packedDoubles({0, 0, 0, 1})),
               CheckKind::kControlPointCount, "\"Pw\""},
        Damage{"InfiniteControlPoint", kSurface,
               surface(kPoints, packedDoubles({0, 0, 0, 1, 5, 0, 0, 1, 0, 5, 0, 1, 5, kInfinity, 0, 1})),
               CheckKind::kNotFinite, packedDoubles({0, 0, 0, 1, 5, 0, 0, 1, 0, 5, 0, 1, 5, kInfinity, 0, 1}),
               8 + 8 * 13},
        Damage{"LoopsThatDisagree", kSurface,
               surface("] ,\n          \"trim_inside\" [ " + packedIntegers({1}),
                       "] ,\n          \"trim_inside\" [ " + packedIntegers({1, 0})),
               CheckKind::kTrimCounts, "\"trim_inside\""},
        Damage{"CurvesThatDisagree", kSurface, surface(packedIntegers({4, 4, 4, 4}), packedIntegers({4, 4, 4, 5})),
               CheckKind::kTrimCounts, "\"edge_knot\""},
        Damage{"OpenLoop", kSurface, surface(kEdges, packedDoubles({0, 0, 1, 1, 0, 1, 1, 0, 1, 1,   2, 1,
                                                                    1, 2, 1, 0, 2, 1, 0, 2, 1, 0.1, 0, 1})),
               CheckKind::kOpenTrim, "\"trim_nedges\""},
        Damage{"CurvesThatDoNotMeet", kSurface, surface(kEdges, packedDoubles({0, 0, 1, 1, 0, 1, 0.9, 0, 1, 1, 2, 1,
                                                                               1, 2, 1, 0, 2, 1, 0,   2, 1, 0, 0, 1})),
               CheckKind::kOpenTrim, "\"trim_nedges\""},
        Damage{"CurveKnotsDecrease", kSurface,
               surface(kEdgeKnots, packedDoubles({0, 0, 1, 1, 0, 0, 1, 1, 0, 1, 0, 1, 0, 0, 3, 3})),
               CheckKind::kDecreasingKnots, packedDoubles({0, 0, 1, 1, 0, 0, 1, 1, 0, 1, 0, 1, 0, 0, 3, 3}), 8 + 80},
        Damage{"CurveBounds", kSurface, surface(packedDoubles({1, 1, 1, 3}), packedDoubles({1, 1, 2, 3})),
               CheckKind::kParameterRange, "\"edge_min\""},
        Damage{"InsideThatIsNeither", kSurface,
               surface("\"trim_inside\" [ " + packedIntegers({1}), "\"trim_inside\" [ " + packedIntegers({2})),
               CheckKind::kBadValue, "\"trim_inside\" [ ", 16 + 8}),
    nameOf);

TEST(Check, FindsNothingInAWholePackage) {
  const rpk::CheckReport report = rpk::checkPackage(rpk_test::wholePackage());
  EXPECT_EQ(describe(report), "");
  EXPECT_EQ(report.groups, 6U);
  EXPECT_EQ(report.meshes, 2U);
  EXPECT_EQ(report.triangles, 4U);
  EXPECT_EQ(report.surfaces, 1U);
}

// The other two commands' scripts, each with its own order.
TEST(Check, TellsTheCommandsApart) {
  const std::string head = "//---import:dal:1---\n// This is a Rendara scene file\n\nload \"vntrtopt.so\" {\n";
  const std::string environment = "\"import_adjust_environment\" on,\n";
  const std::string camera = "\"import_adjust_camera\" off,\n";
  const std::string original = "\"import_keep_original\" on,\n";
  const auto script = [&](const std::string& variant, const std::string& middle) {
    return "//---vantor:dal:" + variant + "---\n" + head +
           "\"import_mode\" on,\n\"import_merge_groups\" off,\n\"import_merge_objects\" off,\n" + middle +
           "\"import_up_vector\" 1,\n\"meter_scale\" 1,\n\"ext\" off,\n}\ngroup \"m\" {\n  flags 32768\n}\n";
  };
  const auto faults = [](const std::string& text) {
    return rpk::checkPackage(text).count(rpk::Severity::kFault) +
           rpk::checkPackage(text).count(rpk::Severity::kWarning);
  };
  EXPECT_EQ(faults(script("7", environment + original)), 0U);           // Render
  EXPECT_EQ(faults(script("4", environment + original)), 0U);           // Render
  EXPECT_EQ(faults(script("7", environment + camera + original)), 0U);  // Update
  EXPECT_EQ(faults(script("7", original + environment)), 1U);           // Export's order without its camera option
  EXPECT_EQ(faults(script("7", original + environment + camera)), 2U);  // Export's order without an id line
  EXPECT_EQ(faults(script("4", environment + camera + original)), 1U);  // Render has no such option
}

TEST(Check, CountsWhatItDoesNotList) {
  std::string text = "//---vantor:dal:7---\n//---import:dal:1---\ngroup \"g\" {\n";
  for (int i = 0; i < 3000; ++i) text += "  odd 1\n  , \n";
  text += "}\n";
  rpk::CheckLimits limits;
  limits.findingsOfOneKind = 3;
  const rpk::CheckReport report = rpk::checkPackage(text, limits);
  EXPECT_EQ(report.count(CheckKind::kUnknownKeyword), 3000U);
  EXPECT_EQ(report.count(CheckKind::kSyntax), 3000U);
  EXPECT_EQ(report.findings.size(), 3U + 3U + 1U);
  EXPECT_TRUE(std::is_sorted(report.findings.begin(), report.findings.end(),
                             [](const auto& a, const auto& b) { return a.place.offset < b.place.offset; }));
}

// A strip of triangles over many blocks of the pass, with faults in its last ones; heads and values look like line
// breaks.
TEST(Check, ReadsLongArrays) {
  constexpr std::int32_t kPairs = 0x0a0a;
  std::vector<float> vertices;
  std::vector<std::int32_t> indices;
  for (std::int32_t i = 0; i < kPairs; ++i) {
    vertices.insert(vertices.end(), {static_cast<float>(i), 0, 0, static_cast<float>(i), 1, 0});
    if (i > 0) indices.insert(indices.end(), {2 * i - 2, 2 * i, 2 * i - 1, 2 * i - 1, 2 * i, 2 * i + 1});
  }
  std::vector<float> normals;
  for (std::int32_t i = 0; i < 2 * kPairs; ++i) normals.insert(normals.end(), {0, 0, 1});
  const auto check = [&] {
    const std::string damaged =
        replaced(replaced(replaced(rpk_test::wholePackage(), kMesh, mesh(kVertices, packedFloats('c', vertices))),
                          kNormals, packedFloats('c', normals)),
                 kIndices, packedIntegers(indices));
    return rpk::checkPackage(damaged);
  };
  EXPECT_EQ(check().findings.size(), 1U) << describe(check());  // the texture coordinates are fewer now
  EXPECT_EQ(check().triangles, 2U * (kPairs - 1) + 2);
  indices[indices.size() - 4] = 2 * kPairs;
  vertices[vertices.size() - 1] = std::numeric_limits<float>::infinity();
  const rpk::CheckReport report = check();
  EXPECT_EQ(report.count(CheckKind::kIndexOutOfRange), 1U) << describe(report);
  EXPECT_EQ(report.count(CheckKind::kNotFinite), 1U) << describe(report);
  const auto place = [&](CheckKind kind) {
    const auto found = std::find_if(report.findings.begin(), report.findings.end(),
                                    [&](const rpk::Finding& finding) { return finding.kind == kind; });
    return found == report.findings.end() ? rpk::Place{} : found->place;
  };
  const std::string whole = rpk_test::wholePackage();
  const std::size_t first = whole.find(kVertices) + 8;
  const auto line = std::count(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(first), '\n') + 1;
  EXPECT_EQ(place(CheckKind::kNotFinite).offset, first + 4 * (vertices.size() - 1));
  EXPECT_EQ(place(CheckKind::kNotFinite).line, static_cast<std::uint64_t>(line));
  EXPECT_EQ(place(CheckKind::kIndexOutOfRange).line, static_cast<std::uint64_t>(line) + 3);
}

// What is handed back lies in the file and grows towards its end.
TEST(Check, HandsPagesBack) {
  const std::string many = packedFloats('f', std::vector<float>(10'000'000, 1.0F));
  const std::string text =
      "//---vantor:dal:7---\n//---import:dal:1---\ngroup \"g\" {\n object \"o\" {\n geometry \"x\" {\n"
      " \"a\" [ " +
      many + "] ,\n \"b\" [ " + many + "] ,\n }\n }\n}\n";
  std::size_t most = 0;
  std::size_t last = 0;
  const rpk::CheckReport report = rpk::checkPackage(text, {}, [&](std::string_view passed) {
    const auto from = static_cast<std::size_t>(passed.data() - text.data());
    EXPECT_LE(from + passed.size(), text.size());
    if (from > last) most = std::max(most, from - last);
    last = std::max(last, from + passed.size());
  });
  EXPECT_GT(last, text.size() - (20U << 20));
  EXPECT_LT(most, 20U << 20);  // never left behind for long
}

}  // namespace

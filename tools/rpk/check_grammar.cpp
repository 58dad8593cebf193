#include "tools/rpk/check_grammar.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <initializer_list>
#include <optional>

#include "tools/rpk/check_arrays.h"

namespace rpk {
namespace {

using enum BlockKind;

constexpr std::uint32_t in(std::initializer_list<BlockKind> kinds) {
  std::uint32_t bits = 0;
  for (const BlockKind kind : kinds) bits |= 1U << static_cast<unsigned>(kind);
  return bits;
}

constexpr std::uint32_t kOutside = in({kTop, kGroup, kFrame});
constexpr std::uint32_t kShading = in({kMaterial, kLight, kCamera, kOptions, kImage});
constexpr std::uint32_t kPlaced = in({kGroup, kObject, kCamera, kLight, kMotion, kMatrix, kFrame});
constexpr std::uint32_t kAnywhere = 0xffffffffU;

constexpr std::array<BlockRule, 23> kBlocks = {{
    {"group", kGroup, kOutside, 1, 1, "#define "},
    {"object", kObject, kOutside, 1, 1, "#define #modify "},
    {"geometry", kGeometry, in({kTop, kGroup, kObject, kFrame}), 1, 2, "#define "},
    {"material", kMaterial, in({kTop, kGroup, kObject, kFrame}), 1, 1, "#define #modify "},
    {"surface", kShader, kShading, 1, 1, ""},
    {"shadow", kShader, kShading, 1, 1, ""},
    {"volume", kShader, kShading, 1, 1, ""},
    {"reflection map", kShader, kShading, 1, 1, ""},
    {"init", kShader, kShading, 1, 1, ""},
    {"!", kShader, in({kShader, kMaterial, kLight}), 2, 2, ""},
    {"", kShader, in({kShader, kMaterial, kLight}), 2, 2, ""},
    {"shader", kShader, in({kTop, kGroup, kFrame, kShader, kMaterial}), 2, 2, "#define "},
    {"camera", kCamera, in({kTop, kGroup, kFrame}), 0, 1, "#modify "},
    {"load", kLoad, in({kTop}), 1, 1, ""},
    {"animation", kAnimation, in({kGroup}), 2, 2, ""},
    {"motion", kMotion, kPlaced | in({kAnimation}), 0, 0, ""},
    {"frame", kFrame, in({kTop, kGroup}), 0, 0, ""},
    {"matrix", kMatrix, in({kTop, kGroup, kFrame}), 1, 1, "#define "},
    {"options", kOptions, kOutside, 0, 0, ""},
    {"image", kImage, kOutside, 0, 0, ""},
    {"output", kOutput, kOutside | in({kImage, kOptions}), 3, 3, ""},
    {"light", kLight, kOutside, 1, 1, "#modify "},
    {"accel", kAccel, kOutside | in({kObject}), 1, 1, ""},
}};

constexpr std::array<LineRule, 21> kLines = {{
    {"transform", kPlaced, Shape::kMatrix},
    {"set transform", kPlaced | in({kTop}), Shape::kMatrix},
    {"scale", kPlaced, Shape::kThreeNumbers},
    {"rotate", kPlaced, Shape::kThreeNumbers},
    {"translate", kPlaced, Shape::kThreeNumbers},
    {"instance", kOutside | in({kObject}), Shape::kName},
    {"material", kOutside | in({kObject}), Shape::kName},
    {"attribute", kAnywhere, Shape::kTwoNames},
    {"global photons", kOutside | in({kOptions}), Shape::kInteger},
    {"caustic photons", kOutside | in({kOptions}), Shape::kInteger},
    {"volume photons", kOutside | in({kOptions}), Shape::kInteger},
    {"id", kAnywhere, Shape::kCount},
    {"flags", kOutside | in({kLight, kMaterial, kCamera}), Shape::kCount},
    {"progress", kOutside, Shape::kNameAndNumber},
    {"icon", kAnywhere, Shape::kBytes},
    {"render", kOutside, Shape::kNothing},
    {"caustics store", in({kObject}), Shape::kFlag},
    {"caustics trace", in({kObject}), Shape::kFlag},
    {"ambient store", in({kObject}), Shape::kFlag},
    {"ambient trace", in({kObject}), Shape::kFlag},
    {"invisible", in({kObject}), Shape::kFlag},
}};

using V = Vocabulary;
// Sorted by vocabulary.
constexpr std::array kParameters = std::to_array<ParameterRule>({
    {V::kTriangles, "vertices", Shape::kVectorArray, true},
    {V::kTriangles, "normals", Shape::kVectorArray},
    {V::kTriangles, "uv_tex", Shape::kFloatArray},
    {V::kTriangles, "triangles", Shape::kIntegerArray, true},
    {V::kNurbs, "umin", Shape::kNumber, true},
    {V::kNurbs, "umax", Shape::kNumber, true},
    {V::kNurbs, "vmin", Shape::kNumber, true},
    {V::kNurbs, "vmax", Shape::kNumber, true},
    {V::kNurbs, "uorder", Shape::kInteger, true},
    {V::kNurbs, "vorder", Shape::kInteger, true},
    {V::kNurbs, "uknot", Shape::kDoubleArray, true},
    {V::kNurbs, "vknot", Shape::kDoubleArray, true},
    {V::kNurbs, "Pw", Shape::kDoubleArray, true},
    {V::kNurbs, "trim_nedges", Shape::kIntegerArray},
    {V::kNurbs, "trim_inside", Shape::kIntegerArray},
    {V::kNurbs, "edge_order", Shape::kIntegerArray},
    {V::kNurbs, "edge_nknots", Shape::kIntegerArray},
    {V::kNurbs, "edge_min", Shape::kDoubleArray},
    {V::kNurbs, "edge_max", Shape::kDoubleArray},
    {V::kNurbs, "edge_knot", Shape::kDoubleArray},
    {V::kNurbs, "edge_uvw", Shape::kDoubleArray},
    {V::kInstance, "source", Shape::kName, true},
    {V::kAnimation, "start_time", Shape::kInteger},
    {V::kAnimation, "duration", Shape::kNumber},
    {V::kAnimation, "folder", Shape::kName},
    {V::kAnimation, "matrices", Shape::kMatrixArray, true},
    {V::kAnimation, "timestamps", Shape::kIntegerArray, true},
    {V::kImport, "import_mode", Shape::kFlag},
    {V::kImport, "import_merge_groups", Shape::kFlag},
    {V::kImport, "import_merge_objects", Shape::kFlag},
    {V::kImport, "import_keep_original", Shape::kFlag},
    {V::kImport, "import_adjust_environment", Shape::kFlag},
    {V::kImport, "import_adjust_camera", Shape::kFlag},
    {V::kImport, "import_up_vector", Shape::kInteger},
    {V::kImport, "meter_scale", Shape::kNumber},
    {V::kImport, "ext", Shape::kFlag},
    {V::kCamera, "position", Shape::kThreeNumbers, false, false},
    {V::kCamera, "direction", Shape::kThreeNumbers, false, false},
    {V::kCamera, "up", Shape::kThreeNumbers, false, false},
    {V::kCamera, "fov", Shape::kNumber, false, false},
    {V::kCamera, "projection", Shape::kName, false, false},
    {V::kDiffuse, "diffuse", Shape::kThreeNumbers},
    {V::kAdvanced, "diffuse", Shape::kThreeNumbers},
    {V::kAdvanced, "specular", Shape::kThreeNumbers},
    {V::kAdvanced, "fresnel", Shape::kFlag},
    {V::kAdvanced, "roughness", Shape::kNumber},
    {V::kAdvanced, "ior", Shape::kNumber},
    {V::kAdvanced, "glossy", Shape::kFlag},
    {V::kAdvanced, "glossy_samples", Shape::kInteger},
    {V::kAdvanced, "alpha", Shape::kNumber},
    {V::kEnvironment, "texture", Shape::kName},
    {V::kEnvironment, "format", Shape::kInteger},
    {V::kEnvironment, "radius", Shape::kNumber},
    {V::kEnvironment, "transform", Shape::kMatrix},
    {V::kTexture, "project", Shape::kInteger},
    {V::kTexture, "wrap", Shape::kFlag},
    {V::kTexture, "default_color", Shape::kThreeNumbers},
    {V::kTexture, "texture", Shape::kName},
});

struct NamedVocabulary {
  BlockKind kind;
  std::string_view name;
  Vocabulary vocabulary;
};
constexpr std::array kNamedVocabularies = std::to_array<NamedVocabulary>({
    {kGeometry, "triangles", V::kTriangles},
    {kGeometry, "nurbs", V::kNurbs},
    {kGeometry, "instance", V::kInstance},
    {kAnimation, "fbx_animation", V::kAnimation},
    {kLoad, "vntrtopt.so", V::kImport},
    {kShader, "vnt_diffuse", V::kDiffuse},
    {kShader, "vnt_advanced", V::kAdvanced},
    {kShader, "vnt_envmap", V::kEnvironment},
    {kShader, "texture_rgb", V::kTexture},
});

std::optional<double> toNumber(const Word& word) {
  double value = 0;
  if (word.kind != Word::Kind::kNumber) return std::nullopt;
  std::from_chars(word.text.data(), word.text.data() + word.text.size(), value);
  return value;
}

bool areNumbers(std::span<const Word> words, std::size_t count) {
  return words.size() == count &&
         std::all_of(words.begin(), words.end(), [](const Word& word) { return word.kind == Word::Kind::kNumber; });
}

bool areNames(std::span<const Word> words, std::size_t count) {
  return words.size() == count &&
         std::all_of(words.begin(), words.end(), [](const Word& word) { return word.kind == Word::Kind::kName; });
}

bool isFlagWord(std::span<const Word> words) {
  return words.size() == 1 && words[0].kind == Word::Kind::kBare && (words[0].text == "on" || words[0].text == "off");
}

bool isCount(const Word& word) {
  const auto value = toNumber(word);
  return value && *value >= 0 && *value <= 4294967295.0 &&
         *value == static_cast<double>(static_cast<std::int64_t>(*value));
}

}  // namespace

const BlockRule* findBlockRule(std::string_view keyword) {
  const auto* const found =
      std::find_if(kBlocks.begin(), kBlocks.end(), [&](const BlockRule& rule) { return rule.keyword == keyword; });
  return found == kBlocks.end() ? nullptr : found;
}

const LineRule* findLineRule(std::string_view keyword) {
  const auto* const found =
      std::find_if(kLines.begin(), kLines.end(), [&](const LineRule& rule) { return rule.keyword == keyword; });
  return found == kLines.end() ? nullptr : found;
}

std::span<const ParameterRule> parameterRules(Vocabulary vocabulary) {
  const auto is = [&](const ParameterRule& rule) { return rule.vocabulary == vocabulary; };
  const auto* const first = std::find_if(kParameters.begin(), kParameters.end(), is);
  return {first, std::find_if_not(first, kParameters.end(), is)};
}

const ParameterRule* findParameterRule(Vocabulary vocabulary, std::string_view name) {
  for (const ParameterRule& rule : parameterRules(vocabulary)) {
    if (rule.name == name) return &rule;
  }
  return nullptr;
}

Vocabulary vocabularyOf(BlockKind kind, const Block& block) {
  if (kind == kGroup || kind == kObject) return Vocabulary::kNone;
  if (kind == kCamera) return Vocabulary::kCamera;
  const std::string_view type = kind == kShader && block.nameCount() > 1 ? block.name(1) : block.name();
  for (const NamedVocabulary& entry : kNamedVocabularies) {
    if (entry.kind == kind && entry.name == type) return entry.vocabulary;
  }
  return Vocabulary::kFree;
}

std::string_view blockKindName(BlockKind kind) {
  constexpr std::array<std::string_view, 18> kNames = {
      "the top",  "an unknown block", "a group",      "an object",    "a geometry", "a material",
      "a shader", "a camera",         "a load block", "an animation", "a motion",   "a frame",
      "a matrix", "an options block", "an image",     "an output",    "a light",    "an accel block"};
  return kNames[static_cast<std::size_t>(kind)];
}

std::string_view shapeName(Shape shape) {
  constexpr std::array<std::string_view, 16> kNames = {"on or off",
                                                       "an integer",
                                                       "an unsigned 32-bit integer",
                                                       "a number",
                                                       "three numbers",
                                                       "sixteen numbers",
                                                       "a name",
                                                       "two names",
                                                       "a name and a number",
                                                       "bytes",
                                                       "no value",
                                                       "an array of vectors",
                                                       "an array of floats",
                                                       "an array of integers",
                                                       "an array of doubles",
                                                       "an array of matrices"};
  return kNames[static_cast<std::size_t>(shape)];
}

char arrayTag(Shape shape) {
  switch (shape) {
    case Shape::kVectorArray:
      return 'c';
    case Shape::kFloatArray:
      return 'f';
    case Shape::kIntegerArray:
      return 'i';
    case Shape::kDoubleArray:
      return 'r';
    default:
      return 0;
  }
}

bool isArray(Shape shape) { return shape >= Shape::kVectorArray; }

bool fits(Shape shape, std::span<const Word> words) {
  switch (shape) {
    case Shape::kFlag:
      return isFlagWord(words);
    case Shape::kInteger:
      return words.size() == 1 && isInteger(toNumber(words[0]).value_or(0.5));
    case Shape::kCount:
      return words.size() == 1 && isCount(words[0]);
    case Shape::kNumber:
      return areNumbers(words, 1);
    case Shape::kThreeNumbers:
      return areNumbers(words, 3);
    case Shape::kMatrix:
      return areNumbers(words, 16);
    case Shape::kName:
      return areNames(words, 1);
    case Shape::kTwoNames:
      return areNames(words, 2);
    case Shape::kNameAndNumber:
      return words.size() == 2 && areNames(words.first(1), 1) && areNumbers(words.last(1), 1);
    case Shape::kBytes:
      return words.size() == 1 && (words[0].kind == Word::Kind::kBytes || words[0].text == "bX");
    case Shape::kNothing:
      return words.empty();
    default:
      return false;
  }
}

}  // namespace rpk

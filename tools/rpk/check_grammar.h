// What may stand where in a scene script, as tables.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "tools/rpk/package_reader.h"

namespace rpk {

enum class BlockKind {
  kTop,  // outside any block
  kUnknown,
  kGroup,
  kObject,
  kGeometry,
  kMaterial,
  kShader,  // inline after a word of its kind, as the value of a parameter, or defined by name
  kCamera,
  kLoad,
  kAnimation,
  kMotion,
  kFrame,
  kMatrix,
  kOptions,
  kImage,
  kOutput,
  kLight,
  kAccel,
};

// The blocks whose parameters are known by name.
enum class Vocabulary {
  kFree,  // any parameter
  kNone,  // none at all
  kTriangles,
  kNurbs,
  kInstance,
  kAnimation,
  kImport,
  kCamera,
  kDiffuse,
  kAdvanced,
  kEnvironment,
  kTexture,
};

// What a value is made of.
enum class Shape {
  kFlag,
  kInteger,
  kCount,  // an integer from 0 to 2^32 - 1
  kNumber,
  kThreeNumbers,
  kMatrix,
  kName,
  kTwoNames,
  kNameAndNumber,
  kBytes,
  kNothing,
  kVectorArray,
  kFloatArray,
  kIntegerArray,
  kDoubleArray,
  kMatrixArray,
};

struct BlockRule {
  std::string_view keyword;
  BlockKind kind;
  std::uint32_t parents;  // bits of BlockKind
  int leastNames;
  int mostNames;
  std::string_view directives;  // those it may have, each with a blank behind it
};

struct LineRule {
  std::string_view keyword;
  std::uint32_t parents;
  Shape shape;
};

struct ParameterRule {
  Vocabulary vocabulary;
  std::string_view name;
  Shape shape;
  bool required = false;
  bool quoted = true;
};

// Null when nothing of that name is known.
const BlockRule* findBlockRule(std::string_view keyword);
const LineRule* findLineRule(std::string_view keyword);
const ParameterRule* findParameterRule(Vocabulary vocabulary, std::string_view name);
// All of a vocabulary, in the order that the bits of "seen" parameters follow; at most 32.
std::span<const ParameterRule> parameterRules(Vocabulary vocabulary);

Vocabulary vocabularyOf(BlockKind kind, const Block& block);
inline bool allows(std::uint32_t parents, BlockKind parent) {
  return ((parents >> static_cast<unsigned>(parent)) & 1U) != 0;
}

// "a group", "the top".
std::string_view blockKindName(BlockKind kind);
// "three numbers".
std::string_view shapeName(Shape shape);
// The tag of a packed array of that shape; 0 when it is no such array.
char arrayTag(Shape shape);
bool isArray(Shape shape);
// Whether the words are such a value. Arrays never are.
bool fits(Shape shape, std::span<const Word> words);

}  // namespace rpk

// Whether a package holds together: everything that a renderer would stumble over, each with its place.
//
// One pass over the reader's events, without a tree of the scene: memory grows with the names of parts and materials,
// never with mesh data. What needs more than the reader's events looks back into the mapped bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/rpk/package_reader.h"

namespace rpk {

enum class Severity {
  kFault,    // the file breaks the format, or a renderer cannot use what it says
  kWarning,  // the format allows it, but the picture is likely wrong
  kNote,     // worth knowing, often meant
};

enum class CheckKind {
  kSyntax,  // found by the reader itself: braces, commas, packed records
  kUnknownBlock,
  kUnknownKeyword,
  kMisplacedBlock,
  kMisplacedLine,
  kNoScene,  // no group at the top
  kHeaderOrder,
  kOptionOrder,
  kMissingOption,
  kUnknownParameter,
  kRepeatedParameter,
  kMissingParameter,
  kBadValue,
  kBadName,
  kWrongTag,    // a packed array of another type than its name asks for
  kWrongCount,  // of values that belong together
  kNotFinite,
  kIndexOutOfRange,
  kUnevenCounts,           // normals or texture coordinates that are not as many as the vertices
  kDegenerateTriangles,    // two corners in one, or no area at all
  kFacetsAgainstNormals,   // by area more than a sliver
  kUnknownSource,          // a reference to no earlier group with geometry
  kUnknownMaterial,        // a material used before it is defined
  kMaterialWithoutShader,  //
  kEmptySurface,           // an exact surface without any parameter
  kDecreasingKnots,
  kControlPointCount,
  kParameterRange,  // bounds that are not those of the knots
  kTrimCounts,
  kOpenTrim,
  kAnimationLengths,  // matrices and timestamps that are not as many
  kNotRigid,          // a placement that is no rotation with a translation
};
inline constexpr std::size_t kCheckKinds = static_cast<std::size_t>(CheckKind::kNotRigid) + 1;

// "index-out-of-range".
std::string_view checkKindName(CheckKind kind);
Severity checkSeverity(CheckKind kind);
// "fault".
std::string_view severityName(Severity severity);

struct Finding {
  CheckKind kind = CheckKind::kSyntax;
  Place place;       // of the value where one value is to blame, else of its line
  std::string path;  // open blocks from the outside in; printable ASCII, like `what`
  std::string what;
};

struct CheckLimits {
  ReadLimits reading;
  // Findings of one kind beyond are counted only.
  std::size_t findingsOfOneKind = 20;
};

struct CheckReport {
  std::vector<Finding> findings;                    // in the order of the file
  std::array<std::uint64_t, kCheckKinds> counts{};  // of every kind, those not listed included
  std::uint64_t groups = 0;
  std::uint64_t meshes = 0;
  std::uint64_t triangles = 0;
  std::uint64_t surfaces = 0;

  std::uint64_t count(CheckKind kind) const { return counts[static_cast<std::size_t>(kind)]; }
  std::uint64_t count(Severity severity) const;
};

// Told which part of the bytes has been dealt with for now, so that its pages can be given back. It may be read again.
using PassedBytes = std::function<void(std::string_view passed)>;

CheckReport checkPackage(std::string_view bytes, const CheckLimits& limits = {}, const PassedBytes& passed = {});

}  // namespace rpk

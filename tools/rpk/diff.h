// What two scenes differ in, told by the groups it is seen at.
#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tools/rpk/scene_summary.h"

namespace rpk {

enum class DifferenceKind {
  kHeader,      // a header line
  kModule,      // a load block
  kOption,      // an import option
  kCamera,      // added, removed, or one of its values
  kAdded,       // a group that is in the second scene only, with all below it
  kRemoved,     // a group that is in the first scene only, with all below it
  kRenamed,     // the only group at the top has another name
  kMoved,       // a group's own placement, within the group around it
  kRemeshed,    // what is drawn at a group's place: vertices, normals, uvs, triangles, exact surfaces, or all of it
  kRecoloured,  // a material: its name, colour, texture or shader
  kAnimated,    // an animation
  kWritten,     // drawn alike but written otherwise: geometry or a reference to it, flags, the order of lines
};
inline constexpr std::size_t kDifferenceKinds = 12;
// "header", "module", ... "written"; stable, for JSON and for the command line.
std::string_view differenceKindName(DifferenceKind kind);

// What is drawn at one place.
struct DrawnCounts {
  std::uint64_t vertices = 0;
  std::uint64_t triangles = 0;
  std::uint64_t surfaces = 0;
  bool operator==(const DrawnCounts&) const = default;
};

struct Difference {
  DifferenceKind kind = DifferenceKind::kHeader;
  // Where: the names of the groups from the top down, joined by "/", the n-th of several siblings of one name as
  // "bolt.prt[3]"; counted in the first scene, for an added group in the second. Empty for what stands in no group.
  std::string path;
  std::string what;  // in words, on one line but for line breaks in names
  // For kMoved: how far, in model units and in degrees.
  double distance = 0;
  double degrees = 0;
  // For kRemeshed; for kAdded and kRemoved what the group draws with all below it.
  DrawnCounts before;
  DrawnCounts after;
};

struct DiffOptions {
  // The numbers of two placements (of groups, cameras and animations) count as equal when none of the sixteen differs
  // by more; 0 compares exactly.
  double tolerance = 0;
  // Kinds that are left out. kWritten is no difference of what a renderer shows.
  std::set<DifferenceKind> without = {DifferenceKind::kWritten};
};

// In the order of the first scene, what is only in the second after what is in the first; empty when nothing differs.
//
// Siblings of one name are matched by placement and content first, then by the nearest placement, so that one that was
// taken out is one difference. A reference is the same as another one to the same name; where that name means other
// geometry this is told once. Otherwise a reference is compared by what it draws. Objects of one place are matched by
// content, then by material. Packed arrays are compared by their bytes; text with packed ones by the six digits that
// text has.
std::vector<Difference> diffScenes(const Scene& first, const Scene& second, const DiffOptions& options = {});

}  // namespace rpk

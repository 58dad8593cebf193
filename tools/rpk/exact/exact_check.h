// Whether the exact surfaces of a package are those that its meshes show.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tools/rpk/exact/nurbs.h"

namespace rpk {

// A loop's ends may lie so far apart, by the larger side of the surface's domain.
inline constexpr double kLoopGap = 1e-6;

struct ExactFacts {
  double area = 0;        // within the trims, in square model units
  double widestGap = 0;   // between two ends in a loop, by the larger side of the domain
  bool flagsHold = true;  // every loop is an outer one or a hole as its place among the others says
  bool sound() const;
};

ExactFacts exactFacts(const TrimmedSurface& trimmed);

// One surface of a package: read, evaluated, judged.
struct JudgedSurface {
  std::optional<TrimmedSurface> trimmed;  // nothing when its arrays do not go together
  ExactFacts facts;                       // of a surface that could be read
  std::vector<std::string> faults;        // in words

  bool sound() const { return trimmed && facts.sound(); }
};

// Of an object of geometry type "nurbs".
JudgedSurface judgeSurface(const Object& object);

struct ExactFinding {
  std::string path;  // names of the groups, and the number of the surface in its part, from 0
  std::string what;
};

struct ExactReport {
  std::size_t surfaces = 0;
  std::size_t sound = 0;          // readable, closed, with flags that hold
  std::size_t groups = 0;         // with a mesh beside exact surfaces
  std::size_t vertices = 0;       // of these meshes
  std::size_t strayVertices = 0;  // not on any exact surface of their group at their own parameters
  double widestStray = 0;         // distance of a vertex from the nearest of these, by the part's size
  std::vector<ExactFinding> findings;

  bool good() const { return sound == surfaces && strayVertices == 0; }
};

// Looks at every exact surface, and holds each vertex of a mesh against the surfaces of its group: at the vertex's own
// texture coordinates, which are the surface's parameters, the surface must pass within `tolerance` times the part's
// size, the diagonal of the box of all its meshes. A mesh holds the surfaces' vertices in the order of the surfaces.
ExactReport checkExact(const Scene& scene, double tolerance);

// The tolerance for a mesh made at a quality of 0 to 1: three chord heights and a millionth. The chord height by the
// size is 0.0005 at a quality of 0, else 0.0005 - (1 + 0.2 ln(quality)) 0.0004999, and never below 0.0000001.
double exactTolerance(double quality);

}  // namespace rpk

// One part occurrence as a group of the scene.
#pragma once

#include <functional>
#include <optional>

#include "geometry/exact_buffers.h"
#include "geometry/mesh_buffers.h"
#include "platform/creo_toolkit.h"
#include "scene/material.h"
#include "scene/narrow_text.h"

namespace rendara {

class vntScene_api;

struct PartOccurrence {
  ProPart part = nullptr;
  ProAsmcomppath appearancePath{};    // the one-level path that leads to it: its owner and its own identifier
  const char* name = "";              // of the occurrence's group
  const double* placement = nullptr;  // sixteen values, row by row
  bool defineGeometry = false;        // false: the group, its animation and its placement alone
};

struct GeometryOptions {
  double tessellationQuality = 0.2;
  bool includeNURBS = true;       // exact surfaces too; every material group then stands in a group of its own
  bool separateMaterials = true;  // material names begin with the part's name

  bool operator==(const GeometryOptions&) const = default;
};

// What is reused from part to part. The members' capacity stays.
struct GeometryBuffers {
  MeshBuffers& mesh;
  ExactSurfaceBuffers& exact;
};

// What stands in the scene of an occurrence.
struct WrittenOccurrence {
  bool group = false;                      // its group, with or without geometry
  std::optional<MaterialRecord> material;  // of the first object that was written; none without geometry
};

// The name of a model as narrow text, at most 259 bytes; not exact when it cannot be had.
NarrowText modelName(ProMdl model);

// Writes the occurrence's group: geometry if it is to be defined, for each material in the order of the materials'
// names its exact surfaces and one mesh object, then what `writeAnimation` writes, then the placement. A part without
// an exported surface writes nothing at all. `buffers` are used and left with the last group's mesh.
WrittenOccurrence exportPartGeometry(vntScene_api& scene, const PartOccurrence& occurrence,
                                     const GeometryOptions& options, const GeometryBuffers& buffers,
                                     const std::function<void()>& writeAnimation);

}  // namespace rendara

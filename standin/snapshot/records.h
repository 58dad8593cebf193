// The records of a snapshot, in the order of their members in the file.
//
// The file: its mark and version; the meshes and exact surfaces, each in a place of its own that many surfaces may
// share; SnapshotHead with the models; the place of those and the mark of the end.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "standin/cad/model.h"
#include "standin/snapshot/archive.h"

namespace standin {

// A transfer that changes line breaks, or cuts after a control character, spoils the mark.
inline constexpr std::string_view kSnapshotMark = "RDSNAP\r\n";
inline constexpr std::string_view kSnapshotEnd = "SNAPEND\n";
inline constexpr std::uint64_t kSnapshotVersion = 1;
inline constexpr std::uint64_t kSnapshotHeaderSize = 16;  // the mark and the version
inline constexpr std::uint64_t kSnapshotFooterSize = 32;  // the place of the records and the mark of the end

// What a surface's mesher answers at one chord height: a mesh, or why there is none.
struct StoredMesh {
  double chordHeight = 0.0;
  std::optional<BlobPlace> mesh;
  std::string failure;
};

struct StoredGeometry {
  bool hasMesher = false;
  std::vector<std::vector<StoredMesh>> meshes;  // of each surface when there is a mesher
  bool hasConverter = false;
  std::optional<BlobPlace> exact;  // none: nothing can be converted
};

struct StoredFolder {
  std::string path;      // as the session had it
  std::string relative;  // from the folder of the snapshot; empty when there is no such way
};

// All but the models, which follow their number: each a Model and its StoredGeometry.
struct SnapshotHead {
  unsigned codePage = 0;
  ProMode mode = PRO_MODE_UNUSED;
  std::map<std::wstring, std::wstring> configOptions;
  std::vector<StoredFolder> textureFolders;
  std::size_t models = 0;
};

template <int lowest, int highest>
struct EnumValues {
  static constexpr int kLowest = lowest;
  static constexpr int kHighest = highest;
};
template <>
struct EnumRange<ProMdlType> : EnumValues<PRO_MDL_UNUSED, PRO_MDL_DRAWING> {};
template <>
struct EnumRange<ProMode> : EnumValues<PRO_MODE_UNUSED, PRO_MODE_ASSEMBLY> {};
template <>
struct EnumRange<ProFeatStatus> : EnumValues<PRO_FEAT_INVALID, PRO_FEAT_UNREGENERATED> {};
template <>
struct EnumRange<ProLayerType> : EnumValues<PRO_LAYER_PART, PRO_LAYER_QUILT> {};
template <>
struct EnumRange<ProLayerDisplay> : EnumValues<PRO_LAYER_TYPE_NONE, PRO_LAYER_TYPE_HIDDEN> {};
template <>
struct EnumRange<ProSimprepActionType> : EnumValues<PRO_SIMPREP_NONE, PRO_SIMPREP_GRAPHICS> {};
template <>
struct EnumRange<ProEnttype> : EnumValues<PRO_ENT_LINE, PRO_ENT_B_SPLINE> {};
template <>
struct EnumRange<ProContourTraversal> : EnumValues<PRO_CONTOUR_TRAV_INTERNAL, PRO_CONTOUR_TRAV_EXTERNAL> {};

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, Appearance> appearance) {
  archive(appearance.name, appearance.color, appearance.texture);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, Feature> feature) {
  archive(feature.id, feature.type, feature.status, feature.hidden, feature.component, feature.placement,
          feature.appearance);
}

// Without the owner and the index, which its place tells.
template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, Surface> surface) {
  archive(surface.id, surface.featureId, surface.inactive, surface.hidden, surface.appearance);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, Quilt> quilt) {
  archive(quilt.id, quilt.featureId, quilt.inactive, quilt.hidden, quilt.backup, quilt.surfaces);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, Layer> layer) {
  archive(layer.id, layer.name, layer.display, layer.items);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, SimplifiedRep::Item> item) {
  archive(item.path, item.action);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, SimplifiedRep> representation) {
  archive(representation.id, representation.name, representation.defaultAction, representation.items);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, View> view) {
  archive(view.name, view.matrix);
}

// Without the mesher and the converter: StoredGeometry.
template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, Model> model) {
  archive(model.type, model.name, model.lengthUnit, model.features, model.surfaces, model.solidSurfaces, model.quilts,
          model.layers, model.representations, model.views, model.currentView, model.appearance, model.outline,
          model.versionStamp, model.lastId);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, SurfaceMesh> mesh) {
  archive(mesh.vertices, mesh.normals, mesh.params, mesh.facets);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, PlaneCurve> curve) {
  archive(curve.type, curve.degree, curve.knots, curve.weights, curve.poles);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, ExactEdge::Side> side) {
  archive(side.surfaceId, side.direction, side.curve);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, ExactEdge> edge) {
  archive(edge.id, edge.sides);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, ExactContour> contour) {
  archive(contour.traversal, contour.edgeIds);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, ExactSurface> surface) {
  archive(surface.index, surface.recordId, surface.uDegree, surface.vDegree, surface.uKnots, surface.vKnots,
          surface.weights, surface.poles, surface.contours);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, ExactPart> part) {
  archive(part.solid, part.quilts, part.edges, part.failures);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, StoredMesh> stored) {
  archive(stored.chordHeight, stored.mesh, stored.failure);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, StoredGeometry> geometry) {
  archive(geometry.hasMesher, geometry.meshes, geometry.hasConverter, geometry.exact);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, StoredFolder> folder) {
  archive(folder.path, folder.relative);
}

template <typename Archive>
void fields(Archive& archive, FieldOf<Archive, SnapshotHead> head) {
  archive(head.codePage, head.mode, head.configOptions, head.textureFolders, head.models);
}

}  // namespace standin

// A session in memory that has something of everything, and snapshots of it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "standin/snapshot/snapshot_writer.h"
#include "tests/support/test_session.h"

namespace standin::test {

inline constexpr double kChord = 0.0125;
inline constexpr double kOtherChord = 0.5;

class FixedConverter : public PartConverter {
 public:
  std::shared_ptr<ExactPart> part = std::make_shared<ExactPart>();
  std::shared_ptr<const ExactPart> convert() override { return part; }
};

inline ExactPart exactPart() {
  ExactSurface surface;
  surface.index = 1;
  surface.recordId = -7;
  surface.uDegree = 2;
  surface.vDegree = 1;
  surface.uKnots = {0, 0, 0, 1, 1, 1};
  surface.vKnots = {-1, -1, 4, 4};
  surface.weights = {1, 0.1, 1, 0.5, 1, 1.0 / 3.0};
  surface.poles = {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {0, 1, 0}, {1, 1, 0.25}, {2, 1, 0}};
  surface.contours = {{PRO_CONTOUR_TRAV_EXTERNAL, {3, 4, 3}}, {PRO_CONTOUR_TRAV_INTERNAL, {5}}};
  ExactEdge edge;
  edge.id = 3;
  edge.sides[0] = {2, 1, {PRO_ENT_B_SPLINE, 1, {0, 0, 1, 1}, {0.5, 1}, {{0, 0, 0}, {1, 0.3, 0}}}};
  edge.sides[1].curve.type = PRO_ENT_ARC;
  ExactPart part;
  part.solid = {surface};
  part.quilts = {{}, {surface, surface}};
  part.quilts[1][0].weights.clear();
  part.edges = {edge};
  part.failures = {{0, "closed in no direction"}};
  return part;
}

inline void fillPart(Session& session, Model& part) {
  part.lengthUnit = L"in";
  part.appearance = Appearance{L"blue \x30D7", {0.1, 0.2, 1.0 / 3.0}, L"blue.png"};
  const int feature = part.features[0].id;
  part.features[0].status = PRO_FEAT_SUPPRESSED;
  part.features[0].hidden = true;
  Quilt& quilt = part.addQuilt(feature);
  quilt.inactive = quilt.hidden = quilt.backup = true;
  Surface& surface =
      addMeshedSurface(part, quadMesh({{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}}, {0, 0, 1}), feature, &quilt);
  surface.inactive = surface.hidden = true;
  surface.appearance = Appearance{L"\xE9t\xE9", {1, 0, 0.5}, L""};
  mesherOf(part).meshes.back().normals.clear();
  mesherOf(part).meshes.back().params.pop_back();
  mesherOf(part).fails = [](std::size_t index, double chordHeight) { return index == 2 && chordHeight == kChord; };
  Layer& layer = part.addLayer(L"HIDDEN");
  layer.display = PRO_LAYER_TYPE_BLANK;
  layer.items = {{PRO_LAYER_QUILT, quilt.id}, {PRO_LAYER_FEAT, feature}};
  auto converter = std::make_shared<FixedConverter>();
  *converter->part = exactPart();
  part.converter = converter;
  session.touch(part);
}

// An assembly that is open, of a part with everything, the same part placed again, a sub-assembly with a plain part,
// and a component that is not in session.
inline void fillSession(Session& session, const std::filesystem::path& textures) {
  Model& part = addBoxPart(session, L"PART \xE4");
  fillPart(session, part);
  Model& plain = addBoxPart(session, L"PLAIN", 3.0);
  plain.converter = std::make_shared<FixedConverter>();
  std::dynamic_pointer_cast<FixedConverter>(plain.converter)->part.reset();
  Model& inner = addAssembly(session, L"INNER", {{&plain, translation(1, 2, 3)}});
  Model& top =
      addAssembly(session, L"TOP", {{&part, rotationZ(30)}, {&inner, kIdentity}, {&part, translation(9, 0, 0)}});
  top.features[0].appearance = Appearance{L"lent", {0, 0, 1}, L"lent.tif"};
  top.addFeature(PRO_FEAT_COMPONENT);
  top.outline = std::array<Point, 2>{Point{-1, -2, -3}, Point{4, 5, 6}};
  SimplifiedRep& representation = top.addRepresentation(L"LIGHT");
  representation.defaultAction = PRO_SIMPREP_EXCLUDE;
  representation.items = {{{top.features[1].id, inner.features[0].id}, PRO_SIMPREP_GRAPHICS}, {{}, PRO_SIMPREP_NONE}};
  top.views = {{L"FRONT", rotationZ(90)}, {L"", translation(0, 0, 5)}};
  top.currentView = rotationZ(-45);
  top.lastId = 77;
  session.addModel(PRO_MDL_DRAWING, L"SHEET");
  openModel(session, top);
  session.mode = PRO_MODE_SECTION;
  session.configOptions = {{L"units", L"\x2033"}, {L"empty", L""}};
  session.textureFolders = {textures, "/somewhere/else", "beside"};
}

// The snapshot with the meshes at two chord heights.
inline std::string snapshotOf(Session& session, const std::filesystem::path& folder = "/saved") {
  std::ostringstream output;
  writeSnapshot(output, session, folder, meshesAt([](const Model&) { return std::vector{kChord, kOtherChord}; }));
  return output.str();
}

}  // namespace standin::test

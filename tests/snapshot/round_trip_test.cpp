// What a snapshot gives back, and what is asked for when one is made.
#include <gtest/gtest.h>

#include <limits>
#include <tuple>

#include "standin/snapshot/mesh_recording.h"
#include "standin/snapshot/snapshot_reader.h"
#include "standin/windows/code_page.h"
#include "tests/snapshot/saved_session.h"
#include "tests/support/temporary_folder.h"

namespace standin::test {
namespace {

using rendara::testing::TemporaryFolder;
using rendara::testing::writeFile;

// The members of each record. A new member breaks the build here until it is compared, too.
auto members(const Appearance& record) {
  const auto& [name, color, texture] = record;
  return std::tie(name, color, texture);
}
auto members(const Layer& record) {
  const auto& [id, name, display, items] = record;
  return std::tie(id, name, display, items);
}
auto members(const View& record) {
  const auto& [name, matrix] = record;
  return std::tie(name, matrix);
}
auto members(const SimplifiedRep::Item& record) {
  const auto& [path, action] = record;
  return std::tie(path, action);
}
auto members(const SimplifiedRep& record) {
  const auto& [id, name, defaultAction, items] = record;
  return std::tie(id, name, defaultAction, items);
}
auto members(const SurfaceMesh& record) {
  const auto& [vertices, normals, params, facets] = record;
  return std::tie(vertices, normals, params, facets);
}
auto members(const PlaneCurve& record) {
  const auto& [type, degree, knots, weights, poles] = record;
  return std::tie(type, degree, knots, weights, poles);
}
auto members(const ExactEdge::Side& record) {
  const auto& [surfaceId, direction, curve] = record;
  return std::tie(surfaceId, direction, curve);
}
auto members(const ExactEdge& record) {
  const auto& [id, sides] = record;
  return std::tie(id, sides[0], sides[1]);
}
auto members(const ExactContour& record) {
  const auto& [traversal, edgeIds] = record;
  return std::tie(traversal, edgeIds);
}
auto members(const ExactSurface& record) {
  const auto& [index, recordId, uDegree, vDegree, uKnots, vKnots, weights, poles, contours] = record;
  return std::tie(index, recordId, uDegree, vDegree, uKnots, vKnots, weights, poles, contours);
}
auto members(const ExactPart& record) {
  const auto& [solid, quilts, edges, failures] = record;
  return std::tie(solid, quilts, edges, failures);
}
// Models by their names: those of two sessions are others.
auto members(const Feature& record) {
  const auto& [id, type, status, hidden, component, placement, appearance] = record;
  const std::wstring name = component != nullptr ? component->name : L"-";
  return std::tuple(id, type, status, hidden, name, placement, std::cref(appearance));
}
auto members(const Surface& record) {
  const auto& [owner, index, id, featureId, inactive, hidden, appearance] = record;
  return std::tuple(owner->name, index, id, featureId, inactive, hidden, std::cref(appearance));
}
auto members(const Quilt& record) {
  const auto& [owner, id, featureId, inactive, hidden, backup, surfaces] = record;
  return std::tuple(owner->name, id, featureId, inactive, hidden, backup, surfaces);
}

// True when all members are equal, all the way down.
template <typename Value>
bool same(const Value& first, const Value& second) {
  if constexpr (
      requires { first == second; } && !requires { first.begin(); } && !requires { std::get<0>(first); }) {
    return first == second;
  } else if constexpr (requires { members(first); }) {
    return same(members(first), members(second));
  } else if constexpr (requires { first.has_value(); }) {
    return first.has_value() == second.has_value() && (!first || same(*first, *second));
  } else if constexpr (requires { first.begin(); }) {
    return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                      [](const auto& a, const auto& b) { return same(a, b); });
  } else if constexpr (requires { std::tuple_size<Value>::value; }) {
    return [&]<std::size_t... at>(std::index_sequence<at...>) {
      return (same(std::get<at>(first), std::get<at>(second)) && ...);
    }
    (std::make_index_sequence<std::tuple_size_v<Value>>());
  } else {
    return same(first.get(), second.get());
  }
}

class Snapshot : public ::testing::Test {
 protected:
  LoadResult open(Session& session, const std::string& bytes) {
    writeFile(file, bytes);
    return readSnapshot(session, file);
  }

  TemporaryFolder folder;
  std::filesystem::path file = folder.path() / "saved.snap";
};

TEST_F(Snapshot, GivesBackEveryRecord) {
  Session saved;
  fillSession(saved, "/textures");
  Session session;
  const LoadResult result = open(session, snapshotOf(saved));
  ASSERT_EQ(result.error, "");
  ASSERT_NE(result.model, nullptr);
  EXPECT_EQ(result.model, session.current);
  EXPECT_EQ(session.current->name, L"TOP");
  EXPECT_EQ(result.codePage, systemCodePage());
  EXPECT_TRUE(result.overlaid);
  EXPECT_EQ(session.mode, saved.mode);
  EXPECT_EQ(session.configOptions, saved.configOptions);
  EXPECT_EQ(session.textureFolders, saved.textureFolders);
  ASSERT_EQ(session.models().size(), saved.models().size());
  for (std::size_t i = 0; i < saved.models().size(); ++i) {
    const Model& a = *saved.models()[i];
    const Model& b = *session.models()[i];
    SCOPED_TRACE(::testing::Message() << "model " << i);
    EXPECT_EQ(a.type, b.type);
    EXPECT_EQ(a.name, b.name);
    EXPECT_EQ(a.lengthUnit, b.lengthUnit);
    EXPECT_TRUE(same(a.features, b.features));
    EXPECT_TRUE(same(a.surfaces, b.surfaces));
    EXPECT_EQ(a.solidSurfaces, b.solidSurfaces);
    EXPECT_TRUE(same(a.quilts, b.quilts));
    EXPECT_TRUE(same(a.layers, b.layers));
    EXPECT_TRUE(same(a.representations, b.representations));
    EXPECT_TRUE(same(a.views, b.views));
    EXPECT_EQ(a.currentView, b.currentView);
    EXPECT_TRUE(same(a.appearance, b.appearance));
    EXPECT_EQ(a.outline, b.outline);
    EXPECT_EQ(a.versionStamp, b.versionStamp);
    EXPECT_EQ(a.lastId, b.lastId);
    EXPECT_EQ(a.mesher != nullptr, b.mesher != nullptr);
    EXPECT_EQ(a.converter != nullptr, b.converter != nullptr);
  }
  EXPECT_EQ(session.findModel(L"PLAIN"), session.models()[1].get()) << "known to the session by its name";
  Model& part = *session.models()[0];
  EXPECT_EQ(part.surfaces[0].owner, &part);
  EXPECT_EQ(part.quilts[0].owner, &part);
  EXPECT_EQ(session.current->features[2].component, &part);
  const std::uint64_t stamp = session.models().back()->versionStamp;
  session.touch(part);
  EXPECT_GT(part.versionStamp, stamp) << "a change must not give a stamp that a model already had";
}

TEST_F(Snapshot, IsTheSameWhenItIsSavedAgain) {
  Session saved;
  fillSession(saved, folder.path() / "textures");
  const std::string bytes = snapshotOf(saved, folder.path());
  Session session;
  ASSERT_EQ(open(session, bytes).error, "");
  EXPECT_EQ(snapshotOf(session, folder.path()), bytes);
}

TEST_F(Snapshot, GivesBackGeometryWhenItIsAskedFor) {
  Session saved;
  fillSession(saved, "/textures");
  Session session;
  ASSERT_EQ(open(session, snapshotOf(saved)).error, "");
  Model& part = *session.models()[0];
  const FixedMesher& made = mesherOf(*saved.models()[0]);
  std::string failure;
  for (const double chordHeight : {kChord, kChord * (1 + 3e-16), kChord * (1 - 8e-13), kOtherChord}) {
    for (std::size_t surface = 0; surface < made.meshes.size(); ++surface) {
      const auto mesh = part.mesher->mesh(surface, chordHeight, failure);
      const bool fails = surface == 2 && chordHeight != kOtherChord;
      ASSERT_EQ(mesh == nullptr, fails) << surface << " at " << chordHeight << ": " << failure;
      EXPECT_EQ(failure, fails ? "set to fail" : "");
      EXPECT_TRUE(fails || same(*mesh, made.meshes[surface])) << surface;
    }
  }
  for (const double chordHeight : {kChord * (1 + 1e-11), 0.1, 0.0, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(part.mesher->mesh(0, chordHeight, failure), nullptr) << chordHeight;
    EXPECT_NE(failure.find("the snapshot holds no mesh for chord height "), std::string::npos) << failure;
  }
  EXPECT_EQ(part.mesher->mesh(made.meshes.size(), kChord, failure), nullptr);
  EXPECT_EQ(failure, "no such surface");

  const auto exact = part.converter->convert();
  ASSERT_NE(exact, nullptr);
  EXPECT_TRUE(same(*exact, exactPart()));
  EXPECT_EQ(part.converter->convert(), exact) << "asked for with each surface, so it is kept";
  EXPECT_EQ(session.models()[1]->converter->convert(), nullptr);
}

TEST_F(Snapshot, StoresEqualMeshesOnce) {
  const auto sizeOf = [](std::size_t parts) {
    Session session;
    SurfaceMesh mesh;
    mesh.vertices.resize(10'000);
    for (std::size_t i = 0; i < parts; ++i) addMeshedSurface(session.addModel(PRO_MDL_PART, L"P"), mesh, 0);
    openModel(session, *session.models().front());
    return snapshotOf(session).size();
  };
  EXPECT_LT(sizeOf(5), sizeOf(1) + 5'000);
}

TEST_F(Snapshot, ComesToModelsThatAreThere) {
  Session saved;
  fillSession(saved, "/textures");
  const std::string bytes = snapshotOf(saved);
  Session session;
  ASSERT_EQ(open(session, bytes).error, "");
  const std::size_t models = session.models().size();
  ASSERT_EQ(open(session, bytes).error, "");
  EXPECT_EQ(session.models().size(), 2 * models);
  EXPECT_EQ(session.current->name, L"TOP_2");
  EXPECT_EQ(session.current->features[0].component->name, L"PART \xE4_2");
  EXPECT_EQ(session.textureFolders, saved.textureFolders) << "each once";
  std::string failure;
  EXPECT_NE(session.models()[0]->mesher->mesh(0, kChord, failure), nullptr) << "the first file is still there for it";
}

TEST_F(Snapshot, FindsTexturesThatWereMovedWithIt) {
  Session saved;
  fillSession(saved, "/project/model/textures");
  const std::string bytes = snapshotOf(saved, "/project/model");
  for (const bool moved : {false, true}) {
    if (moved) std::filesystem::create_directory(folder.path() / "textures");
    Session session;
    ASSERT_EQ(open(session, bytes).error, "");
    EXPECT_EQ(session.textureFolders[0], moved ? folder.path() / "textures" : "/project/model/textures");
  }
}

// In the place of the plug-in: asks for surfaces as it does, with another chord height for those that fail.
TEST(MeshRecording, KeepsWhatIsAskedOfPartsThatLieBare) {
  Session session;
  fillSession(session, "/textures");
  const Model* const top = session.current;
  std::vector<std::wstring> opened;
  bool gives = true;
  const MeshSource source = recordedMeshes(session, [&] {
    Model& part = *session.current;
    opened.push_back(part.name);
    EXPECT_EQ(session.mode, PRO_MODE_PART);
    for (const Feature& feature : part.features) EXPECT_TRUE(feature.status == PRO_FEAT_ACTIVE && !feature.hidden);
    for (const Surface& surface : part.surfaces) EXPECT_FALSE(surface.inactive);
    for (const Quilt& quilt : part.quilts) EXPECT_FALSE(quilt.inactive || quilt.hidden || quilt.backup);
    for (const Layer& layer : part.layers) EXPECT_EQ(layer.display, PRO_LAYER_TYPE_NORMAL);
    if (!gives) throw std::runtime_error("no export");
    std::string failure;
    for (std::size_t surface = 0; surface < part.surfaces.size(); ++surface) {
      for (int again = 0; again < 2; ++again) {
        if (!part.mesher->mesh(surface, kChord, failure)) part.mesher->mesh(surface, kOtherChord, failure);
      }
    }
  });
  const auto mesher = session.models()[0]->mesher;
  std::ostringstream output;
  const SnapshotCounts counts = writeSnapshot(output, session, "/saved", source);
  EXPECT_EQ(opened, (std::vector<std::wstring>{L"PART \xE4", L"PLAIN"}));
  EXPECT_EQ(counts.meshes, 13U) << "seven surfaces and six, each once";
  EXPECT_EQ(counts.failures, 1U);
  EXPECT_EQ(counts.parts, 2U);
  EXPECT_EQ(counts.surfaces, 13U);
  EXPECT_EQ(counts.triangles, 26U);
  EXPECT_EQ(counts.bytes, output.str().size());
  EXPECT_GT(mesherOf(*session.models()[0]).timesForgotten, 0);

  gives = false;
  EXPECT_THROW(writeSnapshot(output, session, "/saved", source), std::runtime_error);
  const Model& part = *session.models()[0];
  EXPECT_EQ(session.current, top);
  EXPECT_EQ(session.mode, PRO_MODE_SECTION);
  EXPECT_EQ(part.mesher, mesher);
  EXPECT_EQ(part.features[0].status, PRO_FEAT_SUPPRESSED);
  EXPECT_TRUE(part.features[0].hidden && part.surfaces.back().inactive && part.quilts[0].backup);
  EXPECT_EQ(part.layers[0].display, PRO_LAYER_TYPE_BLANK);
}

}  // namespace
}  // namespace standin::test

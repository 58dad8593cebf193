#include "geometry/filters.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <vector>

#include "geometry/surface_collection.h"
#include "tests/support/test_session.h"

namespace rendara {
namespace {

using standin::Model;
using standin::Quilt;
using standin::test::solid;

// A part with one solid surface and one quilt of one surface, each of a feature of its own.
class GeometryFilters : public ::testing::Test {
 protected:
  struct Made {
    standin::Session session;
    Model& part;
    int solidFeature;
    int quiltFeature;
    Quilt* quilt;

    Made() : part(session.addModel(PRO_MDL_PART, L"part")) {
      solidFeature = part.addFeature(917).id;
      quiltFeature = part.addFeature(949).id;
      part.addSurface(solidFeature);
      quilt = &part.addQuilt(quiltFeature);
      part.addSurface(quiltFeature, quilt);
    }
    void putOnLayer(ProLayerType type, int id, ProLayerDisplay display) {
      standin::Layer& layer = part.addLayer(L"layer");
      layer.display = display;
      layer.items.emplace_back(type, id);
    }
  };

  // How many surfaces are collected after a change of the part: the solid's one and the quilt's one.
  static std::vector<std::size_t> collected(const std::function<void(Made&)>& change) {
    Made made;
    change(made);
    SurfaceCollection collection;
    collectSurfaces(solid(made.part), collection);
    std::vector<std::size_t> indices;
    for (ProSurface surface : collection.surfaces) {
      indices.push_back(reinterpret_cast<standin::Surface*>(surface)->index);
    }
    EXPECT_EQ(collection.ids.size(), collection.surfaces.size());
    EXPECT_TRUE(made.session.misuse().empty());
    return indices;
  }

  const std::vector<std::size_t> both = {0, 1};
  const std::vector<std::size_t> solidOnly = {0};
  const std::vector<std::size_t> quiltOnly = {1};
};

TEST_F(GeometryFilters, ActiveGeometryIsTakenSolidFirst) {
  EXPECT_EQ(collected([](Made&) {}), both);
}

TEST_F(GeometryFilters, SurfacesOfInactiveOrExcludedFeaturesAreLeftOut) {
  EXPECT_EQ(collected([](Made& m) { m.part.feature(m.solidFeature)->status = PRO_FEAT_SUPPRESSED; }), quiltOnly);
  EXPECT_EQ(collected([](Made& m) { m.part.feature(m.solidFeature)->type = 1070; }), quiltOnly);
  EXPECT_EQ(collected([](Made& m) { m.part.surfaces[0].inactive = true; }), quiltOnly);
  EXPECT_EQ(collected([](Made& m) { m.part.feature(m.quiltFeature)->type = 1070; }), solidOnly);
  EXPECT_EQ(collected([](Made& m) { m.part.surfaces[1].inactive = true; }), solidOnly)
      << "a quilt's surfaces pass the surface filter too";
}

TEST_F(GeometryFilters, HidingAndLayersCountForQuiltsOnly) {
  EXPECT_EQ(collected([](Made& m) {
              m.part.surfaces[0].hidden = true;
              m.part.feature(m.solidFeature)->hidden = true;
              m.putOnLayer(PRO_LAYER_FEAT, m.solidFeature, PRO_LAYER_TYPE_BLANK);
            }),
            both);
  EXPECT_EQ(collected([](Made& m) { m.quilt->hidden = true; }), solidOnly);
  EXPECT_EQ(collected([](Made& m) { m.part.feature(m.quiltFeature)->hidden = true; }), solidOnly);
  EXPECT_EQ(collected([](Made& m) { m.putOnLayer(PRO_LAYER_QUILT, m.quilt->id, PRO_LAYER_TYPE_BLANK); }), solidOnly);
  EXPECT_EQ(collected([](Made& m) { m.putOnLayer(PRO_LAYER_FEAT, m.quiltFeature, PRO_LAYER_TYPE_BLANK); }), solidOnly);
  EXPECT_EQ(collected([](Made& m) { m.putOnLayer(PRO_LAYER_QUILT, m.quilt->id, PRO_LAYER_TYPE_NORMAL); }), both);
}

TEST_F(GeometryFilters, InactiveAndBackupQuiltsAreLeftOut) {
  EXPECT_EQ(collected([](Made& m) { m.quilt->inactive = true; }), solidOnly);
  EXPECT_EQ(collected([](Made& m) { m.quilt->backup = true; }), solidOnly);
  EXPECT_EQ(collected([](Made& m) { m.part.feature(m.quiltFeature)->status = PRO_FEAT_INACTIVE; }), solidOnly);
}

TEST_F(GeometryFilters, ASurfaceOfSolidAndQuiltIsTakenTwice) {
  Made made;
  made.quilt->surfaces.push_back(0);
  SurfaceCollection collection;
  collectSurfaces(solid(made.part), collection);
  EXPECT_EQ(collection.surfaces.size(), 3U);
  EXPECT_EQ(collection.ids.size(), 2U);
}

}  // namespace
}  // namespace rendara

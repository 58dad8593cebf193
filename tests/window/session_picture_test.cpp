// From the session's models to what a picture shows.
#include "standin/window/session_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "standin/app/component_change.h"
#include "standin/window/picture_painter.h"
#include "tests/support/test_session.h"

namespace standin {
namespace {

using Paths = std::vector<std::vector<int>>;

// TOP holds a box twice, 30 apart, and SUB, which holds it a third time.
class SessionPictureTest : public ::testing::Test {
 protected:
  SessionPicture make() { return maker_.make(top_); }
  rpk::Vector colourOf(const SessionPicture& picture, std::size_t instance, std::size_t mesh = 0) const {
    return picture.model.materials.at(picture.model.instances.at(instance).materials.at(mesh)).colour;
  }
  static Appearance painted(const Point& colour) { return plainAppearance(colour); }

  Session session_;
  Model& box_ = test::addBoxPart(session_, L"box");
  Model& sub_ = test::addAssembly(session_, L"sub", {{&box_, test::translation(0, 5, 0)}});
  Model& top_ = test::addAssembly(
      session_, L"top",
      {{&box_, kIdentity}, {&box_, test::translation(30, 0, 0)}, {&sub_, test::translation(0, 0, 7)}});
  Feature& first_ = top_.features[0];
  Feature& second_ = top_.features[1];
  Feature& third_ = top_.features[2];
  SessionPictureMaker maker_{session_};
};

TEST_F(SessionPictureTest, HoldsEachPartOnceAndEveryPlace) {
  const SessionPicture picture = make();
  ASSERT_EQ(picture.model.parts.size(), 1U);
  EXPECT_EQ(picture.model.parts[0].meshes.at(0).triangleCount(), 12U);
  EXPECT_EQ(picture.model.parts[0].meshes[0].normals.size(), picture.model.parts[0].meshes[0].positions.size());
  EXPECT_EQ(picture.paths, (Paths{{first_.id}, {second_.id}, {third_.id, sub_.features[0].id}}));
  EXPECT_EQ(picture.model.instances[2].placement, test::translation(0, 5, 7));
}

TEST_F(SessionPictureTest, LeavesOutWhatIsNotShown) {
  const Component first{&top_, &first_, {first_.id}};
  setComponentHidden(first, true);
  EXPECT_EQ(make().paths.size(), 2U);
  setComponentStatus(session_, {&top_, &third_, {third_.id}}, PRO_FEAT_SUPPRESSED);
  EXPECT_EQ(make().paths, (Paths{{second_.id}}));
  Layer& layer = top_.addLayer(L"LAYER");
  layer.items.emplace_back(PRO_LAYER_FEAT, second_.id);
  EXPECT_EQ(make().paths.size(), 1U);
  layer.display = PRO_LAYER_TYPE_BLANK;
  EXPECT_TRUE(make().paths.empty());
  setComponentHidden(first, false);
  EXPECT_EQ(make().paths, (Paths{{first_.id}}));
}

TEST_F(SessionPictureTest, TakesTheNearestColour) {
  EXPECT_EQ(colourOf(make(), 0), (rpk::Vector{0.6, 0.6, 0.6}));
  paintModel(session_, box_, painted({1, 0, 0}));
  paintComponent(session_, {&top_, &second_, {second_.id}}, painted({0, 1, 0}));
  box_.surfaces[3].appearance = painted({0, 0, 1});
  session_.touch(box_);
  const SessionPicture picture = make();
  ASSERT_EQ(picture.model.parts[0].meshes.size(), 2U);
  EXPECT_EQ(picture.model.parts[0].meshes[1].triangleCount(), 2U);
  EXPECT_EQ(colourOf(picture, 0), (rpk::Vector{1, 0, 0}));
  EXPECT_EQ(colourOf(picture, 1), (rpk::Vector{0, 1, 0}));
  EXPECT_EQ(colourOf(picture, 1, 1), (rpk::Vector{0, 0, 1})) << "a surface's own colour comes first";
}

TEST_F(SessionPictureTest, LaysTexturesOnThatItCanRead) {
  session_.textureFolders = {RENDARA_SOURCE_DIR "/samples"};
  Appearance appearance = painted({1, 0, 0});
  for (const wchar_t* name : {L"nameplate.png", L"gone.png"}) {
    appearance.texture = name;
    paintModel(session_, box_, appearance);
    const SessionPicture picture = make();
    const rpk::PictureMaterial& material = picture.model.materials.at(picture.model.instances[0].materials.at(0));
    EXPECT_EQ(material.texture != nullptr, appearance.texture == L"nameplate.png");
    EXPECT_EQ(material.colour, (rpk::Vector{1, 0, 0}));
    EXPECT_EQ(picture.model.parts[0].meshes[0].uvs.size(), 48U) << "two for each of 24 vertices";
  }
}

TEST_F(SessionPictureTest, TessellatesOnlyWhatHasChanged) {
  make();
  const auto& requests = test::mesherOf(box_).requests;
  const std::size_t before = requests.size();
  moveComponent(session_, {&top_, &second_, {second_.id}}, {1, 2, 3});
  EXPECT_EQ(make().model.instances[1].placement, test::translation(31, 2, 3));
  EXPECT_EQ(requests.size(), before);
  session_.touch(box_);
  make();
  EXPECT_GT(requests.size(), before);
  EXPECT_GT(test::mesherOf(box_).timesForgotten, 0) << "the display's meshes are not kept for an export";
}

// From the front, the first box is at the left, the second at the right.
TEST_F(SessionPictureTest, IsPaintedCoarselyFirstAndTellsWhatIsWhere) {
  setComponentHidden({&top_, &third_, {third_.id}}, true);
  std::mutex lock;
  std::vector<std::shared_ptr<const PaintedPicture>> painted;
  std::condition_variable full;
  PicturePainter painter([&](auto picture) {
    const std::lock_guard guard(lock);
    painted.push_back(std::move(picture));
    full.notify_all();
  });
  const std::uint64_t number = painter.setModel(make().model);
  PictureWish wish;
  wish.camera.view = viewDirection(kIdentity);
  wish.fit = true;
  wish.width = 200;
  wish.height = 100;
  painter.paint(wish);
  std::unique_lock guard(lock);
  ASSERT_TRUE(full.wait_for(guard, std::chrono::seconds(60), [&] { return painted.size() == 2; }));
  EXPECT_EQ(painted[0]->image.width, 50U);
  EXPECT_EQ(painted[1]->image.width, 200U);
  EXPECT_EQ(painted[1]->model, number);
  const InstanceMap& map = painted[1]->map;
  const auto at = [&](double right, double down) {
    return map.instances.at(static_cast<std::size_t>(down * map.height) * map.width +
                            static_cast<std::size_t>(right * map.width));
  };
  EXPECT_EQ(at(0.1, 0.5), 0);
  EXPECT_EQ(at(0.9, 0.5), 1);
  EXPECT_EQ(at(0.5, 0.5), InstanceMap::kNone);
  EXPECT_EQ(at(0.1, 0.02), InstanceMap::kNone);
}

}  // namespace
}  // namespace standin

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "standin/cad/session.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/test_session.h"

namespace standin {
namespace {

using test::addAssembly;
using test::addBoxPart;

TEST(ModelNames, AreCutAndUniqueAmongTheirType) {
  Session session;
  const std::wstring longName(40, L'x');
  EXPECT_EQ(session.addModel(PRO_MDL_PART, longName).name, longName.substr(0, 31));
  const Model& second = session.addModel(PRO_MDL_PART, longName);
  EXPECT_EQ(second.name, longName.substr(0, 29) + L"_2");
  EXPECT_EQ(session.addModel(PRO_MDL_PART, L"Bolt").name, L"Bolt");
  EXPECT_EQ(session.addModel(PRO_MDL_PART, L"BOLT_2").name, L"BOLT_2");
  EXPECT_EQ(session.addModel(PRO_MDL_PART, L"bolt").name, L"bolt_3") << "the number 2 is taken in other spelling";
  EXPECT_EQ(session.addModel(PRO_MDL_ASSEMBLY, L"bolt").name, L"bolt");
  EXPECT_EQ(session.addModel(PRO_MDL_PART, L"\u00C4RGER").name, L"\u00C4RGER");
  EXPECT_EQ(session.addModel(PRO_MDL_PART, L"\u00E4rger").name, L"\u00E4rger_2");
  EXPECT_FALSE(session.addModel(PRO_MDL_PART, L"").name.empty());
}

TEST(ModelNames, ManyOfOneNameStayUnique) {
  Session session;
  std::set<std::wstring> names;
  for (int count = 0; count < 5000; ++count) {
    names.insert(session.addModel(PRO_MDL_PART, L"solid").name);
  }
  EXPECT_EQ(names.size(), 5000U);
}

TEST(ModelNames, RenamingFreesTheOldName) {
  Session session;
  Model& part = session.addModel(PRO_MDL_PART, L"one");
  const auto stamp = part.versionStamp;
  session.renameModel(part, L"two");
  EXPECT_NE(part.versionStamp, stamp);
  EXPECT_EQ(session.findModel(L"one"), nullptr);
  EXPECT_EQ(session.findModel(L"TWO"), &part);
  EXPECT_EQ(session.findModel(L"two", PRO_MDL_ASSEMBLY), nullptr);
  EXPECT_EQ(session.addModel(PRO_MDL_PART, L"one").name, L"one");
  session.renameModel(part, L"Two");
  EXPECT_EQ(part.name, L"Two") << "its own name does not stand in its way";
}

TEST(Current, IsTheSessionsAndMayBeNone) {
  ProMdl model = nullptr;
  ProMode mode = PRO_MODE_UNUSED;
  EXPECT_EQ(ProMdlCurrentGet(&model), PRO_TK_BAD_CONTEXT) << "there is no session";
  Session session;
  EXPECT_EQ(ProMdlCurrentGet(&model), PRO_TK_BAD_CONTEXT);
  EXPECT_EQ(ProModeCurrentGet(&mode), PRO_TK_BAD_CONTEXT);
  EXPECT_TRUE(session.misuse().empty()) << "no model is nobody's fault";
  Model& part = addBoxPart(session, L"box");
  test::openModel(session, part);
  EXPECT_EQ(ProMdlCurrentGet(&model), PRO_TK_NO_ERROR);
  EXPECT_EQ(model, &part);
  EXPECT_EQ(ProModeCurrentGet(&mode), PRO_TK_NO_ERROR);
  EXPECT_EQ(mode, PRO_MODE_PART);
  {
    const Session inner;
    EXPECT_EQ(ProMdlCurrentGet(&model), PRO_TK_BAD_CONTEXT);
  }
  EXPECT_EQ(Session::active(), &session);
}

TEST(ModelData, NamesTypesUnitsAndViews) {
  Session session;
  Model& assembly = addAssembly(session, L"top");
  assembly.lengthUnit = L"in";
  ProMdldata data;
  ASSERT_EQ(ProMdlDataGet(&assembly, &data), PRO_TK_NO_ERROR);
  EXPECT_STREQ(data.name, L"top");
  EXPECT_STREQ(data.type, L"ASM");

  ProUnitsystem system;
  ProUnititem unit;
  ProUnitConversion conversion;
  ASSERT_EQ(ProMdlPrincipalunitsystemGet(&assembly, &system), PRO_TK_NO_ERROR);
  ASSERT_EQ(ProUnitsystemUnitGet(&system, PRO_UNITTYPE_LENGTH, &unit), PRO_TK_NO_ERROR);
  EXPECT_STREQ(unit.name, L"in");
  ASSERT_EQ(ProUnitConversionGet(&unit, &conversion, nullptr), PRO_TK_NO_ERROR);
  EXPECT_DOUBLE_EQ(conversion.scale, 25.4);

  ProLine* names = nullptr;
  int count = 7;
  EXPECT_EQ(ProViewNamesGet(&assembly, &names, nullptr, &count), PRO_TK_E_NOT_FOUND);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(names, nullptr);
  assembly.views.push_back({L"FRONT", test::translation(1, 2, 3)});
  assembly.views.push_back({std::wstring(100, L'v'), test::translation(4, 5, 6)});
  ASSERT_EQ(ProViewNamesGet(&assembly, &names, nullptr, &count), PRO_TK_NO_ERROR);
  ASSERT_EQ(count, 2);
  EXPECT_EQ(std::wstring(names[1]), std::wstring(80, L'v'));
  ProView view = nullptr;
  ProMatrix matrix;
  ASSERT_EQ(ProViewNameToView(&assembly, names[1], &view), PRO_TK_NO_ERROR) << "a cut name still finds its view";
  ASSERT_EQ(ProViewMatrixGet(&assembly, view, matrix), PRO_TK_NO_ERROR);
  EXPECT_EQ(matrix[3][2], 6.0);
  ASSERT_EQ(ProViewMatrixGet(&assembly, nullptr, matrix), PRO_TK_NO_ERROR);
  EXPECT_EQ(matrix[3][2], 0.0);
  ProArray array = names;
  EXPECT_EQ(ProArrayFree(&array), PRO_TK_NO_ERROR);
}

TEST(VersionStamps, DifferAfterAChangeAndBetweenModels) {
  Session session;
  Model& first = addBoxPart(session, L"first");
  Model& second = addBoxPart(session, L"second");
  const auto stampOf = [](Model& model) {
    WVerstamp stamp = nullptr;
    EXPECT_EQ(ProMdlVerstampGet(&model, &stamp), PRO_TK_NO_ERROR);
    return stamp;
  };
  WVerstamp before = stampOf(first);
  WVerstamp again = stampOf(first);
  WVerstamp other = stampOf(second);
  session.touch(first);
  WVerstamp after = stampOf(first);
  EXPECT_EQ(ProVerstampEqual(before, again), PRO_B_TRUE);
  EXPECT_EQ(ProVerstampEqual(before, other), PRO_B_FALSE);
  EXPECT_EQ(ProVerstampEqual(before, after), PRO_B_FALSE);
  for (WVerstamp* stamp : {&before, &again, &other, &after}) {
    EXPECT_EQ(ProVerstampFree(stamp), PRO_TK_NO_ERROR);
    EXPECT_EQ(*stamp, nullptr);
  }
  session.finish();
  EXPECT_TRUE(session.misuse().empty());
}

TEST(Appearances, OfSurfacesComponentsAndModels) {
  const rendara::testing::TemporaryFolder folder;
  std::ofstream(folder.path() / "wood.png") << "x";
  Session session;
  session.textureFolders = {folder.path() / "missing", folder.path()};
  Model& part = addBoxPart(session, L"box");
  Model& assembly = addAssembly(session, L"top", {{&part, kIdentity}});
  part.surfaces[0].appearance = Appearance{L"steel", {0.1, 0.2, 0.3}, L"wood.png"};
  assembly.features[0].appearance = Appearance{L"red", {1, 0, 0}, L""};

  ProModelitem surface = {PRO_SURFACE, part.surfaces[0].id, &part};
  ProModelitem plain = {PRO_SURFACE, part.surfaces[1].id, &part};
  ProModelitem component = {PRO_FEATURE, assembly.features[0].id, &assembly};
  ProModelitem wholePart;
  ProMdlToModelitem(&part, &wholePart);
  ProSurfaceAppearanceProps props;
  EXPECT_EQ(ProSurfaceAppearancepropsGet(&plain, &props), PRO_TK_E_NOT_FOUND);
  EXPECT_EQ(ProSurfaceAppearancepropsGet(&wholePart, &props), PRO_TK_E_NOT_FOUND);
  ASSERT_EQ(ProSurfaceAppearancepropsGet(&component, &props), PRO_TK_NO_ERROR);
  EXPECT_STREQ(props.name, L"red");
  ASSERT_EQ(ProSurfaceAppearancepropsGet(&surface, &props), PRO_TK_NO_ERROR);
  EXPECT_EQ(props.color_rgb[2], 0.3);
  part.appearance = Appearance{L"part", {0, 0, 0}, L""};
  ASSERT_EQ(ProSurfaceAppearancepropsGet(&wholePart, &props), PRO_TK_NO_ERROR);
  EXPECT_STREQ(props.name, L"part");

  ProSurfaceTextureProps texture;
  EXPECT_EQ(ProSurfaceTexturepropsGet(&component, &texture), PRO_TK_E_NOT_FOUND);
  ASSERT_EQ(ProSurfaceTexturepropsGet(&surface, &texture), PRO_TK_NO_ERROR);
  ProPath path;
  ASSERT_EQ(ProTexturePathGet(texture.texture_map, PRO_TEXTURE_TYPE_TEXTURE, path), PRO_TK_NO_ERROR);
  EXPECT_EQ(std::filesystem::path(path), folder.path() / "wood.png");
  wchar_t missing[PRO_PATH_SIZE] = L"stone.png";
  EXPECT_EQ(ProTexturePathGet(missing, PRO_TEXTURE_TYPE_TEXTURE, path), PRO_TK_E_NOT_FOUND);
}

TEST(Layers, StatusWithoutALayer) {
  Session session;
  Model& part = addBoxPart(session, L"box");
  const int feature = part.features[0].id;
  // Starts from the other answer, so that one left alone shows.
  const auto statusOf = [&](int id, ProLayerItemStatus status = PRO_LAYERITEM_NONE) {
    ProLayerItem item;
    EXPECT_EQ(ProLayerItemInit(PRO_LAYER_FEAT, id, &part, &item), PRO_TK_NO_ERROR);
    EXPECT_EQ(ProLayeritemStatusGet(&item, nullptr, &status), PRO_TK_NO_ERROR);
    return status;
  };
  EXPECT_EQ(statusOf(feature), PRO_LAYERITEM_NORMAL) << "on no layer";
  Layer& shown = part.addLayer(L"shown");
  shown.items.emplace_back(PRO_LAYER_FEAT, feature);
  EXPECT_EQ(statusOf(feature), PRO_LAYERITEM_NORMAL);
  Layer& blanked = part.addLayer(L"blanked");
  blanked.display = PRO_LAYER_TYPE_BLANK;
  blanked.items.emplace_back(PRO_LAYER_QUILT, feature);
  EXPECT_EQ(statusOf(feature), PRO_LAYERITEM_NORMAL) << "the layer holds a quilt of the same number";
  blanked.items.emplace_back(PRO_LAYER_FEAT, feature);
  EXPECT_EQ(statusOf(feature, PRO_LAYERITEM_NORMAL), PRO_LAYERITEM_NONE);

  ProLayerItem item;
  ProLayerItemInit(PRO_LAYER_FEAT, feature, &part, &item);
  ProLayer* layers = nullptr;
  ASSERT_EQ(ProLayeritemLayersGet(&item, &layers), PRO_TK_NO_ERROR);
  int count = 0;
  ASSERT_EQ(ProArraySizeGet(layers, &count), PRO_TK_NO_ERROR);
  ASSERT_EQ(count, 2);
  ProLayerDisplay display = PRO_LAYER_TYPE_NONE;
  EXPECT_EQ(ProLayerDisplaystatusGet(&layers[1], &display), PRO_TK_NO_ERROR);
  EXPECT_EQ(display, PRO_LAYER_TYPE_BLANK);
  ProArray array = layers;
  ProArrayFree(&array);
  ProLayerItemInit(PRO_LAYER_FEAT, feature + 1000, &part, &item);
  EXPECT_EQ(ProLayeritemLayersGet(&item, &layers), PRO_TK_E_NOT_FOUND);
}

}  // namespace
}  // namespace standin

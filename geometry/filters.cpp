#include "geometry/filters.h"

#include "geometry/surface_collection.h"

namespace rendara {
namespace {

constexpr ProFeattype kExcludedFeatureType = 1070;

// What is asked of a geometry item and its feature. Statuses of the questions are ignored: what an operation leaves
// alone keeps the value that it has here.
struct ItemState {
  ProFeature feature{};
  ProFeatStatus featureStatus = PRO_FEAT_ACTIVE;
  ProFeattype featureType = 0;
  ProBoolean inactive = PRO_B_FALSE;
};

ItemState askState(ProGeomitem& item) {
  ItemState state;
  ProGeomitemFeatureGet(&item, &state.feature);
  ProFeatureStatusGet(&state.feature, &state.featureStatus);
  ProFeatureTypeGet(&state.feature, &state.featureType);
  ProGeomitemIsInactive(&item, &state.inactive);
  return state;
}

bool isBlanked(ProLayerType type, int id, ProMdl owner) {
  ProLayerItem item{};
  ProLayerItemInit(type, id, owner, &item);
  ProLayerItemStatus status = PRO_LAYERITEM_NORMAL;
  ProLayeritemStatusGet(&item, nullptr, &status);
  return status == PRO_LAYERITEM_NONE;
}

}  // namespace

ProError acceptSurface(ProSurface surface, ProAppData collection) {
  ProGeomitem item{};
  ProSurfaceToGeomitem(static_cast<SurfaceCollection*>(collection)->part, surface, &item);
  const ItemState state = askState(item);
  const bool skip = state.featureStatus != PRO_FEAT_ACTIVE || state.inactive != PRO_B_FALSE ||
                    state.featureType == kExcludedFeatureType;
  return skip ? PRO_TK_CONTINUE : PRO_TK_NO_ERROR;
}

ProError acceptQuilt(ProQuilt quilt, ProAppData collection) {
  ProPart part = static_cast<SurfaceCollection*>(collection)->part;
  ProGeomitem item{};
  ProQuiltToGeomitem(part, quilt, &item);
  ItemState state = askState(item);
  ProBoolean quiltHidden = PRO_B_FALSE;
  ProModelitemIsHidden(&item, &quiltHidden);
  ProBoolean featureHidden = PRO_B_FALSE;
  ProModelitemIsHidden(&state.feature, &featureHidden);
  ProBoolean backup = PRO_B_FALSE;
  ProQuiltIsBackupgeometry(part, quilt, &backup);
  int id = 0;
  ProQuiltIdGet(quilt, &id);

  if (isBlanked(PRO_LAYER_QUILT, id, part) || isBlanked(PRO_LAYER_FEAT, state.feature.id, part)) {
    return PRO_TK_CONTINUE;
  }
  const bool skip = state.featureStatus != PRO_FEAT_ACTIVE || state.inactive != PRO_B_FALSE ||
                    quiltHidden != PRO_B_FALSE || featureHidden != PRO_B_FALSE || backup != PRO_B_FALSE ||
                    state.featureType == kExcludedFeatureType;
  return skip ? PRO_TK_CONTINUE : PRO_TK_NO_ERROR;
}

}  // namespace rendara

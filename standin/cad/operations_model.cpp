// Models, their features, version stamps and units.
#include <algorithm>
#include <iterator>

#include "standin/cad/operation.h"

using standin::AllocationKind;
using standin::Feature;
using standin::Model;
using standin::Operation;

struct ver_stamp {
  std::uint64_t value;
};

namespace {

struct LengthUnit {
  const wchar_t* name;
  double millimetres;
};

constexpr LengthUnit kLengthUnits[] = {{L"mm", 1.0},   {L"cm", 10.0},    {L"m", 1000.0},    {L"in", 25.4},
                                       {L"ft", 304.8}, {L"mil", 0.0254}, {L"micron", 0.001}};

const LengthUnit* findLengthUnit(const std::wstring& name) {
  const auto* found = std::find_if(std::begin(kLengthUnits), std::end(kLengthUnits),
                                   [&](const LengthUnit& unit) { return name == unit.name; });
  return found != std::end(kLengthUnits) ? found : nullptr;
}

const wchar_t* typeName(ProMdlType type) {
  switch (type) {
    case PRO_MDL_ASSEMBLY:
      return L"ASM";
    case PRO_MDL_PART:
      return L"PRT";
    case PRO_MDL_DRAWING:
      return L"DRW";
    default:
      return L"";
  }
}

}  // namespace

extern "C" {

ProError ProMdlCurrentGet(ProMdl* p_handle) {
  Operation operation("ProMdlCurrentGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_handle == nullptr) return PRO_TK_BAD_INPUTS;
  *p_handle = operation.session().current;
  return *p_handle != nullptr ? PRO_TK_NO_ERROR : PRO_TK_BAD_CONTEXT;
}

ProError ProModeCurrentGet(ProMode* p_mode) {
  Operation operation("ProModeCurrentGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_mode == nullptr) return PRO_TK_BAD_INPUTS;
  *p_mode = operation.session().mode;
  return *p_mode != PRO_MODE_UNUSED ? PRO_TK_NO_ERROR : PRO_TK_BAD_CONTEXT;
}

ProError ProMdlDataGet(ProMdl handle, ProMdldata* p_data) {
  Operation operation("ProMdlDataGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(handle);
  if (model == nullptr || p_data == nullptr) return PRO_TK_BAD_INPUTS;
  *p_data = {};
  standin::copyText(model->name, p_data->name);
  standin::copyText(typeName(model->type), p_data->type);
  standin::copyText(L"1", p_data->version);
  return PRO_TK_NO_ERROR;
}

ProError ProMdlTypeGet(ProMdl handle, ProMdlType* p_type) {
  Operation operation("ProMdlTypeGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(handle);
  if (model == nullptr || p_type == nullptr) return PRO_TK_BAD_INPUTS;
  *p_type = model->type;
  return PRO_TK_NO_ERROR;
}

ProError ProMdlNameGet(ProMdl handle, ProName name) {
  Operation operation("ProMdlNameGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(handle);
  if (model == nullptr || name == nullptr) return PRO_TK_BAD_INPUTS;
  standin::copyText(model->name, name, PRO_NAME_SIZE);
  return PRO_TK_NO_ERROR;
}

ProError ProMdlToModelitem(ProMdl mdl, ProModelitem* p_model_item) {
  Operation operation("ProMdlToModelitem");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(mdl);
  if (model == nullptr || p_model_item == nullptr) return PRO_TK_BAD_INPUTS;
  *p_model_item = standin::itemOf(static_cast<ProType>(model->type), PRO_VALUE_UNUSED, model);
  return PRO_TK_NO_ERROR;
}

ProError ProModelitemIsHidden(ProModelitem* p_item, ProBoolean* p_is_hidden) {
  Operation operation("ProModelitemIsHidden");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  Model* owner = p_item != nullptr ? operation.model(p_item->owner) : nullptr;
  if (owner == nullptr || p_is_hidden == nullptr) return PRO_TK_BAD_INPUTS;
  const auto answer = [&](const auto* record) {
    if (record == nullptr) return PRO_TK_E_NOT_FOUND;
    *p_is_hidden = record->hidden ? PRO_B_TRUE : PRO_B_FALSE;
    return PRO_TK_NO_ERROR;
  };
  switch (p_item->type) {
    case PRO_FEATURE:
      return answer(owner->feature(p_item->id));
    case PRO_SURFACE:
      return answer(owner->surface(p_item->id));
    case PRO_QUILT:
      return answer(owner->quilt(p_item->id));
    default:
      return PRO_TK_BAD_INPUTS;
  }
}

ProError ProMdlVerstampGet(ProMdl mdl, WVerstamp* p_stamp) {
  Operation operation("ProMdlVerstampGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(mdl);
  if (model == nullptr || p_stamp == nullptr) return PRO_TK_BAD_INPUTS;
  *p_stamp = operation.allocations().addObject(operation.name(), AllocationKind::versionStamp,
                                               new ver_stamp{model->versionStamp});
  return PRO_TK_NO_ERROR;
}

ProBoolean ProVerstampEqual(WVerstamp stamp1, WVerstamp stamp2) {
  Operation operation("ProVerstampEqual");
  if (!operation) return PRO_B_FALSE;
  const ver_stamp* first = operation.object(stamp1, AllocationKind::versionStamp);
  const ver_stamp* second = operation.object(stamp2, AllocationKind::versionStamp);
  return first != nullptr && second != nullptr && first->value == second->value ? PRO_B_TRUE : PRO_B_FALSE;
}

ProError ProVerstampFree(WVerstamp* p_stamp) {
  Operation operation("ProVerstampFree");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return operation.release(p_stamp, AllocationKind::versionStamp);
}

ProError ProFeatureTypeGet(ProFeature* p_feature, ProFeattype* p_type) {
  Operation operation("ProFeatureTypeGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_feature == nullptr || p_type == nullptr) return PRO_TK_BAD_INPUTS;
  const Feature* feature = operation.feature(p_feature);
  if (feature == nullptr) return PRO_TK_BAD_INPUTS;
  *p_type = feature->type;
  return PRO_TK_NO_ERROR;
}

ProError ProFeatureStatusGet(ProFeature* p_feature, ProFeatStatus* p_status) {
  Operation operation("ProFeatureStatusGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_feature == nullptr || p_status == nullptr) return PRO_TK_BAD_INPUTS;
  const Feature* feature = operation.feature(p_feature);
  if (feature == nullptr) return PRO_TK_BAD_INPUTS;
  *p_status = feature->status;
  return PRO_TK_NO_ERROR;
}

ProError ProMdlPrincipalunitsystemGet(ProMdl mdl, ProUnitsystem* p_system) {
  Operation operation("ProMdlPrincipalunitsystemGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = operation.model(mdl);
  if (model == nullptr || p_system == nullptr) return PRO_TK_BAD_INPUTS;
  *p_system = {};
  standin::copyText(model->lengthUnit + L" N s", p_system->name);
  p_system->owner = mdl;
  return PRO_TK_NO_ERROR;
}

ProError ProUnitsystemTypeGet(ProUnitsystem* p_system, ProUnitsystemType* p_type) {
  Operation operation("ProUnitsystemTypeGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_system == nullptr || p_type == nullptr || operation.model(p_system->owner) == nullptr) return PRO_TK_BAD_INPUTS;
  *p_type = PRO_UNITSYSTEM_FLT;
  return PRO_TK_NO_ERROR;
}

ProError ProUnitsystemUnitGet(ProUnitsystem* p_system, ProUnitType type, ProUnititem* p_unit) {
  Operation operation("ProUnitsystemUnitGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  const Model* model = p_system != nullptr ? operation.model(p_system->owner) : nullptr;
  if (model == nullptr || p_unit == nullptr) return PRO_TK_BAD_INPUTS;
  *p_unit = {};
  p_unit->type = type;
  p_unit->owner = p_system->owner;
  const wchar_t* other = type == PRO_UNITTYPE_FORCE ? L"N" : L"sec";
  standin::copyText(type == PRO_UNITTYPE_LENGTH ? model->lengthUnit : other, p_unit->name);
  return PRO_TK_NO_ERROR;
}

// The factor from a length unit to the reference, millimetres when there is none.
ProError ProUnitConversionGet(ProUnititem* p_unit, ProUnitConversion* p_conversion, ProUnititem* p_ref_unit) {
  Operation operation("ProUnitConversionGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (p_unit == nullptr || p_conversion == nullptr || operation.model(p_unit->owner) == nullptr) {
    return PRO_TK_BAD_INPUTS;
  }
  const LengthUnit* unit = findLengthUnit(p_unit->name);
  const LengthUnit* reference = p_ref_unit != nullptr ? findLengthUnit(p_ref_unit->name) : &kLengthUnits[0];
  if (unit == nullptr || reference == nullptr) return PRO_TK_E_NOT_FOUND;
  *p_conversion = {unit->millimetres / reference->millimetres, 0.0};
  return PRO_TK_NO_ERROR;
}
}

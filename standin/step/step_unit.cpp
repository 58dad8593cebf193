#include "standin/step/step_unit.h"

#include <Interface_InterfaceModel.hxx>
#include <STEPConstruct_UnitContext.hxx>
#include <StepGeom_GeomRepContextAndGlobUnitAssCtxAndGlobUncertaintyAssCtx.hxx>
#include <StepGeom_GeometricRepresentationContextAndGlobalUnitAssignedContext.hxx>
#include <StepRepr_GlobalUnitAssignedContext.hxx>
#include <TColStd_SequenceOfAsciiString.hxx>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

namespace standin {

namespace {

struct KnownUnit {
  const wchar_t* name;
  double millimetres;
  std::array<const char*, 3> fileNames;  // in lower case
};

constexpr std::array<KnownUnit, 7> kKnownUnits = {{{L"mm", 1.0, {"millimetre", "millimeter", "mm"}},
                                                   {L"cm", 10.0, {"centimetre", "centimeter", "cm"}},
                                                   {L"m", 1000.0, {"metre", "meter", "m"}},
                                                   {L"in", 25.4, {"inch", "inches", "in"}},
                                                   {L"ft", 304.8, {"foot", "feet", "ft"}},
                                                   {L"mil", 0.0254, {"mil", "mils", "thou"}},
                                                   {L"micron", 0.001, {"micrometre", "micron", "micrometer"}}}};

bool near(double left, double right) { return std::abs(left - right) <= 1e-4 * std::abs(right); }

// The lengths, in millimetres (which the reader is set to), of the units that the contexts of the file's shapes
// declare, in the order of the file.
std::vector<double> declaredLengths(const Handle(Interface_InterfaceModel) & model) {
  std::vector<double> lengths;
  for (int i = 1; i <= model->NbEntities(); ++i) {
    const Handle(Standard_Transient) entity = model->Value(i);
    Handle(StepRepr_GlobalUnitAssignedContext) units;
    if (const auto full = Handle(StepGeom_GeomRepContextAndGlobUnitAssCtxAndGlobUncertaintyAssCtx)::DownCast(entity)) {
      units = full->GlobalUnitAssignedContext();
    } else if (const auto plain =
                   Handle(StepGeom_GeometricRepresentationContextAndGlobalUnitAssignedContext)::DownCast(entity)) {
      units = plain->GlobalUnitAssignedContext();
    }
    if (units.IsNull()) continue;
    STEPConstruct_UnitContext context;
    if (context.ComputeFactors(units) == 0 && context.LengthDone()) lengths.push_back(context.LengthFactor());
  }
  return lengths;
}

std::string firstUnitName(STEPControl_Reader& reader) {
  TColStd_SequenceOfAsciiString lengths;
  TColStd_SequenceOfAsciiString angles;
  TColStd_SequenceOfAsciiString solidAngles;
  reader.FileUnits(lengths, angles, solidAngles);
  if (lengths.IsEmpty()) return {};
  TCollection_AsciiString name = lengths.First();
  name.LowerCase();
  return name.ToCString();
}

const KnownUnit* findByName(const std::string& name) {
  for (const KnownUnit& unit : kKnownUnits) {
    for (const char* fileName : unit.fileNames) {
      if (name == fileName) return &unit;
    }
  }
  return nullptr;
}

const KnownUnit* findByLength(double millimetres) {
  for (const KnownUnit& unit : kKnownUnits) {
    if (near(millimetres, unit.millimetres)) return &unit;
  }
  return nullptr;
}

}  // namespace

LengthUnit lengthUnitOf(STEPControl_Reader& reader) {
  const std::string name = firstUnitName(reader);
  const std::vector<double> lengths = declaredLengths(reader.Model());
  // What the file says by number counts; the name only picks among several units. So a file whose inch is 25.40001 mm
  // gives its own numbers back.
  if (const KnownUnit* known = findByName(name)) {
    for (const double length : lengths) {
      if (near(length, known->millimetres)) return {known->name, length};
    }
    if (lengths.empty()) return {known->name, known->millimetres};
  }
  if (lengths.empty() || !(lengths.front() > 0.0)) return {};
  if (const KnownUnit* known = findByLength(lengths.front())) return {known->name, lengths.front()};
  return {name.empty() ? L"unit" : std::wstring(name.begin(), name.end()), lengths.front()};
}

}  // namespace standin

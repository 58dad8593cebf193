#include "tools/sample/sample_document.h"

#include <APIHeaderSection_MakeHeader.hxx>
#include <Interface_EntityIterator.hxx>
#include <Interface_Graph.hxx>
#include <Interface_Static.hxx>
#include <Quantity_Color.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <StepData_StepModel.hxx>
#include <StepRepr_RepresentationContext.hxx>
#include <StepVisual_MechanicalDesignGeometricPresentationRepresentation.hxx>
#include <TColStd_IndexedMapOfTransient.hxx>
#include <TCollection_ExtendedString.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDataStd_Name.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <map>
#include <stdexcept>
#include <string_view>

namespace sample {
namespace {

Quantity_Color toQuantity(const Colour& colour) {
  return {colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0, Quantity_TOC_sRGB};
}

void setName(const TDF_Label& label, const std::string& name) {
  TDataStd_Name::Set(label, TCollection_ExtendedString(name.c_str()));
}

Handle(TCollection_HAsciiString) text(const char* value) { return new TCollection_HAsciiString(value); }

// All that tells of the run and its machine gives way to fixed texts.
void fixHeader(STEPCAFControl_Writer& writer) {
  APIHeaderSection_MakeHeader header(writer.ChangeWriter().Model());
  header.SetName(text("twin_compressor"));
  header.SetTimeStamp(text("2024-01-01T00:00:00"));
  header.SetAuthorValue(1, text("Rendara"));
  header.SetOrganizationValue(1, text("Rendara"));
  header.SetOriginatingSystem(text("make_sample"));
  header.SetAuthorisation(text(""));
}

bool isStyle(const Handle(Standard_Transient) & entity) {
  return std::string_view(entity->DynamicType()->Name()).starts_with("StepVisual_");
}

// Appends the styles that an entity refers to, directly or through others, each after what refers to it first.
void appendStyles(const Interface_Graph& graph, const Handle(Standard_Transient) & entity,
                  TColStd_IndexedMapOfTransient& ordered) {
  ordered.Add(entity);
  for (Interface_EntityIterator shared = graph.Shareds(entity); shared.More(); shared.Next()) {
    if (isStyle(shared.Value()) && !ordered.Contains(shared.Value())) {
      appendStyles(graph, shared.Value(), ordered);
    }
  }
}

// The translator writes the colours of the parts in an order that hangs on addresses in memory; here they are put in
// the order of the parts.
void sortStyles(const Handle(Interface_InterfaceModel) & model) {
  using StyleList = StepVisual_MechanicalDesignGeometricPresentationRepresentation;
  const Interface_Graph graph(model);
  TColStd_IndexedMapOfTransient ordered;
  std::map<int, Handle(StyleList)> styles;  // by the number of the part's context
  for (int i = 1; i <= model->NbEntities(); ++i) {
    const Handle(Standard_Transient) entity = model->Value(i);
    const Handle(StyleList) list = Handle(StyleList)::DownCast(entity);
    if (!list.IsNull()) {
      styles.emplace(model->Number(list->ContextOfItems()), list);
    } else if (!isStyle(entity)) {
      ordered.Add(entity);
    }
  }
  for (const auto& [context, list] : styles) {
    appendStyles(graph, list, ordered);
  }
  if (ordered.Extent() != model->NbEntities()) {
    throw std::runtime_error("a colour belongs to no part");
  }
  model->ClearEntities();
  for (int i = 1; i <= ordered.Extent(); ++i) {
    model->AddEntity(ordered(i));
  }
}

}  // namespace

SampleDocument::SampleDocument() {
  XCAFApp_Application::GetApplication()->NewDocument("MDTV-XCAF", document_);
  shapes_ = XCAFDoc_DocumentTool::ShapeTool(document_->Main());
  colours_ = XCAFDoc_DocumentTool::ColorTool(document_->Main());
}

SampleDocument::~SampleDocument() { XCAFApp_Application::GetApplication()->Close(document_); }

TDF_Label SampleDocument::addPart(const std::string& name, const TopoDS_Shape& shape, const Colour& colour) {
  const TDF_Label label = shapes_->AddShape(shape, false);
  setName(label, name);
  colours_->SetColor(label, toQuantity(colour), XCAFDoc_ColorSurf);
  return label;
}

void SampleDocument::colourFaces(const TDF_Label& part,
                                 const std::function<std::optional<Colour>(const TopoDS_Face&)>& colourOf) {
  for (TopExp_Explorer faces(XCAFDoc_ShapeTool::GetShape(part), TopAbs_FACE); faces.More(); faces.Next()) {
    if (const auto colour = colourOf(TopoDS::Face(faces.Current()))) {
      colours_->SetColor(shapes_->AddSubShape(part, faces.Current()), toQuantity(*colour), XCAFDoc_ColorSurf);
    }
  }
}

TDF_Label SampleDocument::addAssembly(const std::string& name) {
  const TDF_Label label = shapes_->NewShape();
  setName(label, name);
  return label;
}

void SampleDocument::place(const TDF_Label& assembly, const TDF_Label& component, const gp_Trsf& placement,
                           const std::string& name) {
  setName(shapes_->AddComponent(assembly, component, TopLoc_Location(placement)), name);
}

int SampleDocument::componentNumber(const TDF_Label& assembly, const std::string& name) const {
  TDF_LabelSequence components;
  XCAFDoc_ShapeTool::GetComponents(assembly, components);
  for (int number = 1; number <= components.Length(); ++number) {
    Handle(TDataStd_Name) known;
    if (components.Value(number).FindAttribute(TDataStd_Name::GetID(), known) &&
        known->Get().IsEqual(TCollection_ExtendedString(name.c_str()))) {
      return number;
    }
  }
  throw std::runtime_error("no component " + name);
}

void SampleDocument::writeStep(const std::filesystem::path& file) {
  shapes_->UpdateAssemblies();
  STEPCAFControl_Writer writer;
  Interface_Static::SetCVal("write.step.schema", "AP214IS");
  Interface_Static::SetCVal("write.step.unit", "MM");
  Interface_Static::SetIVal("write.surfacecurve.mode", 0);
  writer.SetColorMode(true);
  writer.SetNameMode(true);
  if (!writer.Transfer(document_, STEPControl_AsIs)) {
    throw std::runtime_error("the assembly cannot be translated");
  }
  fixHeader(writer);
  sortStyles(writer.ChangeWriter().Model());
  if (writer.Write(file.c_str()) != IFSelect_RetDone) {
    throw std::runtime_error("cannot write " + file.string());
  }
}

}  // namespace sample

#include "tests/step/made_step.h"

#include <BRepBuilderAPI_Transform.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeWedge.hxx>
#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Quantity_Color.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <STEPControl_Controller.hxx>
#include <TDF_Label.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopExp_Explorer.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_LayerTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <gp_Ax2.hxx>
#include <gp_Trsf.hxx>
#include <stdexcept>

namespace standin::test {

namespace {

Quantity_Color colorOf(const std::array<double, 3>& rgb) { return {rgb[0], rgb[1], rgb[2], Quantity_TOC_sRGB}; }

void add(const Handle(TDocStd_Document) & document, const MadeShape& made) {
  const Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(document->Main());
  const Handle(XCAFDoc_ColorTool) colors = XCAFDoc_DocumentTool::ColorTool(document->Main());
  const TDF_Label label = shapes->AddShape(made.shape, false);
  TDataStd_Name::Set(label, TCollection_ExtendedString(made.name.c_str(), true));
  if (made.color) colors->SetColor(label, colorOf(*made.color), XCAFDoc_ColorSurf);
  if (made.solidColor) {
    const TopExp_Explorer solids(made.shape, TopAbs_SOLID);
    colors->SetColor(shapes->AddSubShape(label, solids.Current()), colorOf(*made.solidColor), XCAFDoc_ColorSurf);
  }
  if (!made.layer.empty()) {
    XCAFDoc_DocumentTool::LayerTool(document->Main())->SetLayer(label, TCollection_ExtendedString(made.layer.c_str()));
  }
}

}  // namespace

void writeStep(const std::filesystem::path& file, const std::vector<MadeShape>& shapes, const std::string& unit) {
  Message::DefaultMessenger()->ChangePrinters().Clear();
  const Handle(TDocStd_Document) document = new TDocStd_Document("MDTV-XCAF");
  for (const MadeShape& made : shapes) add(document, made);
  STEPControl_Controller::Init();
  Interface_Static::SetCVal("write.step.unit", unit.c_str());
  STEPCAFControl_Writer writer;
  if (!writer.Transfer(document) || writer.Write(file.c_str()) != IFSelect_RetDone) {
    throw std::runtime_error("cannot write " + file.string());
  }
}

TopoDS_Shape lopsidedSolid() { return BRepPrimAPI_MakeWedge(10.0, 20.0, 30.0, 2.0, 3.0, 7.0, 25.0).Shape(); }

TopoDS_Shape mirrored(const TopoDS_Shape& shape) {
  gp_Trsf mirror;
  mirror.SetMirror(gp_Ax2(gp_Pnt(3.0, 0.0, 0.0), gp_Dir(1.0, 0.2, 0.0)));
  return BRepBuilderAPI_Transform(shape, mirror, true).Shape();
}

}  // namespace standin::test

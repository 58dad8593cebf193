// Writes the model that the tests of the program open: an assembly "pair" of the part "block", placed twice, and the
// sub-assembly "axle" of the part "rod".
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <Interface_Static.hxx>
#include <STEPCAFControl_Writer.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopLoc_Location.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <cstdio>
#include <gp_Trsf.hxx>
#include <gp_Vec.hxx>

namespace {

TopLoc_Location shifted(double x) {
  gp_Trsf shift;
  shift.SetTranslation(gp_Vec(x, 0, 0));
  return TopLoc_Location(shift);
}

TDF_Label named(const TDF_Label& label, const char* name) {
  TDataStd_Name::Set(label, name);
  return label;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::fputs("usage: make_model FILE.step\n", stderr);
    return 2;
  }
  Handle(TDocStd_Document) document;
  XCAFApp_Application::GetApplication()->NewDocument("BinXCAF", document);
  const Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(document->Main());
  const TDF_Label block = named(shapes->AddShape(BRepPrimAPI_MakeBox(10, 20, 30).Shape(), false), "block");
  const TDF_Label rod = named(shapes->AddShape(BRepPrimAPI_MakeCylinder(2, 50).Shape(), false), "rod");
  const TDF_Label axle = named(shapes->NewShape(), "axle");
  shapes->AddComponent(axle, rod, shifted(1));
  const TDF_Label pair = named(shapes->NewShape(), "pair");
  shapes->AddComponent(pair, block, shifted(0));
  shapes->AddComponent(pair, block, shifted(40));
  shapes->AddComponent(pair, axle, shifted(-20));
  shapes->UpdateAssemblies();

  STEPCAFControl_Writer writer;
  Interface_Static::SetCVal("write.step.schema", "AP214IS");
  if (!writer.Transfer(document) || writer.Write(arguments[1]) != IFSelect_RetDone) {
    std::fprintf(stderr, "%s cannot be written\n", arguments[1]);
    return 1;
  }
  return 0;
}

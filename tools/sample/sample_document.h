// An assembly with names and colours, written as a STEP file that is the same at every run.
#pragma once

#include <TDF_Label.hxx>
#include <TDocStd_Document.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <filesystem>
#include <functional>
#include <gp_Trsf.hxx>
#include <optional>
#include <string>

namespace sample {

// Red, green, blue, 0 to 255, as they are shown.
struct Colour {
  int red = 0;
  int green = 0;
  int blue = 0;
};

class SampleDocument {
 public:
  SampleDocument();
  ~SampleDocument();
  SampleDocument(const SampleDocument&) = delete;
  SampleDocument& operator=(const SampleDocument&) = delete;

  TDF_Label addPart(const std::string& name, const TopoDS_Shape& shape, const Colour& colour);
  // Gives faces colours of their own; faces without one keep the part's.
  void colourFaces(const TDF_Label& part, const std::function<std::optional<Colour>(const TopoDS_Face&)>& colourOf);
  TDF_Label addAssembly(const std::string& name);
  void place(const TDF_Label& assembly, const TDF_Label& component, const gp_Trsf& placement, const std::string& name);
  // From 1, in the order of placing; throws when the assembly has no component of that name.
  int componentNumber(const TDF_Label& assembly, const std::string& name) const;

  // AP214, millimetres; throws when it cannot be written.
  void writeStep(const std::filesystem::path& file);

 private:
  Handle(TDocStd_Document) document_;
  Handle(XCAFDoc_ShapeTool) shapes_;
  Handle(XCAFDoc_ColorTool) colours_;
};

}  // namespace sample

#include "standin/step/product_attributes.h"

#include <Quantity_Color.hxx>
#include <TCollection_AsciiString.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDF_Tool.hxx>
#include <TDataStd_Name.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_DataMapOfShapeInteger.hxx>
#include <TopoDS_Iterator.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_LayerTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace standin {

namespace {

// UTF-16 to wide text, which is UTF-16 or UTF-32.
std::wstring wideFrom(const TCollection_ExtendedString& text) {
  std::wstring wide;
  for (int i = 1; i <= text.Length(); ++i) {
    const auto unit = static_cast<std::uint32_t>(text.Value(i));
    if constexpr (sizeof(wchar_t) == 4) {
      const bool high = unit >= 0xD800 && unit < 0xDC00 && i < text.Length();
      const auto next = high ? static_cast<std::uint32_t>(text.Value(i + 1)) : 0U;
      if (next >= 0xDC00 && next < 0xE000) {
        wide.push_back(static_cast<wchar_t>(0x10000U + ((unit - 0xD800U) << 10U) + (next - 0xDC00U)));
        ++i;
        continue;
      }
    }
    wide.push_back(static_cast<wchar_t>(unit));
  }
  return wide;
}

std::wstring trimmed(const std::wstring& text) {
  constexpr const wchar_t* kBlanks = L" \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::wstring::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

Appearance appearanceFrom(const Quantity_Color& color) {
  std::array<double, 3> rgb{};
  color.Values(rgb[0], rgb[1], rgb[2], Quantity_TOC_sRGB);
  std::array<int, 3> bytes{};
  for (std::size_t i = 0; i < rgb.size(); ++i) {
    // Open CASCADE keeps single precision; a file's 0.6 shall not become 0.59999996.
    rgb[i] = std::round(std::clamp(rgb[i], 0.0, 1.0) * 1e6) / 1e6;
    bytes[i] = static_cast<int>(std::lround(rgb[i] * 255.0));
  }
  std::array<wchar_t, 16> name{};
  std::swprintf(name.data(), name.size(), L"color %02x%02x%02x", bytes[0], bytes[1], bytes[2]);
  return {name.data(), {rgb[0], rgb[1], rgb[2]}, {}};
}

// Hands colours down from the parts' sub-shapes to the faces below them.
class ColorDescent {
 public:
  ColorDescent(const TDF_Label& part, const PartShape& shape) : found_(shape.faces.size()) {
    for (std::size_t i = 0; i < shape.faces.size(); ++i) faceIndex_.Bind(shape.faces[i], static_cast<int>(i));
    TDF_LabelSequence labels;
    XCAFDoc_ShapeTool::GetSubShapes(part, labels);
    for (const TDF_Label& label : labels) {
      if (std::optional<Appearance> appearance = appearanceOf(label)) {
        colored_.Bind(XCAFDoc_ShapeTool::GetShape(label), static_cast<int>(appearances_.size()));
        appearances_.push_back(std::move(*appearance));
      }
    }
  }

  std::vector<std::optional<Appearance>> run(const TopoDS_Shape& whole) {
    if (!appearances_.empty()) {
      // The whole part's own colour is the part's, not its faces'.
      for (TopoDS_Iterator it(whole); it.More(); it.Next()) descend(it.Value(), nullptr);
      if (whole.ShapeType() == TopAbs_FACE) descend(whole, nullptr);
    }
    return std::move(found_);
  }

 private:
  void descend(const TopoDS_Shape& shape, const Appearance* inherited) {
    if (const int* own = colored_.Seek(shape)) inherited = &appearances_[static_cast<std::size_t>(*own)];
    if (shape.ShapeType() == TopAbs_FACE) {
      const int* index = faceIndex_.Seek(shape);
      if (index != nullptr && inherited != nullptr) {
        std::optional<Appearance>& slot = found_[static_cast<std::size_t>(*index)];
        if (!slot) slot = *inherited;
      }
      return;
    }
    if (shape.ShapeType() > TopAbs_FACE) return;
    for (TopoDS_Iterator it(shape); it.More(); it.Next()) descend(it.Value(), inherited);
  }

  TopTools_DataMapOfShapeInteger faceIndex_;
  TopTools_DataMapOfShapeInteger colored_;
  std::vector<Appearance> appearances_;
  std::vector<std::optional<Appearance>> found_;
};

}  // namespace

std::wstring nameOf(const TDF_Label& label) {
  Handle(TDataStd_Name) name;
  if (!label.FindAttribute(TDataStd_Name::GetID(), name)) return {};
  return trimmed(wideFrom(name->Get()));
}

std::optional<Appearance> appearanceOf(const TDF_Label& label) {
  TDF_Label colorLabel;
  for (const XCAFDoc_ColorType type : {XCAFDoc_ColorSurf, XCAFDoc_ColorGen}) {
    Quantity_Color color;
    if (XCAFDoc_ColorTool::GetColor(label, type, colorLabel) &&
        XCAFDoc_DocumentTool::ColorTool(label)->GetColor(colorLabel, color)) {
      return appearanceFrom(color);
    }
  }
  return std::nullopt;
}

bool isVisible(const TDF_Label& label) { return XCAFDoc_DocumentTool::ColorTool(label)->IsVisible(label); }

std::vector<std::optional<Appearance>> faceAppearances(const TDF_Label& part, const PartShape& shape) {
  return ColorDescent(part, shape).run(XCAFDoc_ShapeTool::GetShape(part));
}

std::map<std::string, std::vector<StepLayer>> layersByLabel(const TDF_Label& main) {
  std::map<std::string, std::vector<StepLayer>> layers;
  const Handle(XCAFDoc_LayerTool) tool = XCAFDoc_DocumentTool::LayerTool(main);
  TDF_LabelSequence layerLabels;
  tool->GetLayerLabels(layerLabels);
  for (const TDF_Label& layerLabel : layerLabels) {
    const StepLayer layer{nameOf(layerLabel), tool->IsVisible(layerLabel)};
    TDF_LabelSequence shapes;
    tool->GetShapesOfLayer(layerLabel, shapes);
    for (const TDF_Label& shape : shapes) {
      if (!XCAFDoc_ShapeTool::IsSubShape(shape)) layers[entryOf(shape)].push_back(layer);
    }
  }
  return layers;
}

std::string entryOf(const TDF_Label& label) {
  TCollection_AsciiString entry;
  TDF_Tool::Entry(label, entry);
  return entry.ToCString();
}

}  // namespace standin

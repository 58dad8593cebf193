// Names, colours and layers of the labels of a STEP document.
#pragma once

#include <TDF_Label.hxx>
#include <TopoDS_Shape.hxx>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "standin/cad/model.h"
#include "standin/step/part_shape.h"

namespace standin {

// The label's name without blanks at its ends; empty when it has none.
std::wstring nameOf(const TDF_Label& label);

// The colour that the label itself carries: that of its surfaces, else the general one.
std::optional<Appearance> appearanceOf(const TDF_Label& label);
bool isVisible(const TDF_Label& label);

// For each face of a part its own colour, else that of the closest of its shells, solids and compounds that has one.
std::vector<std::optional<Appearance>> faceAppearances(const TDF_Label& part, const PartShape& shape);

struct StepLayer {
  std::wstring name;
  bool visible = true;
};
// The layers of the document that hold the labels of whole shapes, by the labels' entries.
std::map<std::string, std::vector<StepLayer>> layersByLabel(const TDF_Label& main);

// The label's place in the document as text: the same label has the same entry.
std::string entryOf(const TDF_Label& label);

}  // namespace standin

// What stands before the model in every scene: the header lines, the modules to load and the import options.
#pragma once

namespace rendara {

class vntScene_api;

struct ImportSettings {
  bool includeNURBS = true;
  int upAxis = 1;
  float meterScale = 1.0F;  // model length units per metre
};

// Each command has its own header variant, options and order; the differences are meant.
void writeRenderHeader(vntScene_api& scene, const ImportSettings& settings);
void writePackageHeader(vntScene_api& scene, const ImportSettings& settings);
void writeUpdateHeader(vntScene_api& scene, const ImportSettings& settings);

// Length units per metre by a unit's name (case-sensitive); 1 for a name that is not known.
float meterScaleOfUnit(const wchar_t* unitName);

}  // namespace rendara

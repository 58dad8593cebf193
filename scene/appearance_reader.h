// Reads material records from the CAD system's appearances: the one place where this folder meets it.
#pragma once

#include <optional>

#include "platform/creo_toolkit.h"
#include "scene/material.h"

namespace rendara {

// The record of the item's own appearance; nothing when it cannot be read or carries no name.
std::optional<MaterialRecord> readAppearance(const ProModelitem& item);

// The appearance that an occurrence of a model has as a whole: its component's, else the model's own.
std::optional<MaterialRecord> occurrenceMaterial(ProMdl model, const ProAsmcomppath& appearancePath);

}  // namespace rendara

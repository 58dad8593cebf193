// Opening the package that a command reads.
#pragma once

#include <string>
#include <string_view>

#include "tools/rpk/mapped_file.h"

namespace rpk {

// A scene script begins with a header line of the form //---...---.
bool isPackage(std::string_view bytes);

// Throws Failure(kUnreadable).
MappedFile openPackage(const std::string& path);

}  // namespace rpk

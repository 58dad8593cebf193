// Where a package's textures are, and how they are laid on.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tools/rpk/scene_summary.h"

namespace rpk {

// The last part of a path; packages come from systems with either kind of slash.
std::string textureName(const std::string& path);

// The file that a texture's path means, or nothing: the path as it stands, then its name in `folder`, that of the
// package; both in the bytes of the package and, since file systems mostly have UTF-8, in that form.
std::optional<std::string> findTexture(const std::string& path, const std::filesystem::path& folder);

// Outside 0 to 1 a texture repeats unless its shader says "wrap" off.
bool textureRepeats(const Material& material);

}  // namespace rpk

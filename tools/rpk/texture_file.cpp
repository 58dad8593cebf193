#include "tools/rpk/texture_file.h"

#include <system_error>

#include "tools/rpk/utf8_text.h"

namespace rpk {

std::string textureName(const std::string& path) { return path.substr(path.find_last_of("/\\") + 1); }

std::optional<std::string> findTexture(const std::string& path, const std::filesystem::path& folder) {
  const std::string name = textureName(path);
  if (name.empty() || path.find('\0') != std::string::npos) return std::nullopt;
  for (const std::string& candidate :
       {path, toUtf8(path), (folder / name).string(), (folder / toUtf8(name)).string()}) {
    std::error_code ignored;
    if (std::filesystem::is_regular_file(candidate, ignored)) return candidate;
  }
  return std::nullopt;
}

bool textureRepeats(const Material& material) {
  const Shader* texture = material.surface.find("diffuse");
  if (!texture) return true;
  const auto wrap = texture->values.find("wrap");
  return wrap == texture->values.end() || wrap->second != "off";
}

}  // namespace rpk

// Appearances of surfaces, components and models, and their textures.
#include "standin/cad/operation.h"
#include "standin/windows/code_page.h"

using standin::Appearance;
using standin::Feature;
using standin::Model;
using standin::Operation;

namespace {

// The item's own appearance; null when it has none.
const Appearance* appearanceOf(Model& owner, const ProModelitem& item) {
  const auto own = [](const auto* record) {
    return record != nullptr && record->appearance ? &*record->appearance : nullptr;
  };
  switch (item.type) {
    case PRO_SURFACE:
      return own(owner.surface(item.id));
    case PRO_FEATURE:
      return own(owner.feature(item.id));
    case PRO_PART:
    case PRO_ASSEMBLY:
      return own(&owner);
    default:
      return nullptr;
  }
}

}  // namespace

extern "C" {

ProError ProSurfaceAppearancepropsGet(ProModelitem* p_item, ProSurfaceAppearanceProps* p_props) {
  Operation operation("ProSurfaceAppearancepropsGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  Model* owner = p_item != nullptr ? operation.model(p_item->owner) : nullptr;
  if (owner == nullptr || p_props == nullptr) return PRO_TK_BAD_INPUTS;
  const Appearance* appearance = appearanceOf(*owner, *p_item);
  if (appearance == nullptr) return PRO_TK_E_NOT_FOUND;
  *p_props = {};
  p_props->ambient = 0.5;
  p_props->diffuse = 0.8;
  p_props->highlite = 0.3;
  p_props->shininess = 0.3;
  for (std::size_t channel = 0; channel < 3; ++channel) {
    p_props->color_rgb[channel] = appearance->color[channel];
    p_props->highlight_color[channel] = 1.0;
  }
  standin::copyText(appearance->name, p_props->name);
  standin::copyText(appearance->name, p_props->label);
  return PRO_TK_NO_ERROR;
}

ProError ProSurfaceTexturepropsGet(ProModelitem* p_item, ProSurfaceTextureProps* p_props) {
  Operation operation("ProSurfaceTexturepropsGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  Model* owner = p_item != nullptr ? operation.model(p_item->owner) : nullptr;
  if (owner == nullptr || p_props == nullptr) return PRO_TK_BAD_INPUTS;
  const Appearance* appearance = appearanceOf(*owner, *p_item);
  if (appearance == nullptr || appearance->texture.empty()) return PRO_TK_E_NOT_FOUND;
  *p_props = {};
  standin::copyText(appearance->texture, p_props->texture_map);
  return PRO_TK_NO_ERROR;
}

ProError ProTexturePathGet(ProPath texture_name, ProTextureType /*type*/, ProPath texture_path) {
  Operation operation("ProTexturePathGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (texture_name == nullptr || texture_path == nullptr || *texture_name == L'\0') return PRO_TK_BAD_INPUTS;
  const auto file = operation.session().findTexture(texture_name);
  if (!file) return PRO_TK_E_NOT_FOUND;
  const std::wstring& folder = operation.session().textureFolderName;
  const std::wstring found = folder.empty() ? standin::wideFromUtf8(file->string())
                                            : folder + L"\\" + standin::wideFromUtf8(file->filename().string());
  if (found.size() >= PRO_PATH_SIZE) return PRO_TK_LINE_TOO_LONG;
  standin::copyText(found, texture_path, PRO_PATH_SIZE);
  return PRO_TK_NO_ERROR;
}
}

#include "scene/appearance_reader.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace rendara {
namespace {

wchar_t lowerAscii(wchar_t character) {
  return character >= L'A' && character <= L'Z' ? static_cast<wchar_t>(character - L'A' + L'a') : character;
}

bool endsWithoutCase(std::wstring_view text, std::wstring_view ending) {
  return text.size() >= ending.size() && std::equal(ending.begin(), ending.end(), text.end() - ending.size(),
                                                    [](wchar_t a, wchar_t b) { return a == lowerAscii(b); });
}

bool isReadableTexture(std::wstring_view name) {
  constexpr std::array<std::wstring_view, 5> kExtensions = {L".png", L".gif", L".jpg", L".tif", L".bmp"};
  return std::any_of(kExtensions.begin(), kExtensions.end(),
                     [&](std::wstring_view extension) { return endsWithoutCase(name, extension); });
}

// The full path of the item's texture; empty when it has none that can be used.
std::wstring readTexturePath(ProModelitem item) {
  ProSurfaceTextureProps texture{};
  if (ProSurfaceTexturepropsGet(&item, &texture) != PRO_TK_NO_ERROR || !isReadableTexture(texture.texture_map)) {
    return {};
  }
  ProPath path{};
  if (ProTexturePathGet(texture.texture_map, PRO_TEXTURE_TYPE_TEXTURE, path) != PRO_TK_NO_ERROR) {
    return {};
  }
  return path;
}

// The component that a one-level path names, as an item of the path's owner; nothing for an empty path.
std::optional<ProModelitem> componentItem(const ProAsmcomppath& path) {
  if (path.table_num < 1 || path.table_num > PRO_MAX_ASSEM_LEVEL) {
    return std::nullopt;
  }
  return ProModelitem{PRO_FEATURE, path.comp_id_tab[path.table_num - 1], path.owner};
}

}  // namespace

std::optional<MaterialRecord> readAppearance(const ProModelitem& item) {
  ProModelitem asked = item;
  ProSurfaceAppearanceProps appearance{};
  if (ProSurfaceAppearancepropsGet(&asked, &appearance) != PRO_TK_NO_ERROR || appearance.name[0] == L'\0') {
    return std::nullopt;
  }
  MaterialRecord record;
  record.displayName = appearance.name;
  std::copy_n(appearance.color_rgb, record.color.size(), record.color.begin());
  record.texturePath = readTexturePath(item);
  return record;
}

std::optional<MaterialRecord> occurrenceMaterial(ProMdl model, const ProAsmcomppath& appearancePath) {
  if (const auto component = componentItem(appearancePath)) {
    if (auto record = readAppearance(*component)) {
      return record;
    }
  }
  ProModelitem item{};
  return ProMdlToModelitem(model, &item) == PRO_TK_NO_ERROR ? readAppearance(item) : std::nullopt;
}

}  // namespace rendara

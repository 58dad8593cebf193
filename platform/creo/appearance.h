// Appearances and textures of surfaces, components and models.
#pragma once

#include "platform/creo/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct pro_surface_appearance_props {
  double ambient;
  double diffuse;
  double highlite;
  double shininess;
  ProVector color_rgb;  // each 0 to 1
  ProVector highlight_color;
  double transparency;
  double reflection;
  ProName name;
  ProLine label;
  ProLine description;
  ProLine keywords;
} ProSurfaceAppearanceProps;

typedef struct pro_surface_texture_props {
  ProPath decal;
  ProPath texture_map;
  ProPath bump_map;
} ProSurfaceTextureProps;

typedef enum { PRO_TEXTURE_TYPE_TEXTURE = 0, PRO_TEXTURE_TYPE_DECAL = 1, PRO_TEXTURE_TYPE_BUMP = 2 } ProTextureType;

ProError ProSurfaceAppearancepropsGet(ProModelitem* p_item, ProSurfaceAppearanceProps* p_props);
ProError ProSurfaceTexturepropsGet(ProModelitem* p_item, ProSurfaceTextureProps* p_props);
// The full path of a texture by its name.
ProError ProTexturePathGet(ProPath texture_name, ProTextureType type, ProPath texture_path);

#ifdef __cplusplus
}
#endif

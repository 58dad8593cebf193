#include "tools/rpk/gltf/texture_table.h"

#include <fmt/format.h>
#include <tiny_gltf.h>

#include <optional>

#include "tools/rpk/image_file.h"
#include "tools/rpk/mapped_file.h"
#include "tools/rpk/texture_file.h"
#include "tools/rpk/utf8_text.h"

namespace rpk {

int TextureTable::indexOf(const std::string& path, bool repeat) {
  const auto known = images_.find(path);
  const int image = known != images_.end() ? known->second : images_[path] = imageOf(path);
  if (image < 0) return -1;
  const auto [entry, isNew] = textures_.try_emplace({image, repeat}, static_cast<int>(model_.textures.size()));
  if (isNew) {
    tinygltf::Texture texture;
    texture.source = image;
    texture.sampler = samplerOf(repeat);
    model_.textures.push_back(std::move(texture));
  }
  return entry->second;
}

int TextureTable::imageOf(const std::string& path) {
  const std::optional<std::string> file = findTexture(path, folder_);
  if (!file) {
    warnings_.push_back(fmt::format("texture {}: there is no such file; the plain colour stands in", toUtf8(path)));
    return -1;
  }
  const auto known = embedded_.find(*file);
  return known != embedded_.end() ? known->second : embedded_[*file] = embed(path, *file);
}

// PNG and JPEG as they are, the others as PNG.
int TextureTable::embed(const std::string& path, const std::string& file) {
  std::string error;
  const auto content = MappedFile::open(file, &error);
  const auto image = content ? decodeImage(content->bytes(), &error) : std::nullopt;
  if (!image) {
    warnings_.push_back(fmt::format("texture {}: {}; the plain colour stands in", toUtf8(path), toUtf8(error)));
    return -1;
  }
  const std::optional<ImageKind> kind = imageKind(content->bytes());
  tinygltf::Image embedded;
  embedded.name = toUtf8(textureName(path));
  embedded.mimeType = kind == ImageKind::kJpeg ? "image/jpeg" : "image/png";
  embedded.bufferView = kind == ImageKind::kPng || kind == ImageKind::kJpeg
                            ? data_.addView(content->bytes(), 0)
                            : data_.addView(encodePng(*image, false), 0);
  model_.images.push_back(std::move(embedded));
  return static_cast<int>(model_.images.size() - 1);
}

int TextureTable::samplerOf(bool repeat) {
  const auto [entry, isNew] = samplers_.try_emplace(repeat, static_cast<int>(model_.samplers.size()));
  if (isNew) {
    tinygltf::Sampler sampler;
    sampler.wrapS = sampler.wrapT = repeat ? TINYGLTF_TEXTURE_WRAP_REPEAT : TINYGLTF_TEXTURE_WRAP_CLAMP_TO_EDGE;
    sampler.magFilter = TINYGLTF_TEXTURE_FILTER_LINEAR;
    sampler.minFilter = TINYGLTF_TEXTURE_FILTER_LINEAR_MIPMAP_LINEAR;
    model_.samplers.push_back(std::move(sampler));
  }
  return entry->second;
}

}  // namespace rpk

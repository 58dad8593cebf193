// Pictures that textures and environments come as, decoded into one form; and a writer of PNG.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rpk {

enum class ImageKind { kPng, kJpeg, kGif, kBmp, kTiff };

// By the first bytes, whatever the file is called; nothing for any other content.
std::optional<ImageKind> imageKind(std::string_view bytes);

// Red, green, blue, alpha of 8 bits each, not multiplied by alpha; rows from the top. Empty pixels: no image.
struct Image {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;  // 4 × width × height
  const std::uint8_t* at(std::uint32_t x, std::uint32_t y) const {
    return pixels.data() + (static_cast<std::size_t>(y) * width + x) * 4;
  }
};

// Images larger than this are refused before any memory is taken for them.
inline constexpr std::uint32_t kMaxImageSide = 32768;
inline constexpr std::uint64_t kMaxImagePixels = std::uint64_t{1} << 26;

// The first picture of the file's content. Deeper samples are brought to 8 bits. Nothing when it is of no known kind,
// too large or damaged; `error`, when given, then says why.
std::optional<Image> decodeImage(std::string_view bytes, std::string* error = nullptr);

// The bytes of a PNG file; with `alpha` false the alpha channel is left out. Empty when the image's numbers do not
// agree with each other or memory runs out.
std::string encodePng(const Image& image, bool alpha = true);

}  // namespace rpk

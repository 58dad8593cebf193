#include "tools/rpk/image_file.h"

#include <png.h>
#include <stb_image.h>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

namespace rpk {
namespace {

std::optional<Image> refused(std::string* error, std::string why) {
  if (error) *error = std::move(why);
  return std::nullopt;
}

bool tooLarge(std::uint64_t width, std::uint64_t height) {
  return width > kMaxImageSide || height > kMaxImageSide || width * height > kMaxImagePixels;
}

std::optional<Image> refuseSize(std::string* error, std::uint64_t width, std::uint64_t height) {
  return refused(error, "an image of " + std::to_string(width) + " x " + std::to_string(height) + " is too large");
}

Image emptyImage(std::uint32_t width, std::uint32_t height) {
  return {width, height, std::vector<std::uint8_t>(std::size_t{4} * width * height)};
}

// Frees what the simplified interface of libpng holds, on every path.
struct PngImage {
  PngImage() { control.version = PNG_IMAGE_VERSION; }
  ~PngImage() { png_image_free(&control); }
  PngImage(const PngImage&) = delete;
  PngImage& operator=(const PngImage&) = delete;
  png_image control{};
};

std::optional<Image> decodePng(std::string_view bytes, std::string* error) {
  PngImage png;
  if (!png_image_begin_read_from_memory(&png.control, bytes.data(), bytes.size())) {
    return refused(error, png.control.message);
  }
  if (tooLarge(png.control.width, png.control.height)) {
    return refuseSize(error, png.control.width, png.control.height);
  }
  png.control.format = PNG_FORMAT_RGBA;
  Image image = emptyImage(png.control.width, png.control.height);
  if (!png_image_finish_read(&png.control, nullptr, image.pixels.data(), 0, nullptr)) {
    return refused(error, png.control.message);
  }
  return image;
}

// JPEG, GIF and BMP.
std::optional<Image> decodeOther(std::string_view bytes, std::string* error) {
  if (bytes.size() > INT_MAX) return refused(error, "the file is too large");
  const auto* data = reinterpret_cast<const stbi_uc*>(bytes.data());
  const int size = static_cast<int>(bytes.size());
  int width = 0;
  int height = 0;
  int channels = 0;
  if (!stbi_info_from_memory(data, size, &width, &height, &channels) || width <= 0 || height <= 0) {
    return refused(error, "damaged or of an unusual form");
  }
  const auto wide = static_cast<std::uint32_t>(width);
  const auto high = static_cast<std::uint32_t>(height);
  if (tooLarge(wide, high)) return refuseSize(error, wide, high);
  const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> pixels(
      stbi_load_from_memory(data, size, &width, &height, &channels, 4), stbi_image_free);
  if (!pixels || static_cast<std::uint32_t>(width) != wide || static_cast<std::uint32_t>(height) != high) {
    return refused(error, "damaged or of an unusual form");
  }
  Image image = emptyImage(wide, high);
  std::copy_n(pixels.get(), image.pixels.size(), image.pixels.data());
  return image;
}

// A TIFF file in memory, as the library's client procedures want it.
struct TiffSource {
  std::string_view bytes;
  toff_t position = 0;
};

tmsize_t readTiff(thandle_t handle, void* buffer, tmsize_t wanted) {
  auto* source = static_cast<TiffSource*>(handle);
  if (wanted <= 0 || source->position >= source->bytes.size()) return 0;
  const auto at = static_cast<std::size_t>(source->position);
  const std::size_t count = std::min(static_cast<std::size_t>(wanted), source->bytes.size() - at);
  std::memcpy(buffer, source->bytes.data() + at, count);
  source->position += count;
  return static_cast<tmsize_t>(count);
}

tmsize_t writeNoTiff(thandle_t, void*, tmsize_t) { return 0; }

toff_t seekTiff(thandle_t handle, toff_t offset, int origin) {
  auto* source = static_cast<TiffSource*>(handle);
  if (origin == SEEK_CUR) offset += source->position;
  if (origin == SEEK_END) offset += source->bytes.size();
  return source->position = offset;
}

int closeTiff(thandle_t) { return 0; }

toff_t sizeOfTiff(thandle_t handle) { return static_cast<TiffSource*>(handle)->bytes.size(); }

// Keeps the first message, and the library from writing any of them to the terminal.
__attribute__((format(printf, 4, 0))) int noteTiffError(TIFF*, void* error, const char*, const char* format,
                                                        va_list arguments) {
  auto* text = static_cast<std::string*>(error);
  if (!text->empty()) return 1;
  std::array<char, 256> buffer{};
  std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
  *text = buffer.data();
  return 1;
}

int ignoreTiffWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

// The library's colours are multiplied by alpha.
void divideByAlpha(Image& image) {
  for (std::size_t i = 0; i < image.pixels.size(); i += 4) {
    const unsigned alpha = image.pixels[i + 3];
    if (alpha == 0 || alpha == 255) continue;
    for (std::size_t channel = i; channel < i + 3; ++channel) {
      image.pixels[channel] =
          static_cast<std::uint8_t>(std::min(255U, (image.pixels[channel] * 255U + alpha / 2) / alpha));
    }
  }
}

std::optional<Image> decodeTiff(std::string_view bytes, std::string* error) {
  std::string message;
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                 TIFFOpenOptionsFree);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), noteTiffError, &message);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignoreTiffWarning, nullptr);
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(kMaxImagePixels * 8));
  TiffSource source{bytes};
  const std::unique_ptr<TIFF, decltype(&TIFFClose)> tiff(
      TIFFClientOpenExt("image", "rm", &source, readTiff, writeNoTiff, seekTiff, closeTiff, sizeOfTiff, nullptr,
                        nullptr, options.get()),
      TIFFClose);
  const auto damaged = [&] { return refused(error, message.empty() ? std::string("damaged") : message); };
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  if (!tiff || !TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width) ||
      !TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height) || width == 0 || height == 0) {
    return damaged();
  }
  if (tooLarge(width, height)) return refuseSize(error, width, height);
  std::vector<std::uint32_t> raster(std::size_t{width} * height);
  if (!TIFFReadRGBAImageOriented(tiff.get(), width, height, raster.data(), ORIENTATION_TOPLEFT, 1)) return damaged();
  Image image = emptyImage(width, height);
  for (std::size_t i = 0; i < raster.size(); ++i) {
    const std::uint32_t pixel = raster[i];
    const std::array<std::uint32_t, 4> channels = {TIFFGetR(pixel), TIFFGetG(pixel), TIFFGetB(pixel), TIFFGetA(pixel)};
    std::copy(channels.begin(), channels.end(), image.pixels.data() + i * 4);
  }
  divideByAlpha(image);
  return image;
}

}  // namespace

std::optional<ImageKind> imageKind(std::string_view bytes) {
  using namespace std::string_view_literals;
  constexpr std::array<std::pair<std::string_view, ImageKind>, 9> kSignatures = {{
      {"\x89PNG\r\n\x1a\n"sv, ImageKind::kPng},
      {"\xff\xd8\xff"sv, ImageKind::kJpeg},
      {"GIF87a"sv, ImageKind::kGif},
      {"GIF89a"sv, ImageKind::kGif},
      {"BM"sv, ImageKind::kBmp},
      {"II*\0"sv, ImageKind::kTiff},
      {"MM\0*"sv, ImageKind::kTiff},
      {"II+\0"sv, ImageKind::kTiff},
      {"MM\0+"sv, ImageKind::kTiff},
  }};
  const auto found = std::find_if(kSignatures.begin(), kSignatures.end(),
                                  [&](const auto& entry) { return bytes.starts_with(entry.first); });
  if (found == kSignatures.end()) return std::nullopt;
  return found->second;
}

std::optional<Image> decodeImage(std::string_view bytes, std::string* error) {
  const std::optional<ImageKind> kind = imageKind(bytes);
  if (!kind) return refused(error, "neither PNG, JPEG, GIF, BMP nor TIFF");
  switch (*kind) {
    case ImageKind::kPng:
      return decodePng(bytes, error);
    case ImageKind::kTiff:
      return decodeTiff(bytes, error);
    case ImageKind::kJpeg:
    case ImageKind::kGif:
    case ImageKind::kBmp:
      break;
  }
  return decodeOther(bytes, error);
}

std::string encodePng(const Image& image, bool alpha) {
  const std::size_t pixels = std::size_t{image.width} * image.height;
  if (pixels == 0 || image.pixels.size() != pixels * 4) return {};
  std::vector<std::uint8_t> colours;
  if (!alpha) {
    colours.reserve(pixels * 3);
    for (std::size_t i = 0; i < pixels; ++i) {
      colours.insert(colours.end(), image.pixels.data() + i * 4, image.pixels.data() + i * 4 + 3);
    }
  }
  const void* const source = alpha ? image.pixels.data() : colours.data();
  PngImage png;
  png.control.width = image.width;
  png.control.height = image.height;
  png.control.format = alpha ? PNG_FORMAT_RGBA : PNG_FORMAT_RGB;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png.control);
  std::string bytes(size, '\0');
  if (!png_image_write_to_memory(&png.control, bytes.data(), &size, 0, source, 0, nullptr)) return {};
  bytes.resize(size);
  return bytes;
}

}  // namespace rpk

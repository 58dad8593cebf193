#include "tools/rpk/image_file.h"

#include <gtest/gtest.h>
#include <stb_image_write.h>
#include <tiffio.h>

#include <array>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace {

using rpk::Image;
using rpk::ImageKind;
using Pixel = std::array<int, 4>;

// Two columns and two rows, all different, so that rows and channels that change places are seen.
const Image kFour = {2, 2, {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255, 200, 100, 50, 255}};

Pixel pixelOf(const Image& image, std::uint32_t x, std::uint32_t y) {
  const std::uint8_t* at = image.at(x, y);
  return {at[0], at[1], at[2], at[3]};
}

std::string bmpFile(std::int32_t width, std::int32_t height) {
  std::string bytes = "BM";
  const auto number = [&](std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i));
  };
  number(70, 4), number(0, 4), number(54, 4);
  number(40, 4), number(static_cast<std::uint32_t>(width), 4), number(static_cast<std::uint32_t>(height), 4);
  number(1, 2), number(24, 2), number(0, 4), number(16, 4);
  bytes.append(16, '\0');
  // Rows from the bottom, blue first, each of a multiple of four bytes.
  for (const std::uint32_t pixel : {0x0000ffU, 0xc86432U}) number(pixel, 3);
  number(0, 2);
  for (const std::uint32_t pixel : {0xff0000U, 0x00ff00U}) number(pixel, 3);
  number(0, 2);
  return bytes;
}

std::string gifFile() {
  using namespace std::string_literals;
  const std::string colours = "\xff\0\0\0\xff\0\0\0\xff\xc8\x64\x32"s;
  return "GIF89a\x02\0\x02\0\xa1\0\0"s + colours + ",\0\0\0\0\x02\0\x02\0\0"s + "\x02\x03\x44\x34\x05\0;"s;
}

std::string jpegFile() {
  const std::vector<std::uint8_t> grey(std::size_t{16} * 16 * 3, 130);
  std::string bytes;
  const auto append = [](void* context, void* data, int size) {
    static_cast<std::string*>(context)->append(static_cast<const char*>(data), static_cast<std::size_t>(size));
  };
  EXPECT_NE(stbi_write_jpg_to_func(append, &bytes, 16, 16, 3, grey.data(), 90), 0);
  return bytes;
}

// With `alpha`, the last pixel is half transparent, its colour as it is without.
std::string tiffFile(bool alpha, int compression) {
  const rendara::testing::TemporaryFolder folder;
  const std::string path = (folder.path() / "image.tif").string();
  TIFF* tiff = TIFFOpen(path.c_str(), "w");
  const std::uint16_t channels = alpha ? 4 : 3;
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 2);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 2);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, channels);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
  const std::uint16_t kind = EXTRASAMPLE_UNASSALPHA;
  if (alpha) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
  for (std::uint32_t row = 0; row < 2; ++row) {
    std::vector<std::uint8_t> samples;
    for (std::uint32_t x = 0; x < 2; ++x) samples.insert(samples.end(), kFour.at(x, row), kFour.at(x, row) + channels);
    if (alpha && row == 1) samples.back() = 128;
    TIFFWriteScanline(tiff, samples.data(), row, 0);
  }
  TIFFClose(tiff);
  return rendara::testing::readFile(path);
}

TEST(ImageFile, DecodesEachKindFromItsBytes) {
  const struct {
    std::string bytes;
    ImageKind kind;
  } files[] = {
      {rpk::encodePng(kFour), ImageKind::kPng},
      {rpk::encodePng(kFour, false), ImageKind::kPng},
      {gifFile(), ImageKind::kGif},
      {bmpFile(2, 2), ImageKind::kBmp},
      {tiffFile(false, COMPRESSION_NONE), ImageKind::kTiff},
      {tiffFile(false, COMPRESSION_LZW), ImageKind::kTiff},
  };
  for (const auto& file : files) {
    SCOPED_TRACE(static_cast<int>(file.kind));
    EXPECT_EQ(rpk::imageKind(file.bytes), file.kind);
    std::string error;
    const auto image = rpk::decodeImage(file.bytes, &error);
    ASSERT_TRUE(image.has_value()) << error;
    EXPECT_EQ(image->width, 2U);
    EXPECT_EQ(image->height, 2U);
    EXPECT_EQ(image->pixels, kFour.pixels);
  }
  const auto jpeg = rpk::decodeImage(jpegFile());
  ASSERT_TRUE(jpeg.has_value());
  EXPECT_EQ(jpeg->width, 16U);
  EXPECT_NEAR(pixelOf(*jpeg, 7, 7)[1], 130, 2);
}

TEST(ImageFile, KeepsColoursBelowTransparency) {
  const auto tiff = rpk::decodeImage(tiffFile(true, COMPRESSION_NONE));
  ASSERT_TRUE(tiff.has_value());
  const Pixel half = pixelOf(*tiff, 1, 1);
  EXPECT_NEAR(half[0], 200, 1);
  EXPECT_NEAR(half[1], 100, 1);
  EXPECT_NEAR(half[2], 50, 1);
  EXPECT_EQ(half[3], 128);

  Image transparent = kFour;
  transparent.pixels[3] = 0;
  const auto png = rpk::decodeImage(rpk::encodePng(transparent));
  ASSERT_TRUE(png.has_value());
  EXPECT_EQ(png->pixels, transparent.pixels);
  EXPECT_EQ(rpk::encodePng({3, 2, kFour.pixels}), "") << "more pixels claimed than there are";
}

TEST(ImageFile, RefusesWhatItCannotHold) {
  const std::pair<std::string, const char*> refusals[] = {
      {"", "neither"},
      {"<svg>", "neither"},
      {std::string("\x89PNG\r\n\x1a\n"), ""},
      {"GIF89a", "damaged"},
      {bmpFile(40000, 2), "too large"},
      {bmpFile(32000, 32000), "too large"},
      {tiffFile(false, COMPRESSION_NONE).substr(0, 30), ""},
  };
  for (const auto& [bytes, why] : refusals) {
    std::string error;
    EXPECT_FALSE(rpk::decodeImage(bytes, &error).has_value());
    EXPECT_NE(error, "");
    EXPECT_NE(error.find(why), std::string::npos) << error;
  }
}

TEST(ImageFile, DamagedFilesDoNoHarm) {
  std::mt19937 random(20);
  for (const std::string& whole : {rpk::encodePng(kFour), gifFile(), bmpFile(2, 2), jpegFile(),
                                   tiffFile(false, COMPRESSION_LZW), tiffFile(true, COMPRESSION_NONE)}) {
    for (int round = 0; round < 300; ++round) {
      std::string bytes = whole;
      for (int i = 0; i < 3; ++i) bytes[6 + random() % (bytes.size() - 6)] = static_cast<char>(random());
      if (round % 3 == 0) bytes.resize(6 + random() % (bytes.size() - 6));
      const auto image = rpk::decodeImage(bytes);
      if (!image) continue;
      EXPECT_EQ(image->pixels.size(), std::size_t{4} * image->width * image->height);
    }
  }
}

}  // namespace

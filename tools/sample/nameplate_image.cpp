#include "tools/sample/nameplate_image.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sample {
namespace {

constexpr int kWidth = 1120;
constexpr int kHeight = 480;

struct Pixel {
  double red = 0;
  double green = 0;
  double blue = 0;
};

struct Point {
  double x = 0;
  double y = 0;
};

class Canvas {
 public:
  Canvas() : pixels_(static_cast<std::size_t>(kWidth) * kHeight) {}

  Pixel& at(int x, int y) { return pixels_[static_cast<std::size_t>(y) * kWidth + static_cast<std::size_t>(x)]; }

  // A line with round ends, with edges one pixel soft.
  void stroke(const Point& from, const Point& to, double width, const Pixel& ink) {
    const double reach = width / 2 + 1;
    const int left = std::max(0, static_cast<int>(std::min(from.x, to.x) - reach));
    const int right = std::min(kWidth - 1, static_cast<int>(std::max(from.x, to.x) + reach));
    const int top = std::max(0, static_cast<int>(std::min(from.y, to.y) - reach));
    const int bottom = std::min(kHeight - 1, static_cast<int>(std::max(from.y, to.y) + reach));
    for (int y = top; y <= bottom; ++y) {
      for (int x = left; x <= right; ++x) {
        const double cover = std::clamp(width / 2 + 0.5 - distance({x + 0.5, y + 0.5}, from, to), 0.0, 1.0);
        Pixel& pixel = at(x, y);
        pixel.red += (ink.red - pixel.red) * cover;
        pixel.green += (ink.green - pixel.green) * cover;
        pixel.blue += (ink.blue - pixel.blue) * cover;
      }
    }
  }

 private:
  static double distance(const Point& point, const Point& from, const Point& to) {
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    const double length = dx * dx + dy * dy;
    const double share =
        length > 0 ? std::clamp(((point.x - from.x) * dx + (point.y - from.y) * dy) / length, 0.0, 1.0) : 0.0;
    return std::hypot(point.x - from.x - share * dx, point.y - from.y - share * dy);
  }

  std::vector<Pixel> pixels_;
};

// Letters on a grid 4 wide and 6 high, origin at the lower left: strokes of points "xy", a blank between strokes.
const std::map<char, std::string_view>& letters() {
  static const std::map<char, std::string_view> kLetters = {{'A', "00042644 4440 0343"},
                                                            {'B', "00063645443303 334241300000"},
                                                            {'C', "4536160501103041"},
                                                            {'D', "000626444220 2000"},
                                                            {'E', "46060040 0333"},
                                                            {'F', "460600 0333"},
                                                            {'G', "453616050110304143 4323"},
                                                            {'H', "0006 4046 0343"},
                                                            {'I', "1030 2026 1636"},
                                                            {'J', "46413010 1001"},
                                                            {'K', "0006 4603 1340"},
                                                            {'L', "060040"},
                                                            {'M', "0006234640"},
                                                            {'N', "00064046"},
                                                            {'O', "1636454130100105 0516"},
                                                            {'P', "00063645443303"},
                                                            {'Q', "163645413010010516 2240"},
                                                            {'R', "00063645443303 2340"},
                                                            {'S', "453616050413334241301001"},
                                                            {'T', "0646 2620"},
                                                            {'U', "060110304146"},
                                                            {'V', "062046"},
                                                            {'W', "0610233046"},
                                                            {'X', "0046 0640"},
                                                            {'Y', "062346 2320"},
                                                            {'Z', "06460040"},
                                                            {'0', "163645413010010516 0145"},
                                                            {'1', "152620 1030"},
                                                            {'2', "051636454402 020040"},
                                                            {'3', "0516364544331333 334241301001"},
                                                            {'4', "3036 360242"},
                                                            {'5', "46060434434130101001"},
                                                            {'6', "453616050110304142331302"},
                                                            {'7', "064610"},
                                                            {'8', "13334445361605041302011030414233"},
                                                            {'9', "011030414536160504133344"},
                                                            {'.', "2021"},
                                                            {'/', "0046"},
                                                            {'-', "0343"},
                                                            {':', "2121 2424"}};
  return kLetters;
}

double textWidth(std::string_view text, double size) { return (static_cast<double>(text.size()) * 6 - 2) * size; }

// `size` is the length of a grid step in pixels; `place` the lower left corner of the first letter.
void write(Canvas& canvas, std::string_view text, Point place, double size, double width, const Pixel& ink) {
  for (const char letter : text) {
    const auto found = letters().find(static_cast<char>(std::toupper(static_cast<unsigned char>(letter))));
    const std::string_view strokes = found == letters().end() ? std::string_view() : found->second;
    const Point* last = nullptr;
    Point from;
    for (std::size_t i = 0; i + 1 < strokes.size();) {
      if (strokes[i] == ' ') {
        last = nullptr;
        ++i;
        continue;
      }
      const Point to = {place.x + (strokes[i] - '0') * size, place.y - (strokes[i + 1] - '0') * size};
      if (last) {
        canvas.stroke(from, to, width, ink);
      }
      from = to;
      last = &from;
      i += 2;
    }
    place.x += 6 * size;
  }
}

// Metal brushed lengthwise: rows of slightly different grey, from a generator of its own so that it never changes.
void brush(Canvas& canvas) {
  std::uint32_t state = 1;
  for (int y = 0; y < kHeight; ++y) {
    state = state * 1664525U + 1013904223U;
    const double grain = (static_cast<double>(state >> 24) / 255 - 0.5) * 14;
    const double sheen = 12 * std::sin(y * 0.011 + 0.6);
    for (int x = 0; x < kWidth; ++x) {
      canvas.at(x, y) = {196 + grain + sheen, 199 + grain + sheen, 203 + grain + sheen};
    }
  }
}

void frame(Canvas& canvas, double inset, double width, const Pixel& ink) {
  const std::array<Point, 4> corners = {
      {{inset, inset}, {kWidth - inset, inset}, {kWidth - inset, kHeight - inset}, {inset, kHeight - inset}}};
  for (std::size_t i = 0; i < corners.size(); ++i) {
    canvas.stroke(corners[i], corners[(i + 1) % corners.size()], width, ink);
  }
}

std::vector<png_byte> toBytes(Canvas& canvas) {
  std::vector<png_byte> bytes;
  bytes.reserve(static_cast<std::size_t>(kWidth) * kHeight * 3);
  const auto toByte = [](double value) { return static_cast<png_byte>(std::clamp(value + 0.5, 0.0, 255.0)); };
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const Pixel& pixel = canvas.at(x, y);
      bytes.insert(bytes.end(), {toByte(pixel.red), toByte(pixel.green), toByte(pixel.blue)});
    }
  }
  return bytes;
}

}  // namespace

void writeNameplate(const std::filesystem::path& file) {
  const Pixel ink = {24, 34, 52};
  const Pixel band = {22, 62, 116};
  const Pixel light = {236, 240, 244};
  Canvas canvas;
  brush(canvas);
  // The band with the name.
  for (int y = 62; y < 138; ++y) {
    canvas.stroke({70, y + 0.5}, {kWidth - 70.0, y + 0.5}, 2, band);
  }
  frame(canvas, 22, 6, ink);
  const std::string_view title = "TWIN COMPRESSOR TC-146";
  constexpr double kTitleSize = 6.6;
  write(canvas, title, {(kWidth - textWidth(title, kTitleSize)) / 2, 120}, kTitleSize, 6.5, light);
  const std::array<std::string_view, 4> lines = {"2 CYLINDERS   46 X 44 MM", "146 CM3       8 BAR",
                                                 "1450 /MIN     1.1 KW", "NO. 0001      RENDARA"};
  double y = 222;
  for (const std::string_view line : lines) {
    write(canvas, line, {92, y}, 6.4, 5, ink);
    y += 66;
  }
  const std::vector<png_byte> bytes = toBytes(canvas);
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = kWidth;
  image.height = kHeight;
  image.format = PNG_FORMAT_RGB;
  if (png_image_write_to_file(&image, file.c_str(), 0, bytes.data(), 0, nullptr) == 0) {
    throw std::runtime_error("cannot write " + file.string() + ": " + image.message);
  }
}

}  // namespace sample

#include "tools/rpk/app/picture_command.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "tools/rpk/app/output_file.h"
#include "tools/rpk/app/package_input.h"
#include "tools/rpk/gltf/motion.h"
#include "tools/rpk/picture/draw_picture.h"
#include "tools/rpk/texture_file.h"
#include "tools/terminal/progress.h"
#include "tools/terminal/suggestion.h"

namespace rpk {
namespace {

struct PictureArguments {
  std::string file;
  std::string output;
  std::string camera = "iso";
  std::string size = "1600x1000";
  bool edges = false;
  bool exact = false;
  std::optional<double> time;   // seconds
  std::optional<int> pictures;  // side by side, over the whole motion
};

void warn(const PictureArguments& options, const std::string& what) {
  fmt::print(std::cerr, "rpk: {}: warning: {}\n", options.file, what);
}

[[noreturn]] void refuse(const std::string& what) { throw Failure(ExitCode::kUsage, what); }

void readSize(const std::string& text, PictureOptions& picture) {
  const char* const end = text.data() + text.size();
  const auto [cross, widthError] = std::from_chars(text.data(), end, picture.width);
  const bool good = widthError == std::errc() && cross != end && (*cross == 'x' || *cross == 'X');
  const auto [last, heightError] = std::from_chars(good ? cross + 1 : end, end, picture.height);
  if (!good || heightError != std::errc() || last != end || picture.width == 0 || picture.height == 0) {
    refuse(fmt::format("--size: \"{}\" is no size; it is to look like 1600x1000", text));
  }
  if (picture.width > kMaxPictureSide || picture.height > kMaxPictureSide ||
      std::uint64_t{picture.width} * picture.height > kMaxPicturePixels) {
    refuse(fmt::format("--size: {} is too large; a side has at most {} pixels and the picture {} million", text,
                       kMaxPictureSide, kMaxPicturePixels / 1'000'000));
  }
}

void checkStrip(const PictureArguments& options, const PictureOptions& picture) {
  if (options.time && options.pictures) refuse("--time and --frames exclude each other");
  if (options.time && !std::isfinite(*options.time)) refuse("--time: not a number of seconds");
  if (!options.pictures) return;
  if (*options.pictures < 1) refuse("--frames: there is to be one picture at least");
  const std::uint64_t width = std::uint64_t{picture.width} * static_cast<std::uint64_t>(*options.pictures);
  if (width > kMaxPictureSide || width * picture.height > kMaxPicturePixels) {
    refuse(fmt::format("--frames: {} pictures of {} side by side are too large", *options.pictures, options.size));
  }
}

// The content is PNG, so the name had better say so.
void checkOutput(const PictureArguments& options) {
  std::string extension = std::filesystem::path(options.output).extension().string();
  for (char& letter : extension) letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  std::error_code ignored;
  const auto kind = std::filesystem::status(options.output, ignored).type();
  const bool stream = kind == std::filesystem::file_type::character || kind == std::filesystem::file_type::fifo;
  if (extension != ".png" && !stream) refuse(fmt::format("{}: pictures are written as *.png", options.output));
  if (std::filesystem::equivalent(options.file, options.output, ignored)) {
    refuse(fmt::format("{}: the package would overwrite itself", options.output));
  }
}

// A camera of the package wins over a standard view of the same name.
ViewDirection chooseView(const Scene& scene, const PictureArguments& options) {
  if (const Camera* camera = scene.camera(options.camera)) {
    if (const auto view = cameraView(*camera)) return *view;
    throw Failure(ExitCode::kUnreadable,
                  fmt::format("{}: camera \"{}\" looks in no direction", options.file, options.camera));
  }
  if (const auto view = standardView(options.camera, upAxis(scene))) return *view;
  std::vector<std::string> names(kStandardViews.begin(), kStandardViews.end());
  std::vector<std::string> quoted = names;
  for (const Camera& camera : scene.cameras) {
    names.push_back(camera.name);
    quoted.push_back(fmt::format("\"{}\"", camera.name));
  }
  refuse(fmt::format("{}: no camera \"{}\"{}; there are {}", options.file, options.camera,
                     terminal::didYouMean(options.camera, names), fmt::join(quoted, ", ")));
}

std::shared_ptr<const Image> loadTexture(const std::string& path, const PictureArguments& options) {
  const auto found = findTexture(path, std::filesystem::path(options.file).parent_path());
  if (!found) {
    warn(options, fmt::format("texture {}: there is no such file; the plain colour stands in", path));
    return nullptr;
  }
  std::string error;
  const auto content = MappedFile::open(*found, &error);
  auto image = content ? decodeImage(content->bytes(), &error) : std::nullopt;
  if (image) return std::make_shared<const Image>(std::move(*image));
  warn(options, fmt::format("texture {}: {}; the plain colour stands in", path, error));
  return nullptr;
}

PictureSource sourceOf(const PictureArguments& options) {
  return options.exact ? PictureSource::kExactSurfaces : PictureSource::kMeshes;
}

PictureScene buildScene(const Scene& scene, const PictureArguments& options) {
  const auto source = sourceOf(options);
  PictureScene built(pictureModel(
      scene, [&options](const std::string& path) { return loadTexture(path, options); }, source));
  if (built.empty()) {
    throw Failure(ExitCode::kOutput, fmt::format("{}: there is nothing to draw: no {} that could be read stands in the "
                                                 "scene",
                                                 options.file, options.exact ? "exact surface" : "triangle of a mesh"));
  }
  if (built.leftOut() > 0) {
    warn(options,
         fmt::format("{} triangles or placements are left out: not finite, with indices beyond the vertices, or "
                     "flattened",
                     built.leftOut()));
  }
  return built;
}

// The moments to draw; nothing for the model at rest.
std::vector<double> momentsOf(const Scene& scene, const PictureArguments& options) {
  if (!options.time && !options.pictures) return {};
  const auto end = motionEnd(scene);
  if (!end) refuse(fmt::format("{}: nothing moves in the package", options.file));
  if (options.time) return {*options.time};
  std::vector<double> moments;
  moments.reserve(static_cast<std::size_t>(*options.pictures));
  for (int i = 0; i < *options.pictures; ++i) moments.push_back(*end * i / std::max(*options.pictures - 1, 1));
  return moments;
}

// Copies a picture into a strip of as many pictures of its size.
void place(const Image& picture, std::size_t number, std::size_t count, Image& strip) {
  const std::size_t row = std::size_t{picture.width} * 4;
  strip.width = picture.width * static_cast<std::uint32_t>(count);
  strip.height = picture.height;
  strip.pixels.resize(row * count * picture.height);
  for (std::size_t y = 0; y < picture.height; ++y) {
    std::copy_n(picture.pixels.begin() + static_cast<std::ptrdiff_t>(y * row), row,
                strip.pixels.begin() + static_cast<std::ptrdiff_t>((y * count + number) * row));
  }
}

// The camera stands as for the model at rest, so that pictures of different times can be compared.
Image draw(const Scene& scene, PictureScene& built, const PictureCamera& camera, const PictureOptions& drawing,
           const PictureArguments& options, terminal::Progress& progress) {
  const std::vector<double> moments = momentsOf(scene, options);
  const std::size_t count = std::max<std::size_t>(moments.size(), 1);
  Image strip;
  for (std::size_t i = 0; i < count; ++i) {
    if (!moments.empty()) {
      const auto placementOf = [&](const Group& group) { return placementAt(group, moments[i]); };
      built.place(instancePlacements(placedGroups(scene, placementOf), sourceOf(options)));
    }
    Image image = drawPicture(built, camera, drawing, [&](double done) {
      progress.show(
          fmt::format("Drawing {:.0f} %", (static_cast<double>(i) + done) * 100 / static_cast<double>(count)));
      return true;
    });
    if (count == 1) return image;
    place(image, i, count, strip);
  }
  return strip;
}

void writePicture(const Image& image, const PictureArguments& options) {
  const std::string bytes = encodePng(image, false);
  if (bytes.empty()) throw Failure(ExitCode::kOutput, fmt::format("{}: out of memory", options.output));
  OutputFile output(options.output);
  output.stream().write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  output.finish();
}

ExitCode picture(const PictureArguments& options, std::ostream& out) {
  PictureOptions drawing;
  drawing.edges = options.edges;
  readSize(options.size, drawing);
  checkStrip(options, drawing);
  checkOutput(options);
  const MappedFile file = openPackage(options.file);
  terminal::Progress progress(stderr);
  progress.begin();
  const Scene scene = readScene(file.bytes());
  const ViewDirection view = chooseView(scene, options);
  progress.show("Building");
  PictureScene built = buildScene(scene, options);
  const PictureCamera camera = frameScene(built, view, drawing.width, drawing.height);
  const Image image = draw(scene, built, camera, drawing, options, progress);
  writePicture(image, options);
  progress.end();
  fmt::print(out, "{}: {} x {}, camera \"{}\", {} part{}, {} triangles\n", options.output, image.width, image.height,
             options.camera, built.placedInstances(), built.placedInstances() == 1 ? "" : "s", built.triangleCount());
  if (scene.faultCount == 0) return ExitCode::kDone;
  fmt::print(std::cerr, "rpk: {}: {} fault{}, the first in line {}: {}; what could be read is drawn\n", options.file,
             scene.faultCount, scene.faultCount == 1 ? "" : "s", scene.faults.front().place.line,
             scene.faults.front().what);
  return ExitCode::kFound;
}

}  // namespace

void addPictureCommand(CLI::App& program, Work& work) {
  CLI::App* command = program.add_subcommand(
      "picture",
      "Draws a package: the whole model, at rest unless a time is given, in its colours and textures. A closed part "
      "whose inner side shows is "
      "inside out, or has a face that is, and gets red stripes there; an open one is darker on its inner side");
  const auto options = std::make_shared<PictureArguments>();
  command->add_option("FILE", options->file, "The package")->required();
  command->add_option("OUT", options->output, "The picture to write, *.png")->required();
  command
      ->add_option("--camera", options->camera,
                   "A camera of the package, or iso, front, back, left, right, top or bottom by the package's up axis; "
                   "it gives the direction, the model always fills the picture")
      ->capture_default_str();
  command->add_option("--size", options->size, "Pixels, as WxH")->capture_default_str();
  command->add_flag("--edges", options->edges, "Lines along outlines, sharp edges and borders of materials");
  command->add_flag("--exact", options->exact, "From the exact surfaces and their trims in the place of the meshes");
  command->add_option("--time", options->time,
                      "The model as its animations have it at so many seconds, seen as it is seen at rest; between "
                      "two frames it moves evenly, before the first and after the last it stands");
  command->add_option("--frames", options->pictures,
                      "So many pictures of --size side by side, from the beginning of the motion to its end");
  command->callback([options, &work] { work = [options](std::ostream& out) { return picture(*options, out); }; });
}

}  // namespace rpk

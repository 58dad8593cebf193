#include "tools/rpk/app/picture_command.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <cctype>
#include <charconv>
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
#include "tools/rpk/picture/draw_picture.h"
#include "tools/rpk/texture_file.h"
#include "tools/terminal/progress.h"
#include "tools/terminal/suggestion.h"

namespace rpk {
namespace {

struct Options {
  std::string file;
  std::string output;
  std::string camera = "iso";
  std::string size = "1600x1000";
  bool edges = false;
  bool exact = false;
};

void warn(const Options& options, const std::string& what) {
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

// The content is PNG, so the name had better say so.
void checkOutput(const Options& options) {
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
ViewDirection chooseView(const Scene& scene, const Options& options) {
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

std::shared_ptr<const Image> loadTexture(const std::string& path, const Options& options) {
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

PictureScene buildScene(const Scene& scene, const Options& options) {
  const auto source = options.exact ? PictureSource::kExactSurfaces : PictureSource::kMeshes;
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

void writePicture(const Image& image, const Options& options) {
  const std::string bytes = encodePng(image, false);
  if (bytes.empty()) throw Failure(ExitCode::kOutput, fmt::format("{}: out of memory", options.output));
  OutputFile output(options.output);
  output.stream().write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  output.finish();
}

ExitCode picture(const Options& options, std::ostream& out) {
  PictureOptions drawing;
  drawing.edges = options.edges;
  readSize(options.size, drawing);
  checkOutput(options);
  const MappedFile file = openPackage(options.file);
  terminal::Progress progress(stderr);
  progress.begin();
  const Scene scene = readScene(file.bytes());
  const ViewDirection view = chooseView(scene, options);
  progress.show("Building");
  const PictureScene built = buildScene(scene, options);
  const PictureCamera camera = frameScene(built, view, drawing.width, drawing.height);
  const Image image = drawPicture(built, camera, drawing, [&progress](double done) {
    progress.show(fmt::format("Drawing {:.0f} %", done * 100));
    return true;
  });
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
      "Draws a package: the whole model at rest, in its colours and textures. A closed part whose inner side shows is "
      "inside out, or has a face that is, and gets red stripes there; an open one is darker on its inner side");
  const auto options = std::make_shared<Options>();
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
  command->callback([options, &work] { work = [options](std::ostream& out) { return picture(*options, out); }; });
}

}  // namespace rpk

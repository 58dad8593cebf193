#include "tools/rpk/app/gltf_command.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>

#include "tools/rpk/app/output_file.h"
#include "tools/rpk/app/package_input.h"
#include "tools/rpk/gltf/gltf_writer.h"
#include "tools/rpk/report/display_text.h"

namespace rpk {
namespace {

struct GltfArguments {
  std::string file;
  std::string output;
};

GltfSummary writeFile(const Scene& scene, const GltfArguments& options) {
  const std::filesystem::path package(options.file);
  OutputFile output(options.output);
  ScratchFile scratch(options.output);
  errno = 0;
  try {
    GltfSummary summary = writeGltf(scene, {package.parent_path()}, scratch.stream(), output.stream());
    output.finish();
    return summary;
  } catch (const GltfError& error) {
    if (errno != 0) output.fail(errno);
    throw Failure(ExitCode::kOutput, fmt::format("{}: {}", options.output, error.what()));
  }
}

// What is wrong goes to standard error, and the file is written with what could be read.
ExitCode gltf(const GltfArguments& options, std::ostream& out) {
  const MappedFile file = openPackage(options.file);
  std::error_code ignored;
  if (std::filesystem::equivalent(options.file, options.output, ignored)) {
    throw Failure(ExitCode::kUsage, fmt::format("{}: the package would overwrite itself", options.output));
  }
  const Scene scene = readScene(file.bytes());
  const GltfSummary summary = writeFile(scene, options);
  for (const std::string& warning : summary.warnings) {
    fmt::print(std::cerr, "rpk: {}: warning: {}\n", options.file, warning);
  }
  fmt::print(out, "{}: {}, {}, {}, {}, {}, {}, {}, {} bytes\n", options.output,
             counted(summary.meshes, "mesh", "meshes"), counted(summary.placedMeshes, "placed part", "placed parts"),
             counted(summary.triangles, "triangle", "triangles"), counted(summary.materials, "material", "materials"),
             counted(summary.textures, "texture", "textures"), counted(summary.cameras, "camera", "cameras"),
             counted(summary.movingGroups, "moving group", "moving groups"), summary.bytes);
  if (scene.faultCount == 0) return ExitCode::kDone;
  fmt::print(std::cerr, "rpk: {}: {}, the first in line {}: {}; what could be read is written\n", options.file,
             counted(scene.faultCount, "fault", "faults"), scene.faults.front().place.line, scene.faults.front().what);
  return ExitCode::kFound;
}

}  // namespace

void addGltfCommand(CLI::App& program, Work& work) {
  CLI::App* command = program.add_subcommand(
      "gltf", "Writes a package as binary glTF 2.0 (meshes, materials, cameras, motions), in metres and Y up");
  const auto options = std::make_shared<GltfArguments>();
  command->add_option("FILE", options->file, "The package")->required();
  command->add_option("OUT", options->output, "The file to write, *.glb")->required();
  command->callback([options, &work] { work = [options](std::ostream& out) { return gltf(*options, out); }; });
}

}  // namespace rpk

// The pictures that a scene's materials name, embedded in the glTF file.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tools/rpk/gltf/binary_data.h"

namespace rpk {

class TextureTable {
 public:
  // Pictures that are not where their path says are looked for in `folder`, by their file names. Warnings, one for
  // every picture that cannot be read, go to `warnings`.
  TextureTable(tinygltf::Model& model, BinaryData& data, std::filesystem::path folder,
               std::vector<std::string>& warnings)
      : model_(model), data_(data), folder_(std::move(folder)), warnings_(warnings) {}

  // The index of the texture, -1 for a picture that cannot be read. `path` is in the package's code page.
  int indexOf(const std::string& path, bool repeat);

 private:
  int imageOf(const std::string& path);
  int embed(const std::string& path, const std::string& file);
  int samplerOf(bool repeat);

  tinygltf::Model& model_;
  BinaryData& data_;
  std::filesystem::path folder_;
  std::vector<std::string>& warnings_;
  std::map<std::string, int> images_;    // by path
  std::map<std::string, int> embedded_;  // by the file that was found
  std::map<std::pair<int, bool>, int> textures_;
  std::map<bool, int> samplers_;
};

}  // namespace rpk

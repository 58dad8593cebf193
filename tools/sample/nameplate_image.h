// The texture of the compressor's nameplate: lettering of strokes on brushed metal.
#pragma once

#include <filesystem>

namespace sample {

// A PNG of 1120 x 480 pixels, 16 to the millimetre; throws when it cannot be written.
void writeNameplate(const std::filesystem::path& file);

}  // namespace sample

// In the place of the loader where there is no Open CASCADE.
#include "standin/step/step_loader.h"

namespace standin {

LoadResult loadStep(Session&, const std::filesystem::path&, const LoadProgress&) {
  return {nullptr, "this program opens snapshots, which creo-standin makes of STEP files on Linux"};
}

std::string applyOverlay(Session&, Model&, const std::filesystem::path&) {
  return "this program applies no overlays; a snapshot holds what its overlay made";
}

}  // namespace standin

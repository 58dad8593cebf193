#include "standin/renderer/pictures.h"

namespace standin {

bool canDrawPictures() { return false; }

std::unique_ptr<Pictures> makePictures(const std::filesystem::path&) { return nullptr; }

}  // namespace standin

// What the session's open model looks like: its shown components as triangles with their colours, for a picture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "standin/cad/session.h"
#include "tools/rpk/picture/picture_camera.h"
#include "tools/rpk/picture/picture_model.h"

namespace standin {

struct SessionPicture {
  rpk::PictureModel model;
  // For each of the model's instances the component feature ids from the top model down to the part.
  std::vector<std::vector<int>> paths;
};

// Of a view of the session, whose matrix leads from the model to the viewer: x to the right, y up, z towards him.
rpk::ViewDirection viewDirection(const Matrix& view);

// Keeps the triangles of parts, so that a picture after a change takes only the work of what has changed.
class SessionPictureMaker {
 public:
  // Called with a part before it is tessellated.
  using Progress = std::function<void(const Model& part)>;

  // Textures come from the session's folders; those that cannot be read show the appearance's colour.
  explicit SessionPictureMaker(const Session& session) : session_(session) {}

  // In the coordinates of `top`. Left out are components that are suppressed, hidden or on a blanked layer, hidden and
  // inactive surfaces, and surfaces that cannot be tessellated. A surface has its own colour, else that of the
  // component that places the part, else the part's, else grey.
  SessionPicture make(const Model& top, const Progress& progress = {});

 private:
  // A part's triangles by their colours: those of surfaces without an own one come first.
  struct PartMeshes {
    std::uint64_t versionStamp = 0;
    rpk::PicturePart part;
    std::vector<const Appearance*> own;  // of each mesh of the part; null for the first
  };
  class Collector;

  const PartMeshes& meshesOf(const Model& part, const Progress& progress);
  // Null for one that cannot be read.
  std::shared_ptr<const rpk::Image> texture(const std::wstring& name);

  const Session& session_;
  std::map<const Model*, PartMeshes> parts_;
  std::map<std::wstring, std::shared_ptr<const rpk::Image>> textures_;
};

}  // namespace standin

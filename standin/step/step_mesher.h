// Tessellates the faces of one part with Open CASCADE.
#pragma once

#include <TopoDS_Face.hxx>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "standin/cad/model.h"
#include "standin/step/part_shape.h"

namespace standin {

// Meshes the whole part at the first request for a chord height, so that neighbouring faces share the vertices of
// their edges, and keeps the result for the last such chord height. A face that failed at the chord height that is
// kept is tried on its own at another one, and the kept meshes stay: whoever tries a stubborn face at several chord
// heights does not pay for the whole part each time.
class StepMesher : public PartMesher {
 public:
  explicit StepMesher(std::shared_ptr<const PartShape> shape);

  std::shared_ptr<const SurfaceMesh> mesh(std::size_t surface, double chordHeight, std::string& failure) override;
  void forget() override;

  const PartShape& shape() const { return *shape_; }
  // What Open CASCADE is asked for, in millimetres, to stay within a chord height in model units: half of it. Its
  // deflection is no strict bound, and chords all on the inside of a thin blade would take 0.9 % of the volume.
  double deflection(double chordHeight) const { return 0.5 * chordHeight * shape_->unit; }

 private:
  struct Answer {
    std::shared_ptr<const SurfaceMesh> mesh;
    std::string failure;
  };
  using Indices = std::vector<std::size_t>;
  // Other shapes of the same face: mostly none or one, after a repair several.
  using Pieces = std::vector<TopoDS_Face>;

  std::vector<Answer> tessellate(const Indices& faces, double fineness);
  void tessellatePlain(const Indices& faces, double fineness, std::vector<Answer>& answers);
  void tessellateConverted(const Indices& faces, double fineness, std::vector<Answer>& answers);
  void tessellateRepaired(const Indices& faces, double fineness, std::vector<Answer>& answers);
  const Pieces& converted(std::size_t face);
  const Pieces& repaired(std::size_t face);

  std::shared_ptr<const PartShape> shape_;
  double keptChord_ = std::numeric_limits<double>::quiet_NaN();
  std::vector<Answer> kept_;
  std::map<std::size_t, Pieces> converted_;
  std::vector<Pieces> repaired_;
  bool repairTried_ = false;
};

}  // namespace standin

// The exact surfaces of one part: B-splines with their contours, from Open CASCADE's geometry.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "standin/cad/model.h"

namespace standin {

struct PartShape;

// Converts at the first request and keeps the result until forget(). The parameters of the surfaces are those that the
// part's meshes have. A face that cannot be converted is left out, with the reason.
class StepConverter : public PartConverter {
 public:
  // `surfaceIds`: of the part's surfaces, in the order of the shape's faces.
  StepConverter(std::shared_ptr<const PartShape> shape, std::vector<int> surfaceIds);

  std::shared_ptr<const ExactPart> convert() override;
  void forget() override;

  // From now on every n-th record, counted over solids and quilts, carries an id that no surface has; 0: none does.
  void setForeignIds(std::size_t every);

  const PartShape& shape() const { return *shape_; }

 private:
  std::shared_ptr<const PartShape> shape_;
  std::vector<int> surfaceIds_;
  std::size_t foreignIds_ = 0;
  std::shared_ptr<const ExactPart> kept_;
};

}  // namespace standin

#include "standin/cad/model.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace standin {
namespace {

void enclose(std::optional<Box>& box, const Point& point) {
  if (!box) {
    box = Box{point, point};
    return;
  }
  for (std::size_t axis = 0; axis < 3; ++axis) {
    (*box)[0][axis] = std::min((*box)[0][axis], point[axis]);
    (*box)[1][axis] = std::max((*box)[1][axis], point[axis]);
  }
}

void encloseTransformed(std::optional<Box>& box, const Box& inner, const Matrix& placement) {
  for (std::size_t corner = 0; corner < 8; ++corner) {
    const Point point = {inner[corner & 1][0], inner[(corner >> 1) & 1][1], inner[(corner >> 2) & 1][2]};
    enclose(box, transformPoint(point, placement));
  }
}

}  // namespace

Feature* Model::feature(int id) { return featureIndex_.find(features, id); }
Surface* Model::surface(int id) { return surfaceIndex_.find(surfaces, id); }
Quilt* Model::quilt(int id) { return quiltIndex_.find(quilts, id); }
Layer* Model::layer(int id) { return layerIndex_.find(layers, id); }

Feature& Model::addFeature(ProFeattype featureType) {
  Feature& added = features.emplace_back();
  added.id = ++lastId;
  added.type = featureType;
  return added;
}

Feature& Model::addComponent(Model& component, const Matrix& placement) {
  Feature& added = addFeature(PRO_FEAT_COMPONENT);
  added.component = &component;
  added.placement = placement;
  return added;
}

Surface& Model::addSurface(int featureId, Quilt* quilt) {
  Surface& added = surfaces.emplace_back();
  added.owner = this;
  added.index = surfaces.size() - 1;
  added.id = ++lastId;
  added.featureId = featureId;
  (quilt != nullptr ? quilt->surfaces : solidSurfaces).push_back(added.index);
  return added;
}

Quilt& Model::addQuilt(int featureId) {
  Quilt& added = quilts.emplace_back();
  added.owner = this;
  added.id = ++lastId;
  added.featureId = featureId;
  return added;
}

Layer& Model::addLayer(const std::wstring& layerName) {
  Layer& added = layers.emplace_back();
  added.id = ++lastId;
  added.name = layerName;
  return added;
}

SimplifiedRep& Model::addRepresentation(const std::wstring& representationName) {
  SimplifiedRep& added = representations.emplace_back();
  added.id = ++lastId;
  added.name = representationName;
  return added;
}

Matrix multiply(const Matrix& first, const Matrix& second) {
  Matrix product{};
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t column = 0; column < 4; ++column) {
      double sum = 0.0;
      for (std::size_t k = 0; k < 4; ++k) {
        sum += first[row * 4 + k] * second[k * 4 + column];
      }
      product[row * 4 + column] = sum;
    }
  }
  return product;
}

Point transformPoint(const Point& point, const Matrix& matrix) {
  Point result{};
  for (std::size_t column = 0; column < 3; ++column) {
    result[column] =
        point[0] * matrix[column] + point[1] * matrix[4 + column] + point[2] * matrix[8 + column] + matrix[12 + column];
  }
  return result;
}

Matrix inverse(const Matrix& matrix) {
  const auto at = [&](std::size_t row, std::size_t column) { return matrix[row * 4 + column]; };
  Matrix result = kIdentity;
  // Cofactors of the upper three rows; the last column of a placement is 0, 0, 0, 1.
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      const std::size_t r1 = (column + 1) % 3;
      const std::size_t r2 = (column + 2) % 3;
      const std::size_t c1 = (row + 1) % 3;
      const std::size_t c2 = (row + 2) % 3;
      result[row * 4 + column] = at(r1, c1) * at(r2, c2) - at(r1, c2) * at(r2, c1);
    }
  }
  const double determinant = at(0, 0) * result[0] + at(0, 1) * result[4] + at(0, 2) * result[8];
  if (!(std::abs(determinant) > std::numeric_limits<double>::min())) {
    return kIdentity;
  }
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      result[row * 4 + column] /= determinant;
    }
  }
  const Point moved = transformPoint({matrix[12], matrix[13], matrix[14]}, result);
  for (std::size_t column = 0; column < 3; ++column) {
    result[12 + column] = 0.0 - moved[column];
  }
  return result;
}

std::optional<Box> boundingBox(const Model& model) {
  BoxCache cache;
  return boundingBox(model, cache);
}

std::optional<Box> boundingBox(const Model& model, BoxCache& cache) {
  // The empty entry also stops at a model that holds itself.
  const auto [known, isNew] = cache.try_emplace(&model);
  if (!isNew) {
    return known->second;
  }
  std::optional<Box> box = model.outline;
  for (const Feature& feature : model.features) {
    if (feature.component == nullptr || feature.status != PRO_FEAT_ACTIVE) {
      continue;
    }
    if (const std::optional<Box> inner = boundingBox(*feature.component, cache)) {
      encloseTransformed(box, *inner, feature.placement);
    }
  }
  cache[&model] = box;
  return box;
}

}  // namespace standin

#include "core/component_path.h"

#include <cstring>

namespace rendara {

Matrix componentTransform(ProAsmcomppath path) {
  ProMatrix transform{};
  if (ProAsmcomppathTrfGet(&path, PRO_B_TRUE, transform) != PRO_TK_NO_ERROR) {
    return kIdentityMatrix;
  }
  Matrix matrix{};
  std::memcpy(matrix.data(), transform, sizeof(transform));
  return matrix;
}

}  // namespace rendara

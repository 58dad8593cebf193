// The toolkit's arrays.
#include "standin/cad/operation.h"

using standin::AllocationKind;
using standin::Operation;

extern "C" {

ProError ProArraySizeGet(ProArray array, int* p_size) {
  Operation operation("ProArraySizeGet");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  if (array == nullptr || p_size == nullptr) return PRO_TK_BAD_INPUTS;
  const std::size_t* size = operation.allocations().arraySize(array);
  if (size == nullptr) {
    return operation.misuse(operation.allocations().describe(array, AllocationKind::array));
  }
  *p_size = static_cast<int>(*size);
  return PRO_TK_NO_ERROR;
}

ProError ProArrayFree(ProArray* p_array) {
  Operation operation("ProArrayFree");
  if (!operation) return PRO_TK_BAD_CONTEXT;
  return operation.release(p_array, AllocationKind::array);
}
}

// QX_Allocate and QX_Deallocate: the library's heap, for callers with a runtime of another make.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "launcher_dll.h"
#include "platform/heap.h"

ResultCode QX_CALL QX_Allocate(void** block, std::uint32_t size) {
  if (size == 0) return QX_BAD_ARGUMENT;

  *block = launcher::AllocateBlock(size);
  if (*block == nullptr) return QX_OUT_OF_MEMORY;

  std::memset(*block, 0, size);
  return QX_SUCCEEDED;
}

ResultCode QX_CALL QX_Deallocate(void* block) {
  std::free(block);  // null is no block, and free does nothing for it
  return QX_SUCCEEDED;
}

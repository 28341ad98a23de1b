// The library as a module: its entry point, memory from its heap for callers that have another
// runtime, and the meaning of its results for callers that do not have its header.

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "launcher_dll.h"
#include "platform/heap.h"
#include "platform/win32.h"

// Prepares nothing: each call acquires what it needs. The system holds its loader lock during this
// call, so to load a library here could block the process for ever.
extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD /*reason*/, LPVOID /*reserved*/) {
  return TRUE;
}

std::int32_t QX_CALL QX_IsFailed(std::int32_t value) { return value < 0 ? 1 : 0; }

// True for QX_CIPHER_FAILED too: a CipherCode must be compared with 0.
std::int32_t QX_CALL QX_IsSucceeded(std::int32_t value) { return value >= 0 ? 1 : 0; }

ResultCode QX_CALL QX_Allocate(void** block, std::uint32_t size) {
  if (size == 0) return QX_BAD_ARGUMENT;

  // Not calloc: when memory has run out, that would take from the reserve of the runtime.
  *block = launcher::AllocateBlock(size);
  if (*block == nullptr) return QX_OUT_OF_MEMORY;

  std::memset(*block, 0, size);
  return QX_SUCCEEDED;
}

ResultCode QX_CALL QX_Deallocate(void* block) {
  std::free(block);  // null is valid: free does nothing
  return QX_SUCCEEDED;
}

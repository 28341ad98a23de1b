// The runtime's heap, for blocks that callers get.

#ifndef LAUNCHER_PLATFORM_HEAP_H_
#define LAUNCHER_PLATFORM_HEAP_H_

#include <cstddef>
#include <cstdlib>

#if defined(_WIN32)
// The linker's name for malloc itself, without platform/windows/runtime_reserve.cpp.
extern "C" void* __real_malloc(std::size_t size);
#endif

namespace launcher {

// Returns a block of `size` bytes, or null if memory ran out. The caller frees it with std::free.
// On Windows it does not use the reserve of the runtime.
inline void* AllocateBlock(std::size_t size) {
#if defined(_WIN32)
  return __real_malloc(size);
#else
  return std::malloc(size);
#endif
}

}  // namespace launcher

#endif  // LAUNCHER_PLATFORM_HEAP_H_

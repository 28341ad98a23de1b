// The owner of a block that came from malloc.

#ifndef LAUNCHER_FRAME_MALLOC_DELETER_H_
#define LAUNCHER_FRAME_MALLOC_DELETER_H_

#include <cstdlib>

namespace launcher {

struct MallocDeleter {
  void operator()(void* block) const { std::free(block); }
};

}  // namespace launcher

#endif  // LAUNCHER_FRAME_MALLOC_DELETER_H_

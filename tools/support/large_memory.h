// Memory of many megabytes.

#ifndef LAUNCHER_TOOLS_SUPPORT_LARGE_MEMORY_H_
#define LAUNCHER_TOOLS_SUPPORT_LARGE_MEMORY_H_

#include <cstddef>

namespace launcher {

// Asks the system for large pages in a block that is yet to be filled. With the usual ones a block
// of 1 GiB costs more time than what is done with it.
void PreferLargePages(void* block, std::size_t size);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_SUPPORT_LARGE_MEMORY_H_

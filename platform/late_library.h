// Libraries that are loaded on first use, so that this one works without them.

#ifndef LAUNCHER_PLATFORM_LATE_LIBRARY_H_
#define LAUNCHER_PLATFORM_LATE_LIBRARY_H_

#include <cstdint>

namespace launcher {

enum class LateFolders : std::uint8_t {
  kProgramAndSystem,
  kOwnToo,  // the folder of this library as well, after the program's and before the system's
};

// Returns the function `name` of a library, or null if either is missing. If the program has
// already loaded a library of that name, uses it. Otherwise searches these folders, but never the
// current directory or PATH, where somebody else could have put a library. Keeps the library
// loaded.
void* FindLateFunction(const char* library, const char* name, LateFolders folders);

}  // namespace launcher

#endif  // LAUNCHER_PLATFORM_LATE_LIBRARY_H_

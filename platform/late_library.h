// Libraries that are loaded on first use, so that this one works without them.

#ifndef LAUNCHER_PLATFORM_LATE_LIBRARY_H_
#define LAUNCHER_PLATFORM_LATE_LIBRARY_H_

#include <cstdint>

namespace launcher {

enum class LateFolders : std::uint8_t {
  kProgramAndSystem,
  kOwnToo,  // the folder of this library as well, after the program's
};

// Returns the function `name` of a library, or null if either is missing. Looks for the library in
// these folders, never in the current directory or PATH, and keeps it loaded. A library of that
// name that the program has loaded itself is taken first.
void* FindLateFunction(const char* library, const char* name, LateFolders folders);

}  // namespace launcher

#endif  // LAUNCHER_PLATFORM_LATE_LIBRARY_H_

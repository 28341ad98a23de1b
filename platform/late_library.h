// Libraries that are loaded on first use, so that this one works without them.

#ifndef LAUNCHER_PLATFORM_LATE_LIBRARY_H_
#define LAUNCHER_PLATFORM_LATE_LIBRARY_H_

namespace launcher {

// The function `name` of a library, or null where either is missing. The library is looked for in
// the program's own and the system's folders, never in the current directory, and stays loaded; one
// of that name that the program has loaded itself serves as well.
void* FindLateFunction(const char* library, const char* name);

}  // namespace launcher

#endif  // LAUNCHER_PLATFORM_LATE_LIBRARY_H_

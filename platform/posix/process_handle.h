// Handles of the kind that CloseHandle closes, for the functions that are not in process.cpp.

#ifndef LAUNCHER_PLATFORM_POSIX_PROCESS_HANDLE_H_
#define LAUNCHER_PLATFORM_POSIX_PROCESS_HANDLE_H_

#include <sys/types.h>

#include "platform/win32.h"

namespace launcher::posix {

// 0 for a null handle.
pid_t ProcessIdOf(HANDLE handle);

// Opens a file with open(2). Returns INVALID_HANDLE_VALUE if that fails. Throws std::bad_alloc.
HANDLE OpenFileHandle(const char* path, int flags);

// -1 for a handle of something else.
int DescriptorOf(HANDLE handle);

}  // namespace launcher::posix

#endif  // LAUNCHER_PLATFORM_POSIX_PROCESS_HANDLE_H_

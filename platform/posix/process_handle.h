// The handles that CloseHandle closes, for functions that are not in process.cpp.

#ifndef LAUNCHER_PLATFORM_POSIX_PROCESS_HANDLE_H_
#define LAUNCHER_PLATFORM_POSIX_PROCESS_HANDLE_H_

#include <sys/types.h>

#include "platform/win32.h"

namespace launcher::posix {

// Returns 0 for a null handle and for that of a file.
pid_t ProcessIdOf(HANDLE handle);

// Opens a file with open(2) and these flags. Returns INVALID_HANDLE_VALUE if that fails. Throws
// std::bad_alloc if memory runs out.
HANDLE OpenFileHandle(const char* path, int flags);

// Returns the descriptor of a file's handle, which keeps it, or -1 for the handle of a process.
int DescriptorOf(HANDLE handle);

}  // namespace launcher::posix

#endif  // LAUNCHER_PLATFORM_POSIX_PROCESS_HANDLE_H_

// What the memory functions need to know of a process handle.

#ifndef LAUNCHER_PLATFORM_POSIX_PROCESS_HANDLE_H_
#define LAUNCHER_PLATFORM_POSIX_PROCESS_HANDLE_H_

#include <sys/types.h>

#include "platform/win32.h"

namespace launcher::posix {

// 0 for a null handle.
pid_t ProcessIdOf(HANDLE handle);

}  // namespace launcher::posix

#endif  // LAUNCHER_PLATFORM_POSIX_PROCESS_HANDLE_H_

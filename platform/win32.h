// The Win32 names that the library uses: the system's own on Windows, those of the native layer
// elsewhere. The sources in src/ include this file, so they need no test for a platform.

#ifndef LAUNCHER_PLATFORM_WIN32_H_
#define LAUNCHER_PLATFORM_WIN32_H_

#if defined(_WIN32)

// Otherwise <windows.h> defines min and max as macros, which breaks std::min.
#ifndef NOMINMAX
#define NOMINMAX
#endif
// <windows.h> first: the others need it.
#include <windows.h>
// This line keeps clang-format from sorting <windows.h> into the includes below.
#include <bcrypt.h>
#include <share.h>
#include <shellapi.h>
#include <stdio.h>
#include <sys/stat.h>
#include <time.h>
#include <wincrypt.h>

#else

#include "platform/posix/win32_posix.h"

#endif

#endif  // LAUNCHER_PLATFORM_WIN32_H_

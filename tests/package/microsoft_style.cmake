# Links with Microsoft's naming, but without Microsoft's tools and libraries: clang and lld-link, for
# a program that needs no C runtime.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER clang)
set(CMAKE_C_COMPILER_TARGET i686-pc-windows-msvc)
# CMake requires a resource compiler for Windows. Nothing here uses it, so MinGW's replaces llvm-rc,
# which comes with none of the packages that the build needs.
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)
set(CMAKE_MSVC_RUNTIME_LIBRARY "")
set(CMAKE_C_STANDARD_LIBRARIES "" CACHE STRING "")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # nothing to link a test program with
set(CMAKE_C_FLAGS_INIT "-ffreestanding -fno-builtin -Wall -Wextra -Werror")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -nostdlib -Wl,-entry:main,-safeseh:no")

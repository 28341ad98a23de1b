# How our own code is compiled. Targets take it by linking launcher_options.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_EXTENSIONS OFF)

add_library(launcher_options INTERFACE)
target_include_directories(launcher_options INTERFACE
  "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/src" "${PROJECT_SOURCE_DIR}/include")

target_compile_options(launcher_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wundef -Werror
  # The same bytes from any folder.
  "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")

if(WIN32)
  # Callers align the stack to four bytes only.
  target_compile_options(launcher_options INTERFACE -mincoming-stack-boundary=2)
endif()

# For what goes into a DLL: its symbols are shipped in a file of their own, with paths that a debugger
# can be told to map.
add_library(launcher_symbols INTERFACE)
if(WIN32)
  target_compile_options(launcher_symbols INTERFACE
    -g "-fdebug-prefix-map=${PROJECT_SOURCE_DIR}=/LauncherDll")
endif()

if(LAUNCHER_SANITIZERS)
  set(sanitize "-fsanitize=${LAUNCHER_SANITIZERS}" -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  target_compile_options(launcher_options INTERFACE ${sanitize})
  target_link_options(launcher_options INTERFACE ${sanitize})
endif()

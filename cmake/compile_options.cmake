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
  # So that a build in any folder gives the same bytes.
  "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")

if(WIN32)
  # Callers may align the stack to four bytes only.
  target_compile_options(launcher_options INTERFACE -mincoming-stack-boundary=2)
endif()

# Hardening. LAUNCHER_OLDEST_WINDOWS is Windows 7, which the README names.
set(LAUNCHER_OLDEST_WINDOWS 6.1)
target_compile_options(launcher_options INTERFACE -fstack-protector-strong)
if(WIN32)
  string(REPLACE "." ";" windows_version "${LAUNCHER_OLDEST_WINDOWS}")
  list(GET windows_version 0 major)
  list(GET windows_version 1 minor)
  # --no-seh: this compiler's C++ exceptions do not use structured exception handling.
  target_link_options(launcher_options INTERFACE
    -Wl,--dynamicbase -Wl,--nxcompat -Wl,--no-seh
    "-Wl,--major-subsystem-version=${major}" "-Wl,--minor-subsystem-version=${minor}")
else()
  target_link_options(launcher_options INTERFACE -Wl,-z,relro -Wl,-z,now)
  # _FORTIFY_SOURCE needs optimisation.
  set(is_not_optimised $<IN_LIST:-O0,$<TARGET_PROPERTY:COMPILE_OPTIONS>>)
  target_compile_definitions(launcher_options INTERFACE
    $<$<AND:$<CONFIG:Release>,$<NOT:${is_not_optimised}>>:_FORTIFY_SOURCE=2>)
endif()

# For sources of a DLL, whose debug symbols are shipped in a separate file. Their paths begin with
# /LauncherDll, which a debugger can map to a folder.
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

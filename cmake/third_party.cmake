# Third-party libraries. third_party/components.json.in lists those in the package, with licences.

# Header-only libraries are in /usr/include, which a cross compiler must not search: it would find the
# host's headers too. So the build folder has a link to the folder of each library.
find_package(nlohmann_json 3.8.0 REQUIRED)
find_path(JSON_INCLUDE_DIR nlohmann/json.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(CLI_INCLUDE_DIR CLI/CLI.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/third_party/json" "${PROJECT_BINARY_DIR}/third_party/cli")
file(CREATE_LINK "${JSON_INCLUDE_DIR}/nlohmann" "${PROJECT_BINARY_DIR}/third_party/json/nlohmann"
  SYMBOLIC)
file(CREATE_LINK "${CLI_INCLUDE_DIR}/CLI" "${PROJECT_BINARY_DIR}/third_party/cli/CLI" SYMBOLIC)
foreach(library json cli)
  add_library(launcher_${library} INTERFACE)
  target_include_directories(launcher_${library} SYSTEM INTERFACE
    "${PROJECT_BINARY_DIR}/third_party/${library}")
endforeach()

# Natively libcrypto replaces Windows' digest functions, and the tests compare the cipher with it.
if(NOT WIN32)
  find_package(OpenSSL REQUIRED COMPONENTS Crypto)
endif()

# GoogleTest is built from its sources, since there is no package of it for Windows.
if(BUILD_TESTING OR NOT DEFINED BUILD_TESTING)
  find_path(GOOGLETEST_SOURCE CMakeLists.txt PATHS /usr/src/googletest
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  set(INSTALL_GTEST OFF)
  set(BUILD_GMOCK OFF)
  add_subdirectory("${GOOGLETEST_SOURCE}" "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
  target_compile_options(gtest PRIVATE -O0)
  if(WIN32)
    # The win32 flavour of the compiler has no std::mutex, which one class of GoogleTest needs.
    target_compile_definitions(gtest PUBLIC GTEST_HAS_NOTIFICATION_=1)
    target_compile_options(gtest PUBLIC
      "$<$<COMPILE_LANGUAGE:CXX>:SHELL:-include \"${CMAKE_CURRENT_LIST_DIR}/gtest_notification.h\">")
  endif()
endif()

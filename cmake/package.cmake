# The package: `cmake --install build/windows --prefix FOLDER`, and the same as ZIP files by cpack.
# The symbols are in a second archive, which unpacks into the same folder.

include(CMakePackageConfigHelpers)
set(generated "${PROJECT_BINARY_DIR}/generated")
write_basic_package_version_file("${generated}/LauncherDllConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)

# The third-party components, with their versions in this build.
file(STRINGS "${CLI_INCLUDE_DIR}/CLI/Version.hpp" CLI11_VERSION REGEX "define CLI11_VERSION \"")
string(REGEX REPLACE ".*\"(.*)\"" "\\1" CLI11_VERSION "${CLI11_VERSION}")
execute_process(
  COMMAND "${CMAKE_CXX_COMPILER}" -E -dM -include _mingw.h -x c++ /dev/null
  OUTPUT_VARIABLE macros COMMAND_ERROR_IS_FATAL ANY)
foreach(part MAJOR MINOR BUGFIX)
  string(REGEX MATCH "__MINGW64_VERSION_${part} ([0-9]+)" match "${macros}")
  set(MINGW_${part} "${CMAKE_MATCH_1}")
endforeach()
set(components "${generated}/components.json")
configure_file(cmake/third_party/components.json.in "${components}" @ONLY)
find_package(Python3 COMPONENTS Interpreter REQUIRED)
execute_process(
  COMMAND "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/scripts/make_notices.py" "${components}"
    "${PROJECT_VERSION}" "${generated}"
  COMMAND_ERROR_IS_FATAL ANY)

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME library)
install(TARGETS LauncherDll RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(TARGETS bfbr doctor RUNTIME DESTINATION bin)
install(FILES "${LAUNCHER_MICROSOFT_LIBRARY}" DESTINATION lib)
install(FILES include/launcher_dll.h include/launcher_dll.hpp DESTINATION include)
install(FILES "${generated}/LauncherDllConfigVersion.cmake" cmake/LauncherDllConfig.cmake DESTINATION lib/cmake/LauncherDll)
install(DIRECTORY bindings DESTINATION .
  PATTERN __pycache__ EXCLUDE PATTERN build EXCLUDE PATTERN "*.egg-info" EXCLUDE)
install(FILES docs/package.md DESTINATION . RENAME README.md)
install(FILES LICENSE CHANGELOG.md SECURITY.md "${generated}/THIRD_PARTY_NOTICES.md"
  "${generated}/LauncherDll.spdx.json" DESTINATION .)
install(FILES docs/guide.md docs/bfbr.md docs/doctor.md docs/container-format.md
  docs/container-vectors.json docs/read_container.py DESTINATION docs)
install(DIRECTORY examples DESTINATION . PATTERN CMakeLists.txt EXCLUDE)
install(TARGETS steam_api RUNTIME DESTINATION steam-stand-in)
install(FILES docs/steam-stand-in.md DESTINATION steam-stand-in RENAME README.md)
install(FILES "$<TARGET_FILE:LauncherDll>.debug" DESTINATION bin COMPONENT symbols)
install(FILES "$<TARGET_FILE:steam_api>.debug" DESTINATION steam-stand-in COMPONENT symbols)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_CHECKSUM SHA256)  # a file beside each archive
set(CPACK_PACKAGE_FILE_NAME "LauncherDll-${PROJECT_VERSION}-windows-x86")
set(CPACK_COMPONENTS_ALL library symbols)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_ARCHIVE_LIBRARY_FILE_NAME "${CPACK_PACKAGE_FILE_NAME}")
set(CPACK_ARCHIVE_SYMBOLS_FILE_NAME "${CPACK_PACKAGE_FILE_NAME}-symbols")
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)

# What users get: `cmake --install build/windows --prefix FOLDER`, and the same as ZIP files by cpack.
# The symbols are an archive of their own, which unpacks into the same folder.

include(CMakePackageConfigHelpers)
set(config "${PROJECT_BINARY_DIR}/generated/LauncherDllConfigVersion.cmake")
write_basic_package_version_file("${config}" COMPATIBILITY SameMajorVersion)

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME library)
install(TARGETS LauncherDll RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(TARGETS bfbr doctor RUNTIME DESTINATION bin)
install(FILES "${LAUNCHER_MICROSOFT_LIBRARY}" DESTINATION lib)
install(FILES include/launcher_dll.h include/launcher_dll.hpp DESTINATION include)
install(FILES "${config}" cmake/LauncherDllConfig.cmake DESTINATION lib/cmake/LauncherDll)
install(DIRECTORY bindings DESTINATION .
  PATTERN __pycache__ EXCLUDE PATTERN build EXCLUDE PATTERN "*.egg-info" EXCLUDE)
install(FILES docs/package.md DESTINATION . RENAME README.md)
install(FILES CHANGELOG.md THIRD_PARTY_NOTICES.md DESTINATION .)
install(FILES docs/bfbr.md docs/doctor.md DESTINATION docs)
install(TARGETS steam_api RUNTIME DESTINATION steam-stand-in)
install(FILES docs/steam-stand-in.md DESTINATION steam-stand-in RENAME README.md)
install(FILES "$<TARGET_FILE:LauncherDll>.debug" DESTINATION bin COMPONENT symbols)
install(FILES "$<TARGET_FILE:steam_api>.debug" DESTINATION steam-stand-in COMPONENT symbols)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME "LauncherDll-${PROJECT_VERSION}-windows-x86")
set(CPACK_COMPONENTS_ALL library symbols)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_ARCHIVE_LIBRARY_FILE_NAME "${CPACK_PACKAGE_FILE_NAME}")
set(CPACK_ARCHIVE_SYMBOLS_FILE_NAME "${CPACK_PACKAGE_FILE_NAME}-symbols")
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)

# LauncherDll.lib, the import library for Microsoft's linker, and for lld-link.
#
# No tool makes an import library for names that are decorated in the export table. So lld-link
# builds a DLL with the same name and the same table from empty functions. Only the import library
# that it writes for this DLL is used.

find_program(LAUNCHER_CLANG clang REQUIRED)
find_program(LAUNCHER_LLD_LINK lld-link REQUIRED)

set(LAUNCHER_MICROSOFT_LIBRARY "${PROJECT_BINARY_DIR}/lib/LauncherDll.lib")
set(work "${PROJECT_BINARY_DIR}/generated/microsoft")
file(MAKE_DIRECTORY "${work}")
add_custom_command(OUTPUT "${LAUNCHER_MICROSOFT_LIBRARY}"
  COMMAND "${LAUNCHER_CLANG}" --target=i686-pc-windows-msvc
    -c "${LAUNCHER_EMPTY_EXPORTS}" -o exports.obj
  COMMAND "${LAUNCHER_LLD_LINK}" -nologo -dll -noentry -Brepro -out:LauncherDll.dll
    "-implib:${LAUNCHER_MICROSOFT_LIBRARY}" exports.obj
  WORKING_DIRECTORY "${work}"
  DEPENDS "${LAUNCHER_EMPTY_EXPORTS}"
  VERBATIM)
add_custom_target(microsoft_import_library ALL DEPENDS "${LAUNCHER_MICROSOFT_LIBRARY}")

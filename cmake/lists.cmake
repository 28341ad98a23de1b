# Generates files from the lists in src/. From the list of exports, src/frame/exports.json:
#
#   LAUNCHER_EXPORTS_DEF   for linking the DLL: decorated names at their ordinals
#   LAUNCHER_EXPORTS_MAP   for linking the native library: plain names, everything else hidden
#   LAUNCHER_EMPTY_EXPORTS for the Microsoft import library: an empty function for each export
#
# From src/config/settings.inc:
#
#   generated/settings.inc  the same, for the tools, tests and fuzzers

set(export_list "${PROJECT_SOURCE_DIR}/src/frame/exports.json")
set(export_folder "${PROJECT_BINARY_DIR}/generated")
set(LAUNCHER_EXPORTS_DEF "${export_folder}/exports.def")
set(LAUNCHER_EXPORTS_MAP "${export_folder}/exports.map")
set(LAUNCHER_EMPTY_EXPORTS "${export_folder}/empty_exports.cpp")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${export_list}")

set(def "LIBRARY \"LauncherDll.dll\"\nEXPORTS\n")
set(map "{\n  global:\n")
set(empty_functions "")
file(READ "${export_list}" json)
string(JSON count LENGTH "${json}" exports)
math(EXPR last "${count} - 1")
foreach(index RANGE ${last})
  string(JSON ordinal GET "${json}" exports ${index} ordinal)
  string(JSON name GET "${json}" exports ${index} name)
  string(JSON decorated GET "${json}" exports ${index} decorated)
  string(JSON argument_count LENGTH "${json}" exports ${index} arguments)
  math(EXPR size "4 * ${argument_count}")
  if(NOT decorated STREQUAL "_${name}@${size}")
    message(FATAL_ERROR "${export_list}: ${decorated} has ${argument_count} arguments")
  endif()
  # Left of the equals sign is the name in the export table. Right of it is the linker's name for the
  # function, which has no first underscore.
  string(APPEND def "  \"_${name}@${size}\" = \"${name}@${size}\" @${ordinal}\n")
  string(APPEND map "    ${name};\n")
  string(REPEAT "int, " ${argument_count} arguments)
  string(REGEX REPLACE ", $" "" arguments "${arguments}")
  string(APPEND empty_functions
    "extern \"C\" __declspec(dllexport) void __stdcall ${name}(${arguments}) {}\n")
endforeach()
string(APPEND map "  local: *;\n};\n")

# file(CONFIGURE) does not write a file that would not change, so nothing is built again.
file(CONFIGURE OUTPUT "${LAUNCHER_EXPORTS_DEF}" CONTENT "${def}" @ONLY)
file(CONFIGURE OUTPUT "${LAUNCHER_EXPORTS_MAP}" CONTENT "${map}" @ONLY)
file(CONFIGURE OUTPUT "${LAUNCHER_EMPTY_EXPORTS}" CONTENT "${empty_functions}" @ONLY)

configure_file("${PROJECT_SOURCE_DIR}/src/config/settings.inc" "${export_folder}/settings.inc" COPYONLY)

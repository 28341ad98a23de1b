# find_package(LauncherDll): the target LauncherDll::LauncherDll, for 32-bit x86 Windows.

if(NOT WIN32)
  set(LauncherDll_FOUND FALSE)
  set(LauncherDll_NOT_FOUND_MESSAGE "LauncherDll is for Windows only")
  return()
endif()

if(NOT TARGET LauncherDll::LauncherDll)
  get_filename_component(LauncherDll_ROOT_FOLDER "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
  # Each family of linkers has its own file of names.
  if(MINGW)
    set(LauncherDll_IMPORT_LIBRARY "${LauncherDll_ROOT_FOLDER}/lib/libLauncherDll.dll.a")
  else()
    set(LauncherDll_IMPORT_LIBRARY "${LauncherDll_ROOT_FOLDER}/lib/LauncherDll.lib")
  endif()
  add_library(LauncherDll::LauncherDll SHARED IMPORTED)
  set_target_properties(LauncherDll::LauncherDll PROPERTIES
    IMPORTED_LOCATION "${LauncherDll_ROOT_FOLDER}/bin/LauncherDll.dll"
    IMPORTED_IMPLIB "${LauncherDll_IMPORT_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${LauncherDll_ROOT_FOLDER}/include")
endif()

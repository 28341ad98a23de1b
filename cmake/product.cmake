# Functions for the DLLs and programs that are shipped: version properties, no other libraries than
# the system's, the same bytes from every build, and a DLL's debug symbols in a separate file.

if(WIN32)
  enable_language(RC)
endif()

# Gives TARGET the properties that Windows shows for FILE.
function(launcher_version target file type description)
  set(PRODUCT_FILE "${file}")
  set(PRODUCT_TYPE "${type}")
  set(PRODUCT_DESCRIPTION "${description}")
  set(resource "${PROJECT_BINARY_DIR}/generated/${target}.rc")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/version.rc.in" "${resource}" @ONLY)
  # A separate library, since the resource compiler does not know the compiler's options.
  add_library(${target}_version OBJECT "${resource}")
  target_sources(${target} PRIVATE "$<TARGET_OBJECTS:${target}_version>")
endfunction()

# launcher_program(TARGET DESCRIPTION): a program that needs only the system's libraries. It has no
# symbols, which would make it ten times as large.
function(launcher_program target description)
  launcher_version(${target} "${target}.exe" VFT_APP "${description}")
  target_link_options(${target} PRIVATE -static -s)
endfunction()

# launcher_product(TARGET EXPORTS.def DESCRIPTION)
#
# The symbols go to TARGET.dll.debug beside the DLL. The DLL has that name in it, for debuggers.
function(launcher_product target exports description)
  launcher_version(${target} "${target}.dll" VFT_DLL "${description}")
  set_target_properties(${target} PROPERTIES PREFIX "" LINK_DEPENDS "${exports}")
  target_link_options(${target} PRIVATE
    "${exports}"
    # Links the compiler's runtime into the DLL, which then needs only the system's libraries.
    -static
    -Wl,--no-insert-timestamp -Wl,--disable-auto-image-base)
  set(dll "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${target}.dll")
  add_custom_command(TARGET ${target} POST_BUILD
    # --preserve-dates also keeps the file header's time stamp, which is empty.
    COMMAND "${CMAKE_OBJCOPY}" --preserve-dates --only-keep-debug "${dll}" "${dll}.debug"
    COMMAND "${CMAKE_OBJCOPY}" --preserve-dates --strip-all "--add-gnu-debuglink=${dll}.debug"
      "${dll}"
    BYPRODUCTS "${dll}.debug"
    VERBATIM)
endfunction()

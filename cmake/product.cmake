# What makes a DLL or a program of ours a product: its properties, no way in through old tricks, the
# same bytes from every build, and a DLL's debug symbols in a file of their own.

if(WIN32)
  enable_language(RC)
endif()

# Gives TARGET the properties that Windows shows of FILE.
function(launcher_version target file type description)
  set(PRODUCT_FILE "${file}")
  set(PRODUCT_TYPE "${type}")
  set(PRODUCT_DESCRIPTION "${description}")
  set(resource "${PROJECT_BINARY_DIR}/generated/${target}.rc")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/version.rc.in" "${resource}" @ONLY)
  # A library of its own: the compiler's options are none for the resource compiler.
  add_library(${target}_version OBJECT "${resource}")
  target_sources(${target} PRIVATE "$<TARGET_OBJECTS:${target}_version>")
endfunction()

# launcher_program(TARGET DESCRIPTION): a program that needs the system's libraries only, without
# symbols, which would make it ten times as large.
function(launcher_program target description)
  launcher_version(${target} "${target}.exe" VFT_APP "${description}")
  target_link_options(${target} PRIVATE -static -s)
endfunction()

# launcher_product(TARGET EXPORTS.def DESCRIPTION)
#
# The symbols go to TARGET.dll.debug beside the DLL, which tells debuggers that name.
function(launcher_product target exports description)
  launcher_version(${target} "${target}.dll" VFT_DLL "${description}")
  set_target_properties(${target} PROPERTIES PREFIX "" LINK_DEPENDS "${exports}")
  target_link_options(${target} PRIVATE
    "${exports}"
    # The compiler's runtime goes into the DLL, which then needs the system's libraries only.
    -static
    -Wl,--no-insert-timestamp -Wl,--disable-auto-image-base)
  set(dll "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${target}.dll")
  add_custom_command(TARGET ${target} POST_BUILD
    # --preserve-dates also keeps the time stamp in the file, which is none.
    COMMAND "${CMAKE_OBJCOPY}" --preserve-dates --only-keep-debug "${dll}" "${dll}.debug"
    COMMAND "${CMAKE_OBJCOPY}" --preserve-dates --strip-all "--add-gnu-debuglink=${dll}.debug"
      "${dll}"
    BYPRODUCTS "${dll}.debug"
    VERBATIM)
endfunction()

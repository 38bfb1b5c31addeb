# Shipped files must not depend on the build directory. Linux builds with tests are not shipped and
# keep their paths for the debugger.

if(ORV_TESTS AND NOT WIN32)
    return()
endif()
# The last matching prefix applies. The build directory is last, because the source directory may
# contain it.
add_compile_options(
    $<$<NOT:$<COMPILE_LANGUAGE:RC>>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
    $<$<NOT:$<COMPILE_LANGUAGE:RC>>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)

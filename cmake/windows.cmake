# How the build for Windows differs: nothing beside the system's own libraries is needed at run
# time, and the same sources give the same bytes in every folder.

if(NOT WIN32)
    return()
endif()

list(APPEND CMAKE_MODULE_PATH ${PROJECT_SOURCE_DIR}/cmake/mingw)  # GoogleTest, from its sources
enable_language(RC)

add_compile_definitions(WIN32_LEAN_AND_MEAN NOMINMAX)
# The last one that fits is taken, and the build's folder may be inside that of the sources.
add_compile_options(
    $<$<NOT:$<COMPILE_LANGUAGE:RC>>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
    $<$<NOT:$<COMPILE_LANGUAGE:RC>>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)
# The protections are the linker's defaults; named, so that another default cannot drop one.
add_link_options(-static -Wl,--no-insert-timestamp
                 -Wl,--high-entropy-va -Wl,--dynamicbase -Wl,--nxcompat)

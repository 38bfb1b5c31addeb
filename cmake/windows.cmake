# Settings for Windows: programs need only the system's own DLLs.

if(NOT WIN32)
    return()
endif()

list(APPEND CMAKE_MODULE_PATH ${PROJECT_SOURCE_DIR}/cmake/mingw)  # finds GoogleTest's sources
enable_language(RC)

add_compile_definitions(WIN32_LEAN_AND_MEAN NOMINMAX)
# These protections are the linker's defaults, stated in case a default changes.
add_link_options(-static -Wl,--no-insert-timestamp
                 -Wl,--high-entropy-va -Wl,--dynamicbase -Wl,--nxcompat)

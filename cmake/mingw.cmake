# Cross build for Windows x86-64 with MinGW-w64; tests run under Wine. Uses the `posix`
# variant of gcc: only its standard library has threads.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(ORV_MINGW x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${ORV_MINGW}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ORV_MINGW}-g++-posix)
set(CMAKE_RC_COMPILER ${ORV_MINGW}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${ORV_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

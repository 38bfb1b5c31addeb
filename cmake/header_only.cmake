# Header-only libraries from Debian packages. Each has its own include directory of symbolic links,
# because a cross build must not see the rest of /usr/include.

# orv_header_only(<name> <directory in /usr/include> <package>) adds the target header_only_<name>.
function(orv_header_only name folder package)
    if(NOT IS_DIRECTORY /usr/include/${folder})
        message(FATAL_ERROR "${folder} is missing: install the Debian package ${package}")
    endif()
    set(links ${PROJECT_BINARY_DIR}/header_only/${name})
    file(MAKE_DIRECTORY ${links})
    file(CREATE_LINK /usr/include/${folder} ${links}/${folder} SYMBOLIC)
    add_library(header_only_${name} INTERFACE)
    target_include_directories(header_only_${name} SYSTEM INTERFACE ${links})
endfunction()

orv_header_only(json nlohmann nlohmann-json3-dev)
orv_header_only(cli11 CLI libcli11-dev)
orv_header_only(asio asio libasio-dev)
# Makes Asio independent of Boost and, on Windows, of mswsock.dll: Windows may load a forged
# mswsock.dll from the program's directory.
target_compile_definitions(header_only_asio INTERFACE ASIO_STANDALONE
    $<$<PLATFORM_ID:Windows>:_WIN32_WINNT=0x0A00>
    $<$<PLATFORM_ID:Windows>:ASIO_DISABLE_IOCP>)

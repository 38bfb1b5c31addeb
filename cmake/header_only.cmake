# Libraries that are headers only, from Debian's packages. Each is reached through a folder of links
# of its own: a cross build must not see the rest of /usr/include.

# orv_header_only(<name> <folder below /usr/include> <package>): the target header_only_<name>.
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

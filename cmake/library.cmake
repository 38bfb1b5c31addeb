# Builds a library from objects of the logic and of one runtime. It exports exactly the names in the
# .def files.

function(orv_read_exports result)
    set(names)
    foreach(def ${ARGN})
        set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${def})
        file(STRINGS ${def} lines)
        foreach(line ${lines})
            string(STRIP "${line}" line)
            if(line MATCHES "^[A-Za-z_][A-Za-z0-9_]*$" AND NOT line STREQUAL EXPORTS)
                list(APPEND names ${line})
            endif()
        endforeach()
    endforeach()
    set(${result} ${names} PARENT_SCOPE)
endfunction()

# orv_library(<target> FOLDER <output directory> OBJECTS <object libraries> [EXCEPT <regular expression>]
#     EXPORTS <.def files>) adds a library without the objects whose path matches EXCEPT.
function(orv_library target)
    cmake_parse_arguments(ARG "" "FOLDER;EXCEPT" "OBJECTS;EXPORTS" ${ARGN})
    list(TRANSFORM ARG_EXPORTS PREPEND ${PROJECT_SOURCE_DIR}/)
    orv_read_exports(names ${ARG_EXPORTS})

    add_library(${target} SHARED)
    foreach(objects ${ARG_OBJECTS})
        if(ARG_EXCEPT)
            target_sources(${target} PRIVATE $<FILTER:$<TARGET_OBJECTS:${objects}>,EXCLUDE,${ARG_EXCEPT}>)
        else()
            target_sources(${target} PRIVATE $<TARGET_OBJECTS:${objects}>)
        endif()
    endforeach()
    target_include_directories(${target} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
    target_link_libraries(${target} PRIVATE Threads::Threads)
    set_target_properties(${target} PROPERTIES
        OUTPUT_NAME quelvixwinlib
        LINKER_LANGUAGE CXX
        LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${ARG_FOLDER}
        RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${ARG_FOLDER})

    if(WIN32)
        list(JOIN names "\n    " lines)
        set(list ${PROJECT_BINARY_DIR}/${target}.def)
        file(CONFIGURE OUTPUT ${list} CONTENT "LIBRARY quelvixwinlib\nEXPORTS\n    ${lines}\n")
        target_sources(${target} PRIVATE ${list})
        set_target_properties(${target} PROPERTIES PREFIX "")
    else()
        # The linker script names no version, because the library would export that name as a symbol.
        list(JOIN names ";\n    " lines)
        set(list ${PROJECT_BINARY_DIR}/${target}.exports)
        file(CONFIGURE OUTPUT ${list}
            CONTENT "{\n  global:\n    ${lines};\n  local:\n    *;\n};\n")
        if(ORV_VERSIONED)
            set_target_properties(${target} PROPERTIES
                VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
        endif()
        target_link_options(${target} PRIVATE -Wl,--version-script=${list} -Wl,-z,relro,-z,now)
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${list})
        # A sanitizer's functions are undefined in the library: the program defines them.
        if(NOT ORV_SANITIZERS)
            target_link_options(${target} PRIVATE -Wl,--no-undefined)
        endif()
    endif()
endfunction()

file(STRINGS ${PROJECT_SOURCE_DIR}/include/quelvixwinlib.h lines REGEX "#define QUELVIXWINLIB_VERSION")
foreach(fact "_MAJOR ${PROJECT_VERSION_MAJOR}" "_MINOR ${PROJECT_VERSION_MINOR}"
             "_PATCH ${PROJECT_VERSION_PATCH}" " \"${PROJECT_VERSION}\"")
    if(NOT "#define QUELVIXWINLIB_VERSION${fact}" IN_LIST lines)
        message(FATAL_ERROR "include/quelvixwinlib.h lacks: #define QUELVIXWINLIB_VERSION${fact}")
    endif()
endforeach()
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    ${PROJECT_SOURCE_DIR}/include/quelvixwinlib.h)

# Defines the targets quelvixwinlib::radio and quelvixwinlib::simulated for MSVC and MinGW.
if(NOT CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(quelvixwinlib_FOUND FALSE)
    set(quelvixwinlib_NOT_FOUND_MESSAGE "quelvixwinlib.dll is for x86-64 only")
    return()
endif()
get_filename_component(prefix "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
set(radio ${prefix})
set(simulated ${prefix}/simulated)
foreach(flavour radio simulated)
    if(NOT TARGET quelvixwinlib::${flavour})
        set(file lib/quelvixwinlib.lib)
        if(MINGW)
            set(file lib/libquelvixwinlib.dll.a)
        endif()
        add_library(quelvixwinlib::${flavour} SHARED IMPORTED)
        set_target_properties(quelvixwinlib::${flavour} PROPERTIES
            IMPORTED_LOCATION ${${flavour}}/quelvixwinlib.dll
            IMPORTED_IMPLIB ${${flavour}}/${file}
            INTERFACE_INCLUDE_DIRECTORIES ${prefix}/include)
    endif()
    set(quelvixwinlib_${flavour}_FOUND TRUE)
endforeach()

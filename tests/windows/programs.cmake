# The test programs of the cross build run in three ways. `simulated` uses the simulated DLL. The
# others use the shipped DLL and Windows.dll, which has the simulated classes. With `lookup`, the
# library finds Windows.dll in the system directory; with `registered`, the runtime finds it,
# because its classes are registered.

set(wine ${CMAKE_CURRENT_LIST_DIR}/wine)
set(prefix ${PROJECT_BINARY_DIR}/wine)

set(zip ${PROJECT_BINARY_DIR}/quelvixwinlib-${PROJECT_VERSION}-windows-x86_64.zip)
set(unpacked ${PROJECT_BINARY_DIR}/unpacked)
add_custom_command(OUTPUT ${unpacked}/README.md
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${unpacked}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${unpacked}
    COMMAND ${CMAKE_COMMAND} -E chdir ${unpacked} ${CMAKE_COMMAND} -E tar x ${zip}
    COMMAND ${CMAKE_COMMAND} -E touch ${unpacked}/README.md
    DEPENDS ${zip} zip)
add_custom_target(unpacked ALL DEPENDS ${unpacked}/README.md)
set(shippedDll ${unpacked}/quelvixwinlib.dll)
set(simulatedDll ${unpacked}/simulated/quelvixwinlib.dll)
get_target_property(worldDll world ORV_STRIPPED)

add_test(NAME wine.prepare COMMAND ${wine} prepare ${worldDll})
add_test(NAME wine.register COMMAND ${wine} register)
add_test(NAME wine.stop COMMAND ${wine} stop)
set_tests_properties(wine.prepare PROPERTIES FIXTURES_SETUP prefix)
set_tests_properties(wine.register PROPERTIES FIXTURES_SETUP registered FIXTURES_REQUIRED prefix)
set_tests_properties(wine.stop PROPERTIES FIXTURES_CLEANUP prefix)
set_tests_properties(wine.prepare wine.register wine.stop PROPERTIES ENVIRONMENT WINEPREFIX=${prefix})

# These tests are excluded, because operator new of a program does not replace that of a DLL.
set(excluded *.EveryAllocationCanFail/*:FaultsOfMemory.*)

# orv_wine_test(<name> <way> <program> <files...>): `way` is simulated, lookup or registered.
function(orv_wine_test name way program)
    set(test ${way}.${name})
    add_test(NAME ${test} COMMAND ${wine} run
        ${CMAKE_BINARY_DIR}/wine_runs/${test} $<TARGET_FILE:${program}> ${ARGN})
    set_tests_properties(${test} PROPERTIES
        FIXTURES_REQUIRED prefix
        ENVIRONMENT "WINEPREFIX=${prefix};ORV_WAY=${way};GTEST_FILTER=-${excluded}")
    if(way STREQUAL lookup)
        # Registration must come after all tests with `lookup`.
        set_property(TEST wine.register APPEND PROPERTY DEPENDS ${test})
    elseif(way STREQUAL registered)
        set_property(TEST ${test} PROPERTY FIXTURES_REQUIRED prefix registered)
    endif()
endfunction()

# Links a program with the shipped DLL and simulated world. Adds a lookup and a registered test.
function(orv_shipped_test name)
    target_link_libraries(${name}_shipped PRIVATE shipped world GTest::gtest_main)
    orv_wine_test(${name} lookup ${name}_shipped ${shippedDll} ${ARGN})
    orv_wine_test(${name} registered ${name}_shipped ${shippedDll} ${ARGN})
endfunction()

# The next two functions replace those of the same names in tests/CMakeLists.txt.
function(orv_test name)
    add_library(${name}_objects OBJECT ${ARGN})
    target_include_directories(${name}_objects PRIVATE
        ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
    target_link_libraries(${name}_objects PRIVATE GTest::gtest)
    set(objects $<TARGET_OBJECTS:${name}_objects> $<TARGET_OBJECTS:support>)

    add_executable(${name} ${objects})
    target_link_libraries(${name} PRIVATE quelvixwinlib GTest::gtest_main)
    orv_wine_test(${name} simulated ${name} ${simulatedDll})

    add_executable(${name}_shipped ${objects})
    orv_shipped_test(${name})
endfunction()

# These programs link the library's object files and use no DLL. The files of `support` are compiled
# again, because here they call functions of the program instead of the DLL.
function(orv_internal_test name)
    get_target_property(helpers support SOURCES)
    add_executable(${name} ${ARGN} ${helpers}
        $<TARGET_OBJECTS:logic> $<TARGET_OBJECTS:objects> $<TARGET_OBJECTS:simulated>)
    target_include_directories(${name} PRIVATE
        ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}
        ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
    target_compile_definitions(${name} PRIVATE QUELVIXWINLIB_BUILD ORV_WORLD_BUILD)
    target_link_libraries(${name} PRIVATE
        GTest::gtest_main Threads::Threads runtimeobject ole32)
    orv_wine_test(${name} simulated ${name})
endfunction()

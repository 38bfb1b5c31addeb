# The test programs of the cross build. Each runs against the simulated DLL, and against the shipped
# one with Windows.dll behind it: found in the system directory as activation's last resort
# (`lookup`), and in a second pass by the runtime itself, once the classes are registered there
# (`registered`). The DLLs come out of the ZIP.
#
# Waits are real where the DLL is the shipped one, so a program is split into shards that run side
# by side, each in a folder and a process of its own.

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
set_tests_properties(wine.prepare PROPERTIES FIXTURES_SETUP prefix TIMEOUT 120)
set_tests_properties(wine.register PROPERTIES FIXTURES_SETUP registered FIXTURES_REQUIRED prefix)
set_tests_properties(wine.stop PROPERTIES FIXTURES_CLEANUP prefix)
set_tests_properties(wine.prepare wine.register wine.stop PROPERTIES ENVIRONMENT WINEPREFIX=${prefix})

# A DLL has an allocator of its own, which a program cannot make fail.
set(excluded *.EveryAllocationCanFail/*:FaultsOfMemory.*)

# orv_wine_test(<name> <shards> <way> <program> <files...>): `way` is simulated, lookup or registered.
function(orv_wine_test name shards way program)
    math(EXPR last "${shards} - 1")
    foreach(shard RANGE ${last})
        set(test ${way}.${name}.${shard})
        add_test(NAME ${test} COMMAND ${wine} run
            ${CMAKE_BINARY_DIR}/wine_runs/${test} $<TARGET_FILE:${program}> ${ARGN})
        set_tests_properties(${test} PROPERTIES
            TIMEOUT 240
            FIXTURES_REQUIRED prefix
            ENVIRONMENT "WINEPREFIX=${prefix};ORV_WAY=${way};GTEST_TOTAL_SHARDS=${shards};GTEST_SHARD_INDEX=${shard};GTEST_FILTER=-${excluded}")
        if(way STREQUAL lookup)
            # The registration ends this way's time.
            set_property(TEST wine.register APPEND PROPERTY DEPENDS ${test})
        elseif(way STREQUAL registered)
            set_property(TEST ${test} PROPERTY FIXTURES_REQUIRED prefix registered)
        endif()
    endforeach()
endfunction()

# How many shards a program is split into where time is real; 1 unless it waits for limits.
set(shards_scanner_test 3)
set(shards_link_test 10)

# Both ways of the shipped DLL, for a program that is linked with it and with the world.
function(orv_shipped_test name)
    set(shards ${shards_${name}})
    if(NOT shards)
        set(shards 1)
    endif()
    target_link_libraries(${name}_shipped PRIVATE shipped world GTest::gtest_main)
    orv_wine_test(${name} ${shards} lookup ${name}_shipped ${shippedDll} ${ARGN})
    orv_wine_test(${name} ${shards} registered ${name}_shipped ${shippedDll} ${ARGN})
endfunction()

# Take the place of the native functions of the same names.
function(orv_test name)
    add_library(${name}_objects OBJECT ${ARGN})
    target_include_directories(${name}_objects PRIVATE
        ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
    target_link_libraries(${name}_objects PRIVATE GTest::gtest)
    set(objects $<TARGET_OBJECTS:${name}_objects> $<TARGET_OBJECTS:support>)

    add_executable(${name} ${objects})
    target_link_libraries(${name} PRIVATE quelvixwinlib GTest::gtest_main)
    orv_wine_test(${name} 1 simulated ${name} ${simulatedDll})

    add_executable(${name}_shipped ${objects})
    orv_shipped_test(${name})
endfunction()

# A program with the library's objects inside it runs on its own; the DLLs have no part in it. Its
# helpers are compiled anew: they call functions of the program itself, not of a DLL.
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
    orv_wine_test(${name} 1 simulated ${name})
endfunction()

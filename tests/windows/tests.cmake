# What only Windows has: modules that come and go, files with sharing rules, apartments. Then the
# files of the ZIP, and hosts that are built from them alone.

# orv_windows_test(<name> [FILES <files beside it>] [OBJECTS <objects>])
function(orv_windows_test name)
    cmake_parse_arguments(ARG "" "" "FILES;OBJECTS" ${ARGN})
    add_executable(${name}_shipped windows/${name}.cpp ${ARG_OBJECTS})
    target_include_directories(${name}_shipped PRIVATE
        ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
    target_link_libraries(${name}_shipped PRIVATE runtimeobject)
    orv_shipped_test(${name} ${ARG_FILES})
endfunction()

add_executable(file_peer windows/file_peer.cpp)
orv_windows_test(log_file_test FILES $<TARGET_FILE:file_peer> OBJECTS $<TARGET_OBJECTS:support>)
orv_windows_test(system_test OBJECTS $<TARGET_OBJECTS:support>)
orv_windows_test(module_test)  # without the helpers, which are linked with the library

# orv_host(<name> <commands...>): the packed example, built in a folder of its own.
set(hosts ${PROJECT_BINARY_DIR}/hosts)
function(orv_host name)
    add_custom_command(OUTPUT ${hosts}/${name}.exe ${ARGN} DEPENDS unpacked VERBATIM)
    add_custom_target(host_${name} ALL DEPENDS ${hosts}/${name}.exe)
endfunction()

# orv_run_host(<way> <name> <DLL>): with the default world behind the DLL or in it. That is real time,
# where a machine that stands still for two seconds misses a limit, so it runs alone.
function(orv_run_host way name dll)
    set(test ${way}.host_${name})
    add_test(NAME ${test} COMMAND ${wine} run
        ${PROJECT_BINARY_DIR}/wine_runs/${test} ${hosts}/${name}.exe ${dll})
    set_tests_properties(${test} PROPERTIES
        TIMEOUT 120
        RUN_SERIAL ON
        FIXTURES_REQUIRED prefix
        PASS_REGULAR_EXPRESSION "done: 65536 bytes to ORV-0042 and back, unchanged"
        ENVIRONMENT WINEPREFIX=${prefix})
endfunction()

file(MAKE_DIRECTORY ${hosts})
orv_host(gcc COMMAND ${CMAKE_C_COMPILER} -O2 ${unpacked}/examples/demo.c
    -I${unpacked}/include -L${unpacked}/lib -lquelvixwinlib -o ${hosts}/gcc.exe)

# As the compiler cl and its linker would: another object format's details, another import library.
# The headers and the C runtime's import library are MinGW's, made to hold still for it.
find_program(ORV_CLANG NAMES clang-14 clang REQUIRED)
find_program(ORV_LLD NAMES lld-link-14 lld-link REQUIRED)
set(cl ${ORV_CLANG} --target=x86_64-pc-windows-msvc -O2 -nostdlibinc
    -fno-ms-compatibility -fms-compatibility-version=0 -fgnuc-version=9.0 -mno-stack-arg-probe
    -D__MSVCRT__ -D__USE_MINGW_ANSI_STDIO=0 -isystem ${CMAKE_FIND_ROOT_PATH}/include)
orv_host(msvc
    COMMAND ${cl} -I${unpacked}/include -c ${unpacked}/examples/demo.c -o ${hosts}/msvc.obj
    COMMAND ${cl} -c ${CMAKE_CURRENT_SOURCE_DIR}/windows/msvc_start.c -o ${hosts}/msvc_start.obj
    COMMAND ${ORV_LLD} /out:${hosts}/msvc.exe /entry:Start /subsystem:console
        ${hosts}/msvc.obj ${hosts}/msvc_start.obj ${unpacked}/lib/quelvixwinlib.lib
        ${CMAKE_FIND_ROOT_PATH}/lib/libmsvcrt.a ${CMAKE_FIND_ROOT_PATH}/lib/libkernel32.a)

orv_run_host(lookup gcc ${shippedDll})
orv_run_host(simulated gcc ${simulatedDll})  # drops in, without another build of the host
orv_run_host(lookup msvc ${shippedDll})
set_property(TEST wine.register APPEND PROPERTY DEPENDS lookup.host_gcc lookup.host_msvc)

# orv.exe as it is unpacked: it finds both libraries where they lie.
add_test(NAME lookup.orv COMMAND Python3::Interpreter
    ${CMAKE_CURRENT_SOURCE_DIR}/orv/host_test.py)
set_tests_properties(lookup.orv PROPERTIES
    TIMEOUT 300
    RUN_SERIAL ON
    FIXTURES_REQUIRED prefix
    ENVIRONMENT "WINEPREFIX=${prefix};ORV=${unpacked}/orv.exe;ORV_LIBRARY=${simulatedDll};ORV_WINE=1")
set_property(TEST wine.register APPEND PROPERTY DEPENDS lookup.orv)

# The files themselves. The simulated DLL has no limit of size: it is not what hosts ship.
set(check Python3::Interpreter ${PROJECT_SOURCE_DIR}/tools/check_dll)
set(header ${unpacked}/include/quelvixwinlib.h)
add_test(NAME packed.dll COMMAND ${check} ${shippedDll} --version ${PROJECT_VERSION}
    --def ${PROJECT_SOURCE_DIR}/src/quelvixwinlib.def --def ${unpacked}/quelvixwinlib.def
    --header ${header})
add_test(NAME packed.simulated_dll COMMAND ${check} ${simulatedDll} --version ${PROJECT_VERSION}
    --def ${unpacked}/simulated/quelvixwinlib.def --largest 1000000
    --header ${header} --header ${unpacked}/include/quelvixwinlib_simulated.h)
add_test(NAME packed.check_dll_finds_faults COMMAND Python3::Interpreter
    ${CMAKE_CURRENT_SOURCE_DIR}/windows/check_dll_test.py ${PROJECT_SOURCE_DIR}/tools/check_dll
    ${shippedDll} ${unpacked}/quelvixwinlib.def ${header} ${PROJECT_VERSION})
add_test(NAME packed.again_in_another_folder COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/windows/rebuild
    ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/rebuilt ${zip} ${shippedDll})
set_tests_properties(packed.again_in_another_folder PROPERTIES TIMEOUT 600)

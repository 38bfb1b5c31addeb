# Tests that need Windows (unloading modules, file sharing, apartments), and tests of the ZIP's
# files and of hosts that are built with them.

# orv_windows_test(<name> [FILES <files>] [SOURCES <sources or objects>]) adds tests that run
# windows/<name>.cpp with the shipped DLL. SOURCES are linked; FILES are put beside the program.
function(orv_windows_test name)
    cmake_parse_arguments(ARG "" "" "FILES;SOURCES" ${ARGN})
    add_executable(${name}_shipped windows/${name}.cpp ${ARG_SOURCES})
    target_include_directories(${name}_shipped PRIVATE
        ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
    target_link_libraries(${name}_shipped PRIVATE runtimeobject)
    orv_shipped_test(${name} ${ARG_FILES})
endfunction()

add_executable(file_peer windows/file_peer.cpp)
orv_windows_test(log_file_test FILES $<TARGET_FILE:file_peer> SOURCES $<TARGET_OBJECTS:support>)
orv_windows_test(system_test SOURCES $<TARGET_OBJECTS:support>)
orv_windows_test(module_test)  # without `support`, which links the library
orv_windows_test(exhaustion_test SOURCES
    windows/allocations.cpp reliability/fault_steps.cpp $<TARGET_OBJECTS:support>)
foreach(way lookup registered)
    set_tests_properties(${way}.module_test ${way}.exhaustion_test PROPERTIES
        TIMEOUT 1200)  # enough for scripts/test long
endforeach()

# orv_host(<name> <commands...>) builds the ZIP's example program in its own directory.
set(hosts ${PROJECT_BINARY_DIR}/hosts)
function(orv_host name)
    add_custom_command(OUTPUT ${hosts}/${name}.exe ${ARGN} DEPENDS unpacked VERBATIM)
    add_custom_target(host_${name} ALL DEPENDS ${hosts}/${name}.exe)
endfunction()

# orv_real_time_test(<test> <arguments of wine...>) runs a host with the default world. A host runs
# in real time and fails if the machine stalls for two seconds. So these tests run one at a time, and
# run_host repeats a failed run.
function(orv_real_time_test test)
    add_test(NAME ${test} COMMAND ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/run_host ${wine} ${ARGN})
    set_tests_properties(${test} PROPERTIES
        RESOURCE_LOCK real_time
        ENVIRONMENT WINEPREFIX=${prefix})
endfunction()

# orv_run_host(<way> <name> <DLL>) runs a host that was built from the ZIP.
function(orv_run_host way name dll)
    set(test ${way}.host_${name})
    orv_real_time_test(${test} run
        ${PROJECT_BINARY_DIR}/wine_runs/${test} ${hosts}/${name}.exe ${dll})
    set_tests_properties(${test} PROPERTIES FIXTURES_REQUIRED prefix)
endfunction()

file(MAKE_DIRECTORY ${hosts})
orv_host(gcc COMMAND ${CMAKE_C_COMPILER} -O2 ${unpacked}/examples/demo.c
    -I${unpacked}/include -L${unpacked}/lib -lquelvixwinlib -o ${hosts}/gcc.exe)

# Builds the host with Microsoft's object format and import library, but MinGW's headers and C
# runtime.
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
orv_run_host(simulated gcc ${simulatedDll})  # the same host, not built again
orv_run_host(lookup msvc ${shippedDll})
set_property(TEST wine.register APPEND PROPERTY DEPENDS lookup.host_gcc lookup.host_msvc)

include(${CMAKE_CURRENT_LIST_DIR}/hosts/hosts.cmake)

# orv.exe must find the shipped and the simulated DLL in the directories of the ZIP.
add_test(NAME lookup.orv COMMAND Python3::Interpreter
    ${CMAKE_CURRENT_SOURCE_DIR}/orv/host_test.py)
set_tests_properties(lookup.orv PROPERTIES
    RESOURCE_LOCK real_time
    FIXTURES_REQUIRED prefix
    ENVIRONMENT "WINEPREFIX=${prefix};ORV=${unpacked}/orv.exe;ORV_LIBRARY=${simulatedDll};ORV_WINE=1")
set_property(TEST wine.register APPEND PROPERTY DEPENDS lookup.orv)

# Tests Windows sockets with those bridge tests that send no signal to orv: under Wine, a signal
# does not end orv in the regular way.
add_test(NAME lookup.orv_bridge COMMAND Python3::Interpreter
    ${CMAKE_CURRENT_SOURCE_DIR}/orv/bridge_test.py -k one_client -k no_more -k wrong -k open_to)
set_tests_properties(lookup.orv_bridge PROPERTIES
    RESOURCE_LOCK real_time
    FIXTURES_REQUIRED prefix
    ENVIRONMENT "WINEPREFIX=${prefix};ORV=${unpacked}/orv.exe;ORV_LIBRARY=${simulatedDll};ORV_WINE=1")
set_property(TEST wine.register APPEND PROPERTY DEPENDS lookup.orv_bridge)

add_test(NAME lookup.orv_doctor COMMAND Python3::Interpreter
    ${CMAKE_CURRENT_SOURCE_DIR}/orv/doctor_test.py -k confirms -k needs)
set_tests_properties(lookup.orv_doctor PROPERTIES
    RESOURCE_LOCK real_time
    FIXTURES_REQUIRED prefix
    ENVIRONMENT "WINEPREFIX=${prefix};ORV=${unpacked}/orv.exe;ORV_LIBRARY=${simulatedDll};ORV_WINE=1;WINEDEBUG=-all")
set_property(TEST wine.register APPEND PROPERTY DEPENDS lookup.orv_doctor)

# The shipped DLL has the lowest size limit, check_dll's default, because each host ships it.
set(check Python3::Interpreter ${PROJECT_SOURCE_DIR}/tools/check_dll)
set(header ${unpacked}/include/quelvixwinlib.h)
add_test(NAME packed.dll COMMAND ${check} ${shippedDll} --version ${PROJECT_VERSION}
    --def ${PROJECT_SOURCE_DIR}/src/quelvixwinlib.def --def ${unpacked}/quelvixwinlib.def
    --header ${header} --symbols ${unpacked}/symbols/quelvixwinlib.dll.debug)
find_program(ORV_CASTXML castxml)
if(ORV_CASTXML)
    # This compiler must lay out the structures as the bindings assume.
    add_test(NAME packed.layout COMMAND sh -c "${PROJECT_SOURCE_DIR}/tools/layout \
${unpacked}/include/quelvixwinlib.h ${unpacked}/include/quelvixwinlib_simulated.h \
--compiler ${CMAKE_C_COMPILER} | diff - ${PROJECT_SOURCE_DIR}/bindings/layout.json")
endif()
add_test(NAME packed.released_exports COMMAND
    ${PROJECT_SOURCE_DIR}/tools/check_abi exports ${shippedDll})
add_test(NAME packed.simulated_dll COMMAND ${check} ${simulatedDll} --version ${PROJECT_VERSION}
    --def ${unpacked}/simulated/quelvixwinlib.def --largest 1000000
    --header ${header} --header ${unpacked}/include/quelvixwinlib_simulated.h)
add_test(NAME packed.orv COMMAND ${check} ${unpacked}/orv.exe --version ${PROJECT_VERSION} --program
    --largest 4000000)
add_test(NAME packed.check_dll_finds_faults COMMAND Python3::Interpreter
    ${CMAKE_CURRENT_SOURCE_DIR}/windows/check_dll_test.py ${PROJECT_SOURCE_DIR}/tools/check_dll
    ${shippedDll} ${unpacked}/symbols/quelvixwinlib.dll.debug ${unpacked}/quelvixwinlib.def ${header} ${PROJECT_VERSION})
add_test(NAME packed.again_in_another_folder COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/windows/rebuild
    ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/rebuilt ${zip} ${shippedDll})
set_tests_properties(packed.again_in_another_folder PROPERTIES TIMEOUT 1500)

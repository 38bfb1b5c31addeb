# What only Windows has: modules that come and go, files with sharing rules, apartments. And the
# finished files themselves.

function(orv_windows_test name)
    add_executable(${name}_shipped windows/${name}.cpp $<TARGET_OBJECTS:support>)
    target_include_directories(${name}_shipped PRIVATE
        ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
    target_link_libraries(${name}_shipped PRIVATE runtimeobject)
    orv_shipped_test(${name} ${ARGN})
endfunction()

add_executable(file_peer windows/file_peer.cpp)
orv_windows_test(module_test)
orv_windows_test(system_test)
orv_windows_test(log_file_test $<TARGET_FILE:file_peer>)

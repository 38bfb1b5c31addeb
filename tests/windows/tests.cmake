# What only Windows has: modules that come and go, files with sharing rules, apartments. And the
# finished files themselves.

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

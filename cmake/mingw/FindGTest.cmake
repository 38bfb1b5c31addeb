set(sources /usr/src/googletest)
if(NOT EXISTS ${sources})
    message(FATAL_ERROR "no GoogleTest sources in ${sources}: install libgtest-dev and libgmock-dev")
endif()
add_library(gtest_windows STATIC EXCLUDE_FROM_ALL
    ${sources}/googletest/src/gtest-all.cc
    ${sources}/googlemock/src/gmock-all.cc
    ${sources}/googletest/src/gtest_main.cc)
target_include_directories(gtest_windows PRIVATE ${sources}/googletest ${sources}/googlemock)
target_include_directories(gtest_windows SYSTEM PUBLIC
    ${sources}/googletest/include ${sources}/googlemock/include)
target_compile_options(gtest_windows PRIVATE -w)
foreach(part gtest gtest_main gmock)
    add_library(GTest::${part} ALIAS gtest_windows)
endforeach()
set(GTest_FOUND TRUE)

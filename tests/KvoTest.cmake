# kvo_add_test(NAME name SOURCES file... LIBRARIES target... [PROPERTIES name value...]): one GoogleTest program; ctest
# lists its tests one by one, with these properties. In the sources KVO_SOURCES is the root of the tree.
include_guard(GLOBAL)
include(GoogleTest)
find_package(GTest REQUIRED)

function(kvo_add_test)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME" "SOURCES;LIBRARIES;PROPERTIES")
    add_executable(${arg_NAME} ${arg_SOURCES})
    cmake_path(SET sources NORMALIZE "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/..") # the project may be the host alone
    target_include_directories(${arg_NAME} PRIVATE "${sources}")
    target_compile_definitions(${arg_NAME} PRIVATE KVO_SOURCES="${sources}")
    target_link_libraries(${arg_NAME} PRIVATE ${arg_LIBRARIES} GTest::gmock_main Kvo::options)
    # The frameworks' templates take twice as long to compile when they are optimised, for tests that run no faster.
    target_compile_options(${arg_NAME} PRIVATE $<$<CONFIG:RelWithDebInfo>:-O0>)
    set_target_properties(${arg_NAME} PROPERTIES KVO_UNOPTIMISED ON)
    gtest_discover_tests(${arg_NAME} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120 ${arg_PROPERTIES})
endfunction()

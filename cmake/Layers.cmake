# One static library per layer folder. Sources are globbed so that adding a file needs no edit
# here; CONFIGURE_DEPENDS re-runs the glob on every build.
function(velto_layer name folder)
    cmake_parse_arguments(ARG "" "" "DEPS" ${ARGN})
    set(sources)
    foreach(f IN LISTS folder)
        file(GLOB_RECURSE found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${f}/*.cpp)
        list(APPEND sources ${found})
    endforeach()
    if(NOT sources)
        # A layer whose first file has not been written yet.
        add_library(${name} INTERFACE)
        target_include_directories(${name} INTERFACE ${PROJECT_SOURCE_DIR})
        target_link_libraries(${name} INTERFACE ${ARG_DEPS})
        return()
    endif()
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${ARG_DEPS})
endfunction()

# One GoogleTest executable per test folder: tests/<path> becomes <path>_tests with slashes
# turned into underscores.
function(velto_test_folder folder)
    cmake_parse_arguments(ARG "" "" "DEPS;SUPPORT" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp)
    if(NOT sources)
        return()
    endif()
    string(REPLACE "/" "_" target "${folder}_tests")
    add_executable(${target} ${sources} ${ARG_SUPPORT})
    target_link_libraries(${target} PRIVATE ${ARG_DEPS} GTest::gtest GTest::gmock GTest::gtest_main)
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
    target_compile_definitions(${target} PRIVATE VELTO_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
    gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60
        PROPERTIES ENVIRONMENT "VELTO_BINARY_DIR=${PROJECT_BINARY_DIR}")
endfunction()

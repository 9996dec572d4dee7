# One static library per layer (a folder or a few). Sources are globbed so that adding a file
# needs no edit here; CONFIGURE_DEPENDS re-runs the glob on every build.
#
# Floors: a layer's code is compiled against a tree that holds links to its own folders and to
# those of the layers it depends on, and to nothing else. An include of a higher layer's header
# then fails to build, instead of waiting for a reviewer to notice. Layers that use a layer get
# its tree too, so what a layer may include grows only downwards.
function(velto_layer name folder)
    cmake_parse_arguments(ARG "" "" "DEPS" ${ARGN})
    set(sources)
    foreach(f IN LISTS folder)
        file(GLOB_RECURSE found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${f}/*.cpp)
        list(APPEND sources ${found})
    endforeach()

    set(tree ${PROJECT_BINARY_DIR}/floors/${name})
    file(REMOVE_RECURSE ${tree})
    foreach(f IN LISTS folder)
        get_filename_component(parent ${tree}/${f} DIRECTORY)
        file(MAKE_DIRECTORY ${parent})
        file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${f} ${tree}/${f} SYMBOLIC)
    endforeach()

    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC ${tree})
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
    add_executable(${target} ${sources})
    target_link_libraries(${target} PRIVATE ${ARG_SUPPORT} ${ARG_DEPS} GTest::gtest GTest::gmock
                                            GTest::gtest_main)
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
    target_compile_definitions(${target} PRIVATE VELTO_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
    gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60
        PROPERTIES ENVIRONMENT "VELTO_BINARY_DIR=${PROJECT_BINARY_DIR}")
endfunction()

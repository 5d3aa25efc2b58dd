# Helpers that make the targets alike.

# synthex_public_folder(TARGET FOLDER): lets those who link TARGET include the current folder's headers as
# "FOLDER/Name.h", and nobody else.
function(synthex_public_folder target folder)
    set(root ${PROJECT_BINARY_DIR}/include/${folder})
    file(MAKE_DIRECTORY ${root})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${folder} SYMBOLIC)
    target_include_directories(${target} INTERFACE ${root})
    get_target_property(type ${target} TYPE)
    if(NOT type STREQUAL "INTERFACE_LIBRARY")
        target_include_directories(${target} PRIVATE ${root})
    endif()
endfunction()

# synthex_check_headers(TARGET HEADER...): each header compiles alone.
function(synthex_check_headers target)
    set(sources)
    foreach(header IN LISTS ARGN)
        cmake_path(ABSOLUTE_PATH header OUTPUT_VARIABLE path)
        string(MAKE_C_IDENTIFIER ${header} name)
        set(source ${CMAKE_CURRENT_BINARY_DIR}/headers/${name}.cpp)
        file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${path}\"\n")
        list(APPEND sources ${source})
    endforeach()
    add_library(${target}_headers OBJECT ${sources})
    # The target's own view of the others, whatever kind of target it is (a module can't be linked).
    foreach(property INCLUDE_DIRECTORIES COMPILE_DEFINITIONS)
        set_property(TARGET ${target}_headers PROPERTY ${property} $<TARGET_PROPERTY:${target},${property}>)
    endforeach()
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "INTERFACE_LIBRARY")
        target_link_libraries(${target}_headers PRIVATE ${target})
    else()
        target_link_libraries(${target}_headers PRIVATE $<TARGET_PROPERTY:${target},LINK_LIBRARIES>)
    endif()
endfunction()

# synthex_add_tests(NAME SOURCES ... LINKS ...): a GoogleTest program whose cases are tests of CTest.
function(synthex_add_tests name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LINKS} corvane_test_support GTest::gmock GTest::gtest_main)
    target_compile_definitions(${name} PRIVATE
        SYNTHEX_BUILD_DIR="${PROJECT_BINARY_DIR}" SYNTHEX_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
    add_dependencies(${name} ImporterSynthex)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300)
endfunction()

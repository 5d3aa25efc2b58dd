# Helpers that make the targets alike.

# synthex_headers(TARGET [BASE FOLDER]): lets those who link TARGET, and nobody else, include the headers of the
# current folder, as "Path/Name.h" from BASE (default: Corvane/). Every header is verified to compile alone by the
# target all_verify_interface_header_sets.
function(synthex_headers target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "BASE" "")
    if(NOT arg_BASE)
        set(arg_BASE ${PROJECT_SOURCE_DIR}/Corvane)
    endif()
    # A root that holds links to these headers alone: what lies beside or below them can't be reached through it.
    set(root ${PROJECT_BINARY_DIR}/include/${target})
    file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    set(links)
    foreach(header IN LISTS headers)
        cmake_path(RELATIVE_PATH header BASE_DIRECTORY ${arg_BASE} OUTPUT_VARIABLE path)
        set(link ${root}/${path})
        cmake_path(GET link PARENT_PATH folder)
        file(MAKE_DIRECTORY ${folder})
        file(CREATE_LINK ${header} ${link} SYMBOLIC)
        list(APPEND links ${link})
    endforeach()
    # Qt's compiler of headers finds them beside their sources.
    set_source_files_properties(${links} PROPERTIES SKIP_AUTOMOC ON)
    get_target_property(type ${target} TYPE)
    set(scope PUBLIC)
    if(type STREQUAL "INTERFACE_LIBRARY")
        set(scope INTERFACE)
    endif()
    target_sources(${target} ${scope} FILE_SET HEADERS BASE_DIRS ${root} FILES ${links})
endfunction()

# synthex_service(NAME SOURCES ... [USES SERVICE...] [LINKS LIBRARY...]): a folder of the host services. NAME stands for
# its headers; its code becomes a part of libcorvane.so. USES are other services whose headers it may include.
function(synthex_service name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;USES;LINKS")
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE synthex_host ${arg_USES})
    synthex_headers(${name})
    add_library(${name}_code OBJECT ${arg_SOURCES})
    set_target_properties(${name}_code PROPERTIES CXX_VISIBILITY_PRESET default)
    target_link_libraries(${name}_code PRIVATE ${name} ${arg_LINKS})
    target_link_libraries(corvane PRIVATE ${name}_code ${arg_LINKS})
endfunction()

# synthex_loaded_module(NAME OUTPUT LINKS ...): lib/corvane/OUTPUT.so, which the program loads when it needs it.
function(synthex_loaded_module name output)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "SOURCES;LINKS")
    add_library(${name} MODULE ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LINKS})
    set_target_properties(${name} PROPERTIES
        PREFIX "" OUTPUT_NAME ${output}
        LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib/corvane
        INSTALL_RPATH "$ORIGIN/..")
    install(TARGETS ${name} LIBRARY DESTINATION lib/corvane)
endfunction()

# synthex_compile_tests_fast(TARGET): a sanitizer checks the libraries under test; optimizing the cases, too, takes the
# compiler as long as all libraries together.
function(synthex_compile_tests_fast target)
    if(SYNTHEX_SANITIZE)
        target_compile_options(${target} PRIVATE -O0)
    endif()
endfunction()

# synthex_add_tests(NAME SOURCES ... LINKS ...): a GoogleTest program whose cases are tests of CTest.
function(synthex_add_tests name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LINKS} corvane_test_support GTest::gmock GTest::gtest_main)
    synthex_compile_tests_fast(${name})
    add_dependencies(${name} ImporterSynthex)
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300)
endfunction()

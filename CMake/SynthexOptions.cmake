# What every target is compiled with.

option(SYNTHEX_TESTS "Build the tests" ON)
option(SYNTHEX_BENCHMARKS "Build the benchmarks" ON)
option(SYNTHEX_FUZZ "Build the fuzz targets (Clang, with the tests' support)" OFF)
set(SYNTHEX_SANITIZE "" CACHE STRING "Sanitizers, comma separated: address,undefined or thread")

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS ON) # __int128
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# Hidden: a unique symbol that is visible would keep the bundle loaded after dlclose.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# The target all_verify_interface_header_sets compiles every header alone.
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)
# The target autogen makes all that Qt generates, for tools that read sources without building them.
set(CMAKE_GLOBAL_AUTOGEN_TARGET ON)
set(CMAKE_AUTOGEN_ORIGIN_DEPENDS OFF)

# The build tree has the layout of the installed tree, so that programs find the bundle in both the same way.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_BINDIR})
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/archive)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../lib")
# Another path for the build tree would be padded by empty entries, each of which stands for the current folder.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)

add_compile_options(
    -Wall -Wextra -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Werror
    # No fused multiply-add: the same bytes on every machine.
    -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 sees overlaps and huge sizes in std::string and std::vector that are not there (GCC bug 105651).
    add_compile_options(-fno-gnu-unique -Wno-restrict -Wno-stringop-overread)
    # Of several sources at a time, GCC takes all but the first for headers.
    if(CMAKE_UNITY_BUILD)
        add_compile_options(-Wno-subobject-linkage)
    endif()
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release")
    # Code and constants in one segment: fewer mappings to make whenever the program starts or loads the bundle.
    add_link_options(-Wl,--as-needed -Wl,-z,noseparate-code)
endif()

if(SYNTHEX_SANITIZE)
    add_compile_options(-fsanitize=${SYNTHEX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
    add_link_options(-fsanitize=${SYNTHEX_SANITIZE})
endif()

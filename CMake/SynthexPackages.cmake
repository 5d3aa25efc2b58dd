# Debian packages, by CPack: `script/package` makes them. The program with its window and modules, the library for
# programs in C with what builds against it, and each binding.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME synthex)
set(CPACK_PACKAGE_VENDOR Synthex)
set(CPACK_PACKAGE_CONTACT "Synthex developers <developers@synthex.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_OUTPUT_FILE_PREFIX ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL program engine dev gstreamer python)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Packages that are linked with the library need it in the same version.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
# The packages' own libraries, which are found before there is a package of them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/Packages/prepare.cmake)
set(CPACK_SYNTHEX_PACKAGES ${PROJECT_SOURCE_DIR}/Packages)
set(CPACK_SYNTHEX_PYTHON ${Python3_EXECUTABLE})
set(CPACK_SYNTHEX_ARCHITECTURE ${CMAKE_LIBRARY_ARCHITECTURE})
set(CPACK_SYNTHEX_CHANGES ${PROJECT_SOURCE_DIR}/CHANGELOG.md)

# synthex_package(COMPONENT NAME SUMMARY DETAILS [SECTION ...] [DEPENDS ...] [RECOMMENDS ...]): a package of the parts of
# the installed tree that belong to COMPONENT.
function(synthex_package component name summary details)
    cmake_parse_arguments(PARSE_ARGV 4 arg "" "SECTION" "DEPENDS;RECOMMENDS")
    string(TOUPPER ${component} upper)
    list(JOIN arg_DEPENDS ", " depends)
    list(JOIN arg_RECOMMENDS ", " recommends)
    set(CPACK_COMPONENT_${upper}_DESCRIPTION "${summary}\n${details}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${upper}_PACKAGE_RECOMMENDS "${recommends}" PARENT_SCOPE)
    if(arg_SECTION)
        set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${arg_SECTION} PARENT_SCOPE)
    endif()
endfunction()

set(same "= ${PROJECT_VERSION}")
synthex_package(program synthex "exact test clips for video engineers"
    "Generates every frame of a clip from a small settings file: solid colors of\nthe fields, or a gradient that moves, with a running frame number.\n.\nThis package holds the importer plug-in, the synthex command, which renders,\ncompares and makes families of clips, and a window with a bin, a viewer and\nexports."
    RECOMMENDS ffmpeg)
synthex_package(engine libcorvane-engine1 "synthetic test clips, library for C"
    "Opens settings files of Synthex and hands out their frames without a copy."
    SECTION libs DEPENDS "synthex (${same})")
synthex_package(dev libcorvane-engine-dev "synthetic test clips, headers for C and C++"
    "Headers, a pkg-config file and a CMake package of libcorvane-engine."
    SECTION libdevel DEPENDS "libcorvane-engine1 (${same})")
synthex_package(gstreamer gstreamer1.0-synthex "synthetic test clips, GStreamer plug-in"
    "The source synthexsrc, and a decoder by which players of GStreamer open\nsettings files of Synthex like any video."
    DEPENDS "libcorvane-engine1 (${same})")
synthex_package(python python3-synthex "synthetic test clips, Python package"
    "Clips as sequences of NumPy arrays, rendering, and a fixture for pytest."
    SECTION python DEPENDS "libcorvane-engine1 (${same})" "python3 (>= 3.11)" "python3 (<< 3.12)" "python3-numpy")
# Both hold libraries, which the system is told of.
foreach(component PROGRAM ENGINE)
    set(CPACK_DEBIAN_${component}_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/Packages/triggers)
endforeach()

include(CPack)

# Run by CPack when all files of the packages are in place, a folder a component: what only packages need.
set(names program synthex engine libcorvane-engine1 dev libcorvane-engine-dev gstreamer gstreamer1.0-synthex
    python python3-synthex)
while(names)
    list(POP_FRONT names component name)
    set(usr ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${component}/usr)
    if(NOT IS_DIRECTORY ${usr})
        message(FATAL_ERROR "no files for the package ${name}: ${usr}")
    endif()

    # Where Debian's GStreamer looks for plug-ins.
    if(EXISTS ${usr}/lib/gstreamer-1.0 AND CPACK_SYNTHEX_ARCHITECTURE)
        file(MAKE_DIRECTORY ${usr}/lib/${CPACK_SYNTHEX_ARCHITECTURE})
        file(RENAME ${usr}/lib/gstreamer-1.0 ${usr}/lib/${CPACK_SYNTHEX_ARCHITECTURE}/gstreamer-1.0)
    endif()

    # Everything lies where the system looks for it.
    file(GLOB_RECURSE files ${usr}/*)
    foreach(file IN LISTS files)
        if(IS_SYMLINK ${file})
            continue()
        endif()
        file(READ ${file} magic LIMIT 4 HEX)
        if(magic STREQUAL 7f454c46)
            file(RPATH_REMOVE FILE ${file})
            if(NOT file MATCHES "/bin/")
                file(CHMOD ${file} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
            endif()
        elseif(file MATCHES "/man/man[0-9]/")
            execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
        endif()
    endforeach()

    set(doc ${usr}/share/doc/${name})
    file(MAKE_DIRECTORY ${doc})
    configure_file(${CPACK_SYNTHEX_PACKAGES}/copyright ${doc}/copyright COPYONLY)
    execute_process(
        COMMAND ${CPACK_SYNTHEX_PYTHON} ${CPACK_SYNTHEX_PACKAGES}/changelog.py ${CPACK_SYNTHEX_CHANGES} ${name}
            ${CPACK_PACKAGE_VERSION} ${CPACK_PACKAGE_CONTACT} ${doc}/changelog.gz
        COMMAND_ERROR_IS_FATAL ANY)
endwhile()

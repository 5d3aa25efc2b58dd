# Installs to a folder of its own and runs what is there, as a person would who has nothing but that folder.
#   cmake -D BUILD=... -D WORK=... -D SAMPLE=... -P InstallTest.cmake
# Faults sought: a file that is not installed, a library or the bundle found in the build tree only, entries of the
# desktop that its own tools reject.
file(REMOVE_RECURSE ${WORK})
set(prefix ${WORK}/prefix)

function(run)
    execute_process(COMMAND ${ARGV} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE error)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "${ARGV}: status ${status}\n${output}\n${error}")
    endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
# The program must not find anything in the build tree: it runs from a copy where nothing else is.
file(RENAME ${prefix} ${WORK}/moved)
set(program ${WORK}/moved/bin/synthex)
set(ENV{XDG_CONFIG_HOME} ${WORK}/home)
set(ENV{XDG_DATA_HOME} ${WORK}/home)
set(ENV{QT_QPA_PLATFORM} offscreen)
run(${program} validate)
run(${program} render --quiet ${SAMPLE} ${WORK}/clip.mp4 --frames 0:3)
run(${program} desktop --once ${SAMPLE})

# A C program that is built against this folder alone, by CMake and by pkg-config, gets the frames that are rendered.
run(${program} render --quiet --native ${SAMPLE} ${WORK}/expected.raw)
run(${CMAKE_COMMAND} -D CMAKE_PREFIX_PATH=${WORK}/moved -D "CMAKE_C_FLAGS=${SANITIZE}" -S ${EXAMPLE} -B ${WORK}/example)
run(${CMAKE_COMMAND} --build ${WORK}/example)
set(ENV{PKG_CONFIG_PATH} ${WORK}/moved/lib/pkgconfig)
run(sh -c "cc ${SANITIZE} -o '${WORK}/example/by-pkg-config' '${EXAMPLE}/frames.c' $(pkg-config --cflags --libs corvane-engine) \
    -Wl,-rpath,'${WORK}/moved/lib'")
foreach(built frames by-pkg-config)
    run(sh -c "'${WORK}/example/${built}' '${SAMPLE}' | cmp - '${WORK}/expected.raw'")
endforeach()

set(share ${WORK}/moved/share)
foreach(file applications/synthex.desktop mime/packages/synthex.xml icons/hicolor/scalable/apps/synthex.svg
             icons/hicolor/256x256/apps/synthex.png doc/synthex/UserGuide.md
             doc/synthex/synthex.schema.json man/man1/synthex.1 man/man1/synthex-render.1 man/man5/synthex.5
             bash-completion/completions/synthex zsh/site-functions/_synthex fish/vendor_completions.d/synthex.fish)
    if(NOT EXISTS ${share}/${file})
        message(FATAL_ERROR "${file} is not installed")
    endif()
endforeach()
run(desktop-file-validate ${share}/applications/synthex.desktop)
run(update-mime-database ${share}/mime)
# What a double click asks: which kind the file is, and which program opens that kind.
file(READ ${share}/mime/globs2 globs)
file(READ ${share}/applications/synthex.desktop entry)
foreach(kind application/vnd.synthex.settings+json:\\*.synthex application/vnd.synthex.project+json:\\*.cvproj)
    string(REGEX REPLACE ":.*" "" type ${kind})
    string(REPLACE "+" "\\+" escaped ${kind})
    if(NOT globs MATCHES "${escaped}")
        message(FATAL_ERROR "no file is of the kind ${kind}")
    endif()
    string(FIND "${entry}" "${type};" found)
    if(found EQUAL -1)
        message(FATAL_ERROR "the program does not open ${type}")
    endif()
endforeach()
file(REMOVE_RECURSE ${WORK})

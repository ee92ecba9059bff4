# Bundles the viewer and its library into one script that starts with the licence of the library.
#   cmake -DNPM=... -DSOURCE=tools/scenetool/page -DWORK=... -P Bundle.cmake: WORK/viewer.js, or no file and a message
cmake_minimum_required(VERSION 3.24)

set(bundle ${WORK}/viewer.js)
file(SHA256 ${SOURCE}/package-lock.json packages)
file(SHA256 ${SOURCE}/viewer.js viewer)
if(EXISTS ${bundle} AND EXISTS ${WORK}/made-from)
    file(READ ${WORK}/made-from made_from)
    if(made_from STREQUAL "${packages}${viewer}")
        return()
    endif()
endif()
file(REMOVE ${bundle})
foreach(file package.json package-lock.json .npmrc viewer.js)
    configure_file(${SOURCE}/${file} ${WORK}/source/${file} COPYONLY)
endforeach()
execute_process(COMMAND ${NPM} ci --silent --ignore-scripts --cache ${WORK}/cache WORKING_DIRECTORY ${WORK}/source
    TIMEOUT 120 RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
if(failed)
    message(STATUS "scenetool is built without the command page: npm gets no packages")
    return()
endif()
execute_process(
    COMMAND ${WORK}/source/node_modules/.bin/esbuild viewer.js --bundle --minify --format=iife --charset=utf8
        --legal-comments=none --log-level=error --outfile=${WORK}/bundle.js
    WORKING_DIRECTORY ${WORK}/source RESULT_VARIABLE failed ERROR_VARIABLE reason)
if(failed)
    message(STATUS "scenetool is built without the command page: ${reason}")
    return()
endif()
file(READ ${WORK}/source/node_modules/three/LICENSE licence)
file(READ ${WORK}/bundle.js script)
file(WRITE ${bundle} "/*\nthree.js\n\n${licence}*/\n${script}")
file(WRITE ${WORK}/made-from "${packages}${viewer}")

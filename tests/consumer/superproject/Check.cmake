# cmake -DLIBVIDEO_FOLDER=DIR -DWORK=DIR -DGENERATOR=NAME -DCOMPILER=FILE -P Check.cmake: whether a project can add libVideo
# as a subdirectory. Builds the part that builds fast; the rest is configured, which finds what each target links.
file(REMOVE_RECURSE ${WORK})
execute_process(COMMAND ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${WORK}/build -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${COMPILER} -DLIBVIDEO_FOLDER=${LIBVIDEO_FOLDER} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK}/build --target textConsumer COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${WORK}/build/textConsumer COMMAND_ERROR_IS_FATAL ANY)

# The project installs nothing, and libVideo adds nothing to that.
execute_process(COMMAND ${CMAKE_COMMAND} --install ${WORK}/build --prefix ${WORK}/prefix COMMAND_ERROR_IS_FATAL ANY)
file(GLOB_RECURSE installed ${WORK}/prefix/*)
if(installed)
    message(FATAL_ERROR "libVideo installs itself with the project that adds it: ${installed}")
endif()
file(REMOVE_RECURSE ${WORK})

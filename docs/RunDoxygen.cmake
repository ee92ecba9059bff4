# Runs Doxygen. Fails if there are warnings, and shows them.
#   cmake -DDOXYGEN=... -DFOLDER=... -P RunDoxygen.cmake
if(NOT DOXYGEN)
    message(FATAL_ERROR "There is no Doxygen: install the package doxygen, then configure again.")
endif()
execute_process(COMMAND ${DOXYGEN} ${FOLDER}/Doxyfile RESULT_VARIABLE status)
file(READ ${FOLDER}/warnings.txt warnings)
if(NOT status EQUAL 0 OR NOT warnings STREQUAL "")
    message(FATAL_ERROR "the reference has gaps:\n${warnings}")
endif()

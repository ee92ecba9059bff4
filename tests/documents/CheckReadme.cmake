# The host in the README is the compiled example, to the letter, and its shown output is what the example prints.
#   cmake -DROOT=... -DHOST=... -P CheckReadme.cmake
file(READ ${ROOT}/README.md readme)
file(READ ${ROOT}/examples/host.cpp host)
string(FIND "${readme}" "```cpp\n${host}```" place)
if(place EQUAL -1)
    message(FATAL_ERROR "README.md does not show examples/host.cpp as it stands")
endif()

execute_process(COMMAND ${HOST} ${ROOT}/data/lighthouse.dae OUTPUT_VARIABLE output RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "the example ends with ${status}")
endif()
string(FIND "${readme}" "```\n${output}```" place)
if(place EQUAL -1)
    message(FATAL_ERROR "README.md does not show what the example prints:\n${output}")
endif()

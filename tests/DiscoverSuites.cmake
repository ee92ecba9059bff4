# Writes a test of CTest for each suite of a test program. Arguments: PROGRAM, OUTPUT.
execute_process(COMMAND ${PROGRAM} --gtest_list_tests OUTPUT_VARIABLE listing RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${PROGRAM} does not list its tests: ${status}")
endif()
# The list has a line "Suite." or "Suite/0.  # TypeParam = ..." before the indented names of its tests.
string(REGEX MATCHALL "(^|\n)[^ \n]+\\." suites "${listing}")
set(tests "")
foreach(suite IN LISTS suites)
    string(REGEX REPLACE "^\n?(.*)\\.$" "\\1" suite "${suite}")
    string(APPEND tests "add_test([==[${suite}]==] [==[${PROGRAM}]==] [==[--gtest_filter=${suite}.*]==])\n"
        "set_tests_properties([==[${suite}]==] PROPERTIES TIMEOUT 1200)\n")
endforeach()
file(WRITE ${OUTPUT} "${tests}")

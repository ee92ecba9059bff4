# Generates the page of all log messages from their list.
#   cmake -DLIST=messages.json -DPAGE=messages.md -P MessagesPage.cmake
cmake_minimum_required(VERSION 3.24)
file(READ ${LIST} list)
string(JSON count LENGTH "${list}" messages)
math(EXPR last "${count} - 1")

set(text "# Messages {#messages}\n
Every line that the library logs. A line is the number of its source line, a blank, and the words; what stands in braces\n\
is filled in. All have the priority `PRIORITY_ERROR`. A fault is one line, and the load goes on where it can.\n")
set(channel "")
foreach(i RANGE ${last})
    foreach(field channel words when then)
        string(JSON ${field}_here GET "${list}" messages ${i} ${field})
    endforeach()
    string(JSON unreached ERROR_VARIABLE isReached GET "${list}" messages ${i} unreached)
    if(NOT channel_here STREQUAL channel)
        set(channel "${channel_here}")
        string(APPEND text "\n## ${channel}\n\n| words | when | then |\n|---|---|---|\n")
    endif()
    if(isReached STREQUAL NOTFOUND)
        string(APPEND when_here "; no document leads there: ${unreached}")
    endif()
    string(APPEND text "| `${words_here}` | ${when_here}. | ${then_here} |\n")
endforeach()
file(CONFIGURE OUTPUT ${PAGE} CONTENT "${text}" @ONLY)

# Generates the page of all log messages from their list.
#   cmake -DLIST=messages.json -DPAGE=messages.md -P MessagesPage.cmake
cmake_minimum_required(VERSION 3.24)
file(READ ${LIST} list)
string(JSON count LENGTH "${list}" messages)
math(EXPR last "${count} - 1")

set(text "# Messages {#messages}\n
All messages of the library. A message is the number of its source line, a space, and the words; texts in braces are\n\
placeholders. All have the priority `PRIORITY_ERROR`. Each fault logs one message, and the load continues if it can.\n")
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
        string(APPEND when_here "; no document causes it: ${unreached}")
    endif()
    string(APPEND text "| `${words_here}` | ${when_here}. | ${then_here} |\n")
endforeach()
file(CONFIGURE OUTPUT ${PAGE} CONTENT "${text}" @ONLY)

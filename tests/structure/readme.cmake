# cmake -DROOT=... -P readme.cmake: the programs that the README shows are the examples, letter by letter.
file(READ "${ROOT}/README.md" readme)
foreach(example send_event receive_event)
    file(READ "${ROOT}/examples/${example}.cpp" code)
    string(FIND "${readme}" "```cpp\n${code}```\n" place)
    if(place EQUAL -1)
        message(SEND_ERROR "README.md does not show examples/${example}.cpp as it is")
    endif()
endforeach()

# cmake -DROOT=... -P readme.cmake: the programs that the README and the guide show are the examples, letter by letter.
function(shows page)
    file(READ "${ROOT}/${page}" text)
    foreach(example IN LISTS ARGN)
        file(READ "${ROOT}/examples/${example}.cpp" code)
        string(FIND "${text}" "```cpp\n${code}```\n" place)
        if(place EQUAL -1)
            message(SEND_ERROR "${page} does not show examples/${example}.cpp as it is")
        endif()
    endforeach()
endfunction()

shows(README.md send_event receive_event)
shows(docs/hub.md hub_server hub_client mixed_hub)

# cmake -DROOT=... -DCC=... -P c_headers.cmake: each header that declares C functions compiles as C11.
cmake_minimum_required(VERSION 3.25)
file(GLOB_RECURSE headers "${ROOT}/Varnex/*.h" "${ROOT}/Zendro/*.h" "${ROOT}/Plexa/*.h")
foreach(header IN LISTS headers)
    file(STRINGS "${header}" marks REGEX "extern \"C\"")
    if(marks)
        execute_process(
            COMMAND "${CC}" -std=c11 -Wall -Wextra -Wpedantic -Werror -fsyntax-only "-I${ROOT}" -x c "${header}"
            RESULT_VARIABLE failed)
        if(failed)
            message(SEND_ERROR "the C compiler refuses ${header}")
        endif()
    endif()
endforeach()

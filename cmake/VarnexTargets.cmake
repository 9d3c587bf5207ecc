# What our CMakeLists.txt files are written with.
include_guard()

# varnex_warnings(target): what our own presets compile with; nothing for anybody else.
function(varnex_warnings target)
    if(NOT VARNEX_DEVELOPER_WARNINGS)
        return()
    endif()
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
        $<$<COMPILE_LANG_AND_ID:CXX,Clang,AppleClang>:-Wthread-safety>)
endfunction()

# varnex_public_interface(target): how users and parts of the library find the headers.
function(varnex_public_interface target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endfunction()

# varnex_library(sources...): compiles them once, for Varnex::Varnex (shared or static) and for the tests' archive.
function(varnex_library)
    add_library(varnex_objects OBJECT ${ARGN})
    varnex_warnings(varnex_objects)
    varnex_public_interface(varnex_objects)
    set_target_properties(varnex_objects PROPERTIES POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden C_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    target_compile_options(varnex_objects PRIVATE -fno-semantic-interposition)
    target_link_libraries(varnex_objects PRIVATE ${VARNEX_LINKS} ${VARNEX_USES_HEADERS_OF})

    if(VARNEX_SHARED)
        set(kind SHARED)
    else()
        set(kind STATIC)
    endif()
    add_library(Varnex ${kind} $<TARGET_OBJECTS:varnex_objects>)
    add_library(Varnex::Varnex ALIAS Varnex)
    varnex_public_interface(Varnex)
    target_link_libraries(Varnex PRIVATE ${VARNEX_LINKS})
    set_target_properties(Varnex PROPERTIES OUTPUT_NAME varnex LINKER_LANGUAGE CXX
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
    if(VARNEX_SHARED)
        set(map "${PROJECT_SOURCE_DIR}/cmake/exports.map")
        target_link_options(Varnex PRIVATE -Wl,-Bsymbolic-functions "-Wl,--version-script=${map}")
        set_target_properties(Varnex PROPERTIES LINK_DEPENDS "${map}")
    endif()

    if(VARNEX_BUILD_TESTS OR VARNEX_BUILD_FUZZ OR VARNEX_BUILD_BENCH)
        add_library(varnex_static_for_tests STATIC $<TARGET_OBJECTS:varnex_objects>)
        varnex_public_interface(varnex_static_for_tests)
        target_link_libraries(varnex_static_for_tests PUBLIC ${VARNEX_LINKS})
        set_target_properties(varnex_static_for_tests PROPERTIES LINKER_LANGUAGE CXX)
    endif()
endfunction()

# varnex_program(target sources... [LINK libraries...]): an executable with our warnings; Varnex::Varnex unless LINK is
# given.
function(varnex_program target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" LINK)
    if(NOT arg_LINK)
        set(arg_LINK Varnex::Varnex)
    endif()
    add_executable(${target} ${arg_UNPARSED_ARGUMENTS})
    target_compile_features(${target} PRIVATE cxx_std_20)
    target_link_libraries(${target} PRIVATE ${arg_LINK})
    varnex_warnings(${target})
endfunction()

# varnex_test(name sources... [LINK libraries...] [WRAP functions...]): a GoogleTest program on the static archive, each
# of its tests known to CTest. References to a wrapped function f go to `__wrap_f`, which the sources define.
function(varnex_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK;WRAP")
    varnex_program(${name} ${arg_UNPARSED_ARGUMENTS} LINK ${arg_LINK} varnex_static_for_tests GTest::gmock_main)
    foreach(function IN LISTS arg_WRAP)
        target_link_options(${name} PRIVATE "LINKER:--wrap=${function}")
    endforeach()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT ${VARNEX_TEST_TIMEOUT})
endfunction()

# varnex_fuzz(name): fuzz/<name>.cpp as a libFuzzer program, or, without VARNEX_BUILD_FUZZ, as a program that runs the
# seeds once. Either way CTest runs the seeds in fuzz/corpus/<name>/.
function(varnex_fuzz name)
    set(seeds "${PROJECT_SOURCE_DIR}/fuzz/corpus/${name}")
    if(VARNEX_BUILD_FUZZ)
        varnex_program(fuzz_${name} ${name}.cpp LINK varnex_static_for_tests)
        target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
        set(run fuzz_${name} -runs=0 "${seeds}")
    else()
        varnex_program(fuzz_${name} ${name}.cpp replay_main.cpp LINK varnex_static_for_tests)
        set(run fuzz_${name} "${seeds}")
    endif()
    add_test(NAME fuzz_${name}.Seeds COMMAND ${run})
    set_tests_properties(fuzz_${name}.Seeds PROPERTIES TIMEOUT ${VARNEX_TEST_TIMEOUT})
endfunction()

# varnex_bench(name): bench/<name>.cpp as a Google Benchmark program bench_<name>; a main of its own is fine.
function(varnex_bench name)
    varnex_program(bench_${name} ${name}.cpp LINK Varnex::Varnex benchmark::benchmark_main)
endfunction()

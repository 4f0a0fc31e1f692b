# libFuzzer harnesses: each component keeps its own under fuzz/, built only
# with ORV_BUILD_FUZZERS (clang; usually with ORV_SANITIZE=ON as well).

option(ORV_BUILD_FUZZERS "Build the libFuzzer harnesses (clang only)" OFF)
if(ORV_BUILD_FUZZERS AND NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "ORV_BUILD_FUZZERS needs clang as the C++ compiler")
endif()

# orv_add_fuzzer(NAME SOURCE LIBRARIES... [INSTRUMENT targets...])
# The targets after INSTRUMENT are compiled with coverage feedback, so the
# fuzzer steers by the code under test, not only by the harness.
function(orv_add_fuzzer name source)
    cmake_parse_arguments(FZ "" "" "LIBRARIES;INSTRUMENT" ${ARGN})
    foreach(target ${FZ_INSTRUMENT})
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    endforeach()
    add_executable(${name} ${source})
    target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    target_link_libraries(${name} PRIVATE ${FZ_LIBRARIES})
endfunction()

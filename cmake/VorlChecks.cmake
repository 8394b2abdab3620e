# What the presets tidy and coverage switch on.
option(VORL_TIDY "Run clang-tidy on each source as it is compiled" OFF)
option(VORL_COVERAGE "Provide the target coverage; needs a compiler with --coverage" OFF)

if(VORL_TIDY)
    find_program(VORL_CLANG_TIDY NAMES clang-tidy clang-tidy-14 REQUIRED)
    set(CMAKE_CXX_CLANG_TIDY "${VORL_CLANG_TIDY}" --quiet)
endif()

if(VORL_COVERAGE)
    find_program(VORL_GCOVR NAMES gcovr REQUIRED)
    add_custom_target(coverage
        COMMAND find "${CMAKE_BINARY_DIR}" -name "*.gcda" -delete
        COMMAND "${CMAKE_CTEST_COMMAND}" --test-dir "${CMAKE_BINARY_DIR}" --output-on-failure -j2
        COMMAND "${VORL_GCOVR}" --root "${PROJECT_SOURCE_DIR}" --object-directory "${CMAKE_BINARY_DIR}"
                --filter "src/" --filter "platform/" --exclude-throw-branches --fail-under-line 97
        WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
        COMMENT "Running all tests and counting the lines of src/ and platform/ that they reach"
        USES_TERMINAL VERBATIM)
endif()

# Counts which lines of a target run. Those of the library alone: what else is compiled would only take longer.
function(vorl_count_lines target)
    if(VORL_COVERAGE)
        target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
        target_link_options(${target} PUBLIC $<BUILD_INTERFACE:--coverage>)
    endif()
endfunction()

# Names a program that the tests run, so that it is built before they are counted.
function(vorl_run_for_coverage target)
    if(TARGET coverage)
        add_dependencies(coverage ${target})
    endif()
endfunction()

# What the presets switch on.
option(VORL_TIDY "Run clang-tidy on each source as it is compiled" OFF)
option(VORL_BY_FOLDER "Compile the sources of a folder together" OFF)
option(VORL_COVERAGE "Provide the target coverage; needs a compiler with --coverage" OFF)

if(VORL_TIDY)
    find_program(VORL_CLANG_TIDY NAMES clang-tidy clang-tidy-14 REQUIRED)
    # Not what analyses paths, which goes through sources alone: scripts/analyze.
    set(CMAKE_CXX_CLANG_TIDY "${VORL_CLANG_TIDY}" --quiet --checks=-clang-analyzer-*)
endif()

# vorl_compile_by_folder(TARGETS...): for the second and further builds of a day. Headers are most of what a source costs,
# and a folder's are much the same. Not by default, since whether each source includes what it uses shows only one by one.
function(vorl_compile_by_folder)
    if(NOT VORL_BY_FOLDER)
        return()
    endif()
    foreach(target IN LISTS ARGN)
        if(NOT TARGET ${target})
            continue()
        endif()
        get_target_property(sources ${target} SOURCES)
        get_target_property(base ${target} SOURCE_DIR)
        foreach(source IN LISTS sources)
            cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${base}")
            cmake_path(GET source PARENT_PATH folder)
            cmake_path(GET folder FILENAME folder)
            set_source_files_properties("${source}" TARGET_DIRECTORY ${target} PROPERTIES UNITY_GROUP "${folder}")
        endforeach()
        set_target_properties(${target} PROPERTIES
            UNITY_BUILD ON
            UNITY_BUILD_MODE GROUP
            UNITY_BUILD_CODE_BEFORE_INCLUDE "// NOLINTNEXTLINE(bugprone-suspicious-include)")
        # What lives in an unnamed namespace, in a source of sources, looks like a header's to the compiler.
        target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
    endforeach()
endfunction()

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

# vorl_has_threads(TEST PROGRAMS...): what the preset tsan builds and runs. Where there is one thread, there is nothing to
# find. Tests that are run one by one have no names yet.
if(PROJECT_IS_TOP_LEVEL)
    add_custom_target(threaded)
endif()
function(vorl_has_threads test)
    if(TARGET threaded)
        add_dependencies(threaded ${ARGN})
    endif()
    if(TEST ${test})
        set_property(TEST ${test} APPEND PROPERTY LABELS threads)
    endif()
endfunction()

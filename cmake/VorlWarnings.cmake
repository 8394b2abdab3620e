# vorl_warnings: what the project's own sources are compiled with; never part of what users get.
option(VORL_WERROR "Treat warnings as errors" OFF)

add_library(vorl_warnings INTERFACE)
target_compile_options(vorl_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<BOOL:${VORL_WERROR}>:-Werror>)

# vorl_harden(TARGETS...): compiles and links what is shipped so that a fault in it is hard to exploit: a damaged stack is
# noticed, the C library checks sizes where it knows them, and nothing that a program writes to is ever executed or
# decides where a call goes. tests/hardening looks for it in what is installed, but for -fcf-protection: whether a program
# is marked for it depends on the C library's start-up objects as well.
option(VORL_HARDENING "Compile and link with the protections of compiler, linker and C library" ON)

include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# The strong form guards whatever has the address of a local variable, which in C++ is nearly everything: on 32-bit x86 a
# tenth of the code. Built for size, it is the functions with arrays on the stack, which is where an overflow begins.
set(vorl_hardening_options
    $<IF:$<CONFIG:MinSizeRel>,-fstack-protector;--param=ssp-buffer-size=4,-fstack-protector-strong>)
check_cxx_compiler_flag(-fstack-clash-protection VORL_HAS_fstack_clash_protection)
if(VORL_HAS_fstack_clash_protection)
    list(APPEND vorl_hardening_options -fstack-clash-protection)
endif()
# No kernel checks the calls and returns of 32-bit programs, so there it would be room for nothing.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$" AND CMAKE_SIZEOF_VOID_P EQUAL 8)
    check_cxx_compiler_flag(-fcf-protection VORL_HAS_fcf_protection)
    if(VORL_HAS_fcf_protection)
        list(APPEND vorl_hardening_options -fcf-protection)
    endif()
endif()
# The sanitizers check the same functions themselves, and do not know the C library's checked ones.
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize=")
    list(APPEND vorl_hardening_options "SHELL:-include \"${PROJECT_SOURCE_DIR}/cmake/fortify.h\"")
endif()

function(vorl_harden)
    if(NOT VORL_HARDENING)
        return()
    endif()
    foreach(target IN LISTS ARGN)
        if(TARGET "${target}")
            get_target_property(aliased ${target} ALIASED_TARGET)
            if(aliased)
                set(target ${aliased})
            endif()
            get_target_property(type ${target} TYPE)
            get_target_property(imported ${target} IMPORTED)
            # A device's platform may have been compiled elsewhere.
            if(imported OR type STREQUAL "INTERFACE_LIBRARY")
                continue()
            endif()
            set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
            target_compile_options(${target} PRIVATE ${vorl_hardening_options})
            if(type MATCHES "^(SHARED_LIBRARY|MODULE_LIBRARY|EXECUTABLE)$")
                target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
            endif()
        endif()
    endforeach()
endfunction()

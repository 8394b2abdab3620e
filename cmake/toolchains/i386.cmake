# 32-bit x86, whose programs an x86-64 machine runs itself.

set(CMAKE_SYSTEM_PROCESSOR i686)
set(VORL_CROSS_GNU i686-linux-gnu)
set(VORL_CROSS_MULTIARCH i386-linux-gnu)
set(VORL_CROSS_DEBIAN i386)
include("${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake")

# The system has no loader and no C library of this architecture; those of the cross compiler serve. An old-style
# path (no new tag) holds for the libraries of libraries, too.
string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT
    " -Wl,--dynamic-linker=${vorl_target_libraries}/ld-linux.so.2 -Wl,--disable-new-dtags,-rpath,${vorl_target_libraries}:${vorl_sysroot_libraries}")

# Calls through the table of addresses itself take less room than stubs, for which each caller loads a register first.
set(CMAKE_CXX_FLAGS_MINSIZEREL_INIT "-fno-plt")

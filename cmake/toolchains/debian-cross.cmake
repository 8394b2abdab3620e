# What the toolchains have in common: Debian's cross compiler, and a sysroot that scripts/sysroot has unpacked.
#
# They set before they include this one:
#   VORL_CROSS_GNU         the compiler's name for the target, as in i686-linux-gnu-g++
#   VORL_CROSS_MULTIARCH   Debian's name for the folders of its libraries
#   VORL_CROSS_DEBIAN      Debian's name for the architecture

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_CXX_COMPILER ${VORL_CROSS_GNU}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${VORL_CROSS_MULTIARCH})

get_filename_component(vorl_root "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)
set(vorl_sysroot "${vorl_root}/build/sysroot/${VORL_CROSS_DEBIAN}")
if(NOT EXISTS "${vorl_sysroot}/.unpacked")
    message(FATAL_ERROR "${vorl_sysroot} is not there: run scripts/sysroot ${VORL_CROSS_DEBIAN}")
endif()

# In this order, and before the compiler's own folders: it looks into the system's as well, and the native
# openssl/configuration.h would tell it the wrong sizes.
set(CMAKE_CXX_FLAGS_INIT
    "-isystem ${vorl_sysroot}/usr/include/${VORL_CROSS_MULTIARCH} -isystem ${vorl_sysroot}/usr/include")

set(CMAKE_FIND_ROOT_PATH "${vorl_sysroot}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config, which CMake starts while it configures, is to see the sysroot's packages, and no others.
set(ENV{PKG_CONFIG_LIBDIR}
    "${vorl_sysroot}/usr/lib/${VORL_CROSS_MULTIARCH}/pkgconfig:${vorl_sysroot}/usr/share/pkgconfig")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${vorl_sysroot}")

set(vorl_target_libraries "/usr/${VORL_CROSS_GNU}/lib")
set(vorl_sysroot_libraries
    "${vorl_sysroot}/usr/lib/${VORL_CROSS_MULTIARCH}:${vorl_sysroot}/lib/${VORL_CROSS_MULTIARCH}")
# Where the linker looks for what a library of the sysroot needs in turn.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,-rpath-link,${vorl_sysroot_libraries}")

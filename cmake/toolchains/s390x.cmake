# IBM Z, a big-endian machine of 64 bits, run by an emulator.

set(CMAKE_SYSTEM_PROCESSOR s390x)
set(VORL_CROSS_GNU s390x-linux-gnu)
set(VORL_CROSS_MULTIARCH s390x-linux-gnu)
set(VORL_CROSS_DEBIAN s390x)
include("${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake")

set(CMAKE_CROSSCOMPILING_EMULATOR
    qemu-s390x -L "/usr/${VORL_CROSS_GNU}" -E "LD_LIBRARY_PATH=${vorl_target_libraries}:${vorl_sysroot_libraries}")

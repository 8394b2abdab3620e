# 32-bit ARM with hardware floating point, run by an emulator.

set(CMAKE_SYSTEM_PROCESSOR arm)
set(VORL_CROSS_GNU arm-linux-gnueabihf)
set(VORL_CROSS_MULTIARCH arm-linux-gnueabihf)
set(VORL_CROSS_DEBIAN armhf)
include("${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake")

# All is compiled by one compiler, so that what GCC 7 changed in the calling convention needs no note.
string(APPEND CMAKE_CXX_FLAGS_INIT " -Wno-psabi")

set(CMAKE_CROSSCOMPILING_EMULATOR
    qemu-arm -L "/usr/${VORL_CROSS_GNU}" -E "LD_LIBRARY_PATH=${vorl_target_libraries}:${vorl_sysroot_libraries}")

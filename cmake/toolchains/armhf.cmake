# ARM boards of 32 bits: ARMv7 with a floating-point unit.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(architecture armhf)
set(triplet arm-linux-gnueabihf)
set(emulator qemu-arm-static)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)

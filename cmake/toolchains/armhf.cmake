# 32-bit ARM with hardware floating point.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(tarvo_architecture armhf)
set(tarvo_compiler arm-linux-gnueabihf-g++)
set(tarvo_emulator qemu-arm-static)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)

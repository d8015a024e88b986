# 64-bit ARM.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(tarvo_architecture arm64)
set(tarvo_compiler aarch64-linux-gnu-g++)
set(tarvo_emulator qemu-aarch64-static)
include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)

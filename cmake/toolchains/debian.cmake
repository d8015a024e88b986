# What the toolchains share: Debian's cross compiler over the folder that scripts/sysroot makes.
# -DCMAKE_SYSROOT=FOLDER and -DCMAKE_CXX_COMPILER=PROGRAM take a vendor's.
set(CMAKE_SYSTEM_NAME Linux)
if(NOT CMAKE_CXX_COMPILER)
    set(CMAKE_CXX_COMPILER ${tarvo_compiler})
endif()
if(NOT CMAKE_SYSROOT)
    get_filename_component(CMAKE_SYSROOT
        ${CMAKE_CURRENT_LIST_DIR}/../../build/sysroot/${tarvo_architecture} ABSOLUTE)
endif()
if(NOT EXISTS ${CMAKE_SYSROOT})
    message(FATAL_ERROR "There is no ${CMAKE_SYSROOT}: make it with scripts/sysroot "
        "${tarvo_architecture}, or name another with -DCMAKE_SYSROOT=FOLDER.")
endif()

# Programs are this machine's; all else is the device's.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${tarvo_emulator} -L ${CMAKE_SYSROOT})

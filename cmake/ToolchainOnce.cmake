# CMake reads a toolchain file when a build folder is first configured. One that is given later would
# be passed over without a word, and the result be a program for this machine.
set(given "")
if(CMAKE_TOOLCHAIN_FILE)
    get_filename_component(given "${CMAKE_TOOLCHAIN_FILE}" REALPATH)
endif()
if(DEFINED CACHE{TARVO_TOOLCHAIN} AND NOT given STREQUAL TARVO_TOOLCHAIN)
    # The folder stays what it was.
    set(CMAKE_TOOLCHAIN_FILE "${TARVO_TOOLCHAIN}" CACHE FILEPATH "" FORCE)
    message(FATAL_ERROR "${CMAKE_BINARY_DIR} was configured with another toolchain file, or with "
        "none, and keeps it. Use another build folder (-B FOLDER, or a preset of its own), or "
        "begin this one anew with --fresh.")
endif()
set(TARVO_TOOLCHAIN "${given}" CACHE INTERNAL "The toolchain file that this folder was configured with")

add_library(tarvo_warnings INTERFACE)
target_compile_options(tarvo_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wduplicated-cond -Wlogical-op
    -Werror
    # g++ 12 sees an overlap in every "literal" + std::string (GCC bug 105651).
    -Wno-restrict)

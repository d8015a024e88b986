option(TARVO_WERROR "Treat warnings as errors" OFF)

# g++ 12 sees an overlap in every "literal" + std::string (GCC bug 105651). On ARM g++ notes where it
# passes parameters otherwise than before g++ 7, which concerns nobody here.
set(gcc_only -Wduplicated-cond -Wlogical-op -Wno-restrict -Wno-psabi)

add_library(tarvo_warnings INTERFACE)
target_compile_options(tarvo_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual
    "$<$<CXX_COMPILER_ID:GNU>:${gcc_only}>"
    $<$<BOOL:${TARVO_WERROR}>:-Werror>)

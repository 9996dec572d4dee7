# Warnings everywhere in our own code. They are errors where we control the compiler (the test
# script, CI, the fuzz build); a user building with another compiler or build type still gets a
# program when a new compiler finds something new.
option(VELTO_WERROR "Treat compiler warnings as errors" OFF)
add_compile_options(-Wall -Wextra)
if(VELTO_WERROR)
    add_compile_options(-Werror -Wno-error=deprecated-declarations)
endif()

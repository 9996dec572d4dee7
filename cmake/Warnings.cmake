# Warnings are errors everywhere in our own code.
add_compile_options(-Wall -Wextra -Werror -Wno-error=deprecated-declarations)

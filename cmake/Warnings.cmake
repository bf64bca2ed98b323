# Warnings are errors in our own code; Qt's headers come in as system headers.
function(vde_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
        -Wno-sign-conversion -Werror)
endfunction()

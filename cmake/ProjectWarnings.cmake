# What every target of this project is compiled with, beside its own needs. Users of the libraries see none of it.
add_library(libVideo_warnings INTERFACE)
target_compile_options(libVideo_warnings INTERFACE
    -Wall
    -Wextra
    -Wpedantic
    -Wshadow
    -Wconversion
    -Wnon-virtual-dtor
    # The evaluation order of float arithmetic is part of the interface: no fused operations.
    -ffp-contract=off)
if(LIBVIDEO_WARNINGS_AS_ERRORS)
    target_compile_options(libVideo_warnings INTERFACE -Werror)
endif()

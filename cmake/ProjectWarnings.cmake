# Compiler options for every target of this project. They do not affect users of the libraries.
add_library(libVideo_warnings INTERFACE)
target_compile_options(libVideo_warnings INTERFACE
    -Wall
    -Wextra
    -Wpedantic
    -Wshadow
    -Wconversion
    -Wnon-virtual-dtor
    # Fused operations would change results, which are part of the interface to the bit.
    -ffp-contract=off
    # gcc collects garbage once it uses 128 MB, which most test files need. Starting later saves 5 % of the time.
    $<$<CXX_COMPILER_ID:GNU>:--param=ggc-min-heapsize=524288>)
if(LIBVIDEO_WARNINGS_AS_ERRORS)
    target_compile_options(libVideo_warnings INTERFACE -Werror)
endif()

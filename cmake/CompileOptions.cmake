# What every target of this project is compiled with.

add_library(velmo_options INTERFACE)

# Floating point is evaluated as written: a fused multiply-add rounds once instead of twice and
# changes results from one instruction set to the next.
target_compile_options(velmo_options INTERFACE -ffp-contract=off)

# Locations in error messages and assertions name files from the root of the project.
target_compile_options(velmo_options INTERFACE "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")

target_compile_options(velmo_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align)
if(VELMO_WERROR)
    target_compile_options(velmo_options INTERFACE -Werror)
endif()
# Half of the time to compile goes into the headers of others. (A compiler cache does better without.)
function(velmo_precompile target)
    if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
        target_precompile_headers(${target} PRIVATE
            <opencv2/core.hpp> <functional> <map> <memory> <optional> <string> <vector> ${ARGN})
    endif()
endfunction()

if(NOT VELMO_TARGET_CLONES)
    target_compile_definitions(velmo_options INTERFACE VELMO_NO_CLONES)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # Without this, clang 14 does not vectorise sliding windows over restrict rows.
    target_compile_options(velmo_options INTERFACE "SHELL:-mllvm -enable-load-pre=false")
    # Nor does it vectorise at -O1 or under sanitizers: a hint that it cannot follow is no fault.
    target_compile_options(velmo_options INTERFACE -Wno-pass-failed)
endif()

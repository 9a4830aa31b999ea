# Flags for everything built here. Results must not depend on the compiler: no fused multiply-add, no
# reordering of sums.
add_compile_options(
  -ffp-contract=off -fno-fast-math
  -Wall -Wextra -Wpedantic -Wconversion -Wfloat-conversion -Wdouble-promotion -Wshadow -Werror)
if(ORVANE_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(ORVANE_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
  # The name that fuzzers have agreed on, for limits that keep single inputs short.
  add_compile_definitions(FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION)
endif()
if(WIN32)
  # Nothing of the compiler's own is needed at run time, and the stack is as large as on Linux.
  add_link_options(-static -Wl,--stack,8388608)
  add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()

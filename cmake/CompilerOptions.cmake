# Flags for all targets. Results must not depend on the compiler: no fused multiply-add, no reordered sums.
add_compile_options(
  -ffp-contract=off -fno-fast-math
  -Wall -Wextra -Wpedantic -Wconversion -Wfloat-conversion -Wdouble-promotion -Wshadow -Werror)
if(ORVANE_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(ORVANE_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
  # The fuzzers' common name for limits that keep single inputs fast.
  add_compile_definitions(FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION)
endif()
if(WIN32)
  # No compiler libraries at run time, and a stack as large as on Linux.
  add_link_options(-static -Wl,--stack,8388608)
  add_compile_definitions(UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()

# Flags for everything built here. Results must not depend on the compiler: no fused multiply-add, no
# reordering of sums.
add_compile_options(
  -ffp-contract=off -fno-fast-math
  -Wall -Wextra -Wpedantic -Wconversion -Wfloat-conversion -Wdouble-promotion -Wshadow -Werror)
if(ORVANE_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# What every file of the project is compiled with: the interface target tarn_compile_options.

add_library(tarn_compile_options INTERFACE)
target_compile_options(tarn_compile_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
  -Wcast-qual -Wnon-virtual-dtor -Wformat=2 -Wimplicit-fallthrough
  $<$<BOOL:${TARN_WERROR}>:-Werror>
  # The one fused multiply-add of the project is written as such; no other may appear.
  -ffp-contract=off
  # Builds from two directories are bit-identical.
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)

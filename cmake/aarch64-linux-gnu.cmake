# aarch64 Linux: clang 19 with Debian's cross C library and libstdc++, programs run by qemu-user.
# Both compilers are named because GoogleTest's sources enable C.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_C_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-gnu)
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT -fuse-ld=lld-19)
endforeach()

set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind LIBRARY INCLUDE PACKAGE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()

# The plainest core of the architecture: an instruction above the baseline is refused.
set(CMAKE_CROSSCOMPILING_EMULATOR
    qemu-aarch64 -cpu cortex-a53 -L /usr/aarch64-linux-gnu)

# shellcheck shell=bash
# shellcheck disable=SC2034
# What the commands of ./run need from Debian 12, and how it gets there. Sourced by ./run.

packages_build="g++ cmake make"
packages_tool="libcli11-dev libraw-dev libpng-dev libtiff-dev nlohmann-json3-dev libcairo2-dev pkg-config"
packages_test="googletest libsimde-dev qemu-user binutils python3 python3-numpy python3-pil libraw-bin groff-base"
packages_clang="clang-19 lld-19 llvm-19 libclang-rt-19-dev"
packages_arm="g++-aarch64-linux-gnu qemu-user"
packages_lint="clang-format-14 clang-tidy-14 cppcheck doxygen git shellcheck"
packages_bench="libbenchmark-dev libcairo2-dev nlohmann-json3-dev pkg-config"
packages_peers="libopencv-core-dev libopencv-imgproc-dev libyuv-dev"
packages_avx512="bochs bochsbios isolinux syslinux-common xorriso cpio" # not installed by itself
packages_check="valgrind abigail-tools binutils-aarch64-linux-gnu gcovr"
packages_android="libc++-19-dev android-liblog-dev"

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# Installs those of the named packages that are missing; silent when there are none.
need() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  echo "Installing: ${missing[*]}"
  as_root apt-get update -qq
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

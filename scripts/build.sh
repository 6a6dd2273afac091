#!/usr/bin/env bash
# Builds one or more configurations into build/<name>:
#   native  kernels and their unit tests (Linux, g++)
#   asan    the same under AddressSanitizer and UndefinedBehaviorSanitizer
#   bench   the native benchmarks
#   fuzz    the kernels under libFuzzer, ASan and UBSan (clang), with short
#           fuzz runs in its CTest; unoptimised, because the Eigen-based
#           kernels compile many times faster so and the fuzz inputs are small
#   x64     VNMATH.dll and the Windows tests for 64-bit hosts
#   x86     VNMATH.dll and the Windows tests for 32-bit hosts
set -eu
. "$(dirname "$0")/common.sh"
mkdir -p "$VN_BUILD"
[ $# -eq 0 ] && set -- native x64 x86
for config in "$@"; do
  vn_log "Building $config"
  case $config in
    native) vn_configure native -DVN_BUILD_BENCH=OFF && vn_build native ;;
    asan)   vn_configure asan -DVN_SANITIZE=ON -DVN_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo && vn_build asan ;;
    fuzz)   CC=clang CXX=clang++ vn_configure fuzz -DVN_FUZZ=ON -DVN_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo \
              -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O0 -g" && vn_build fuzz ;;
    bench)  vn_configure bench -DVN_BUILD_BENCH=ON -DVN_BUILD_TESTS=OFF && vn_build bench ;;
    x64|x86) vn_configure "$config" -DCMAKE_TOOLCHAIN_FILE="$VN_ROOT/cmake/mingw-$config.cmake" && vn_build "$config" ;;
    *) echo "unknown configuration: $config"; exit 2 ;;
  esac
done

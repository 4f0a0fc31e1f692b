#!/usr/bin/env bash
# Builds everything and runs every test (unit, in-process and end-to-end).
#   scripts/test.sh              normal build in ./build
#   scripts/test.sh --sanitize   AddressSanitizer + UBSan build in ./build-asan
#   scripts/test.sh --tsan       ThreadSanitizer build in ./build-tsan
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/install-deps.sh"

build="$root/build"
opts=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
if [ "${1:-}" = "--sanitize" ]; then
    build="$root/build-asan"
    opts=(-DCMAKE_BUILD_TYPE=Debug -DORV_SANITIZE=ON -DORV_BUILD_BENCHMARKS=OFF)
    export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=0}
    export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
elif [ "${1:-}" = "--tsan" ]; then
    build="$root/build-tsan"
    opts=(-DCMAKE_BUILD_TYPE=RelWithDebInfo -DORV_TSAN=ON -DORV_BUILD_BENCHMARKS=OFF)
fi
cmake -S "$root" -B "$build" "${opts[@]}"
cmake --build "$build" -j"$(nproc)"
ctest --test-dir "$build" --output-on-failure -j2 --timeout 600

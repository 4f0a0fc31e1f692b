#!/usr/bin/env bash
# Short fuzzing pass: builds the libFuzzer harnesses with clang under
# AddressSanitizer and UndefinedBehaviorSanitizer and runs each for a few
# seconds on its checked-in corpus. Catches a change that breaks a harness's
# properties on inputs near the seeds; the long runs stay manual.
#
# usage: scripts/fuzz-smoke.sh [SECONDS_PER_FUZZER]   (default 20)
# BUILD_DIR (default build-fuzz) keeps the build between runs.
set -euo pipefail

ROOT=$(cd "$(dirname "$0")/.." && pwd)
SECONDS_EACH=${1:-20}
BUILD_DIR=${BUILD_DIR:-$ROOT/build-fuzz}
JOBS=${JOBS:-$(nproc)}

if ! command -v clang++ >/dev/null 2>&1 || ! command -v clang >/dev/null 2>&1; then
    echo "fuzz-smoke: SKIPPED, clang/clang++ not installed (libFuzzer needs clang)"
    exit 0
fi

# name, then the corpus directory relative to the repository.
FUZZERS=(
    "fuzz_cim_request host/server/fuzz/corpus"
    "fuzz_object_path sdk/fuzz/corpus/object_path"
    "fuzz_mof_compiler repository/fuzz/corpus/mof_compiler"
    "fuzz_model_loader sim/orvapi/fuzz/corpus/model_loader"
    "fuzz_lun_instance_id Providers/ORV/fuzz/corpus/lun_instance_id"
)

echo "fuzz-smoke: building in $BUILD_DIR"
mkdir -p "$BUILD_DIR"
CC=clang CXX=clang++ cmake -S "$ROOT" -B "$BUILD_DIR" -DORV_BUILD_FUZZERS=ON -DORV_SANITIZE=ON \
    -DORV_BUILD_BENCHMARKS=OFF -DCMAKE_BUILD_TYPE=Debug >"$BUILD_DIR/fuzz-smoke-configure.log" 2>&1 ||
    { cat "$BUILD_DIR/fuzz-smoke-configure.log"; exit 1; }
targets=()
for f in "${FUZZERS[@]}"; do targets+=("${f%% *}"); done
cmake --build "$BUILD_DIR" -j"$JOBS" --target "${targets[@]}" >"$BUILD_DIR/fuzz-smoke-build.log" 2>&1 ||
    { tail -50 "$BUILD_DIR/fuzz-smoke-build.log"; exit 1; }

WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT
# Leaks and sanitizer reports end a run; both are findings.
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}

run() {
    local name=$1 corpus=$2
    mkdir -p "$WORK/$name.new" "$WORK/$name.artifacts"
    # New units go to the scratch directory; the checked-in corpus is only read.
    if "$BUILD_DIR/bin/$name" -max_total_time="$SECONDS_EACH" -timeout=10 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$WORK/$name.artifacts/" \
        "$WORK/$name.new" "$ROOT/$corpus" >"$WORK/$name.log" 2>&1; then
        local execs rate
        execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$WORK/$name.log")
        rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$WORK/$name.log")
        echo "fuzz-smoke: $name ok, $execs runs, $rate/s"
    else
        echo "fuzz-smoke: $name FAILED"
        grep -E "ERROR|property broken|runtime error|SUMMARY" "$WORK/$name.log" | head -20
        for a in "$WORK/$name.artifacts"/*; do
            [ -e "$a" ] || continue
            mkdir -p "$BUILD_DIR/fuzz-artifacts"
            cp "$a" "$BUILD_DIR/fuzz-artifacts/"
            echo "fuzz-smoke: reproducer kept as $BUILD_DIR/fuzz-artifacts/$(basename "$a")"
        done
        return 1
    fi
}

# Two at a time: the fuzzers are single-threaded.
status=0
pids=()
for f in "${FUZZERS[@]}"; do
    run ${f} &
    pids+=($!)
    if [ ${#pids[@]} -ge 2 ]; then
        wait "${pids[0]}" || status=1
        pids=("${pids[@]:1}")
    fi
done
for p in "${pids[@]}"; do wait "$p" || status=1; done
[ $status -eq 0 ] && echo "fuzz-smoke: all fuzzers passed" || echo "fuzz-smoke: FAILED"
exit $status

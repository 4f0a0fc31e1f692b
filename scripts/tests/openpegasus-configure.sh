#!/usr/bin/env bash
# Configures the OpenPegasus build mode against stand-in server trees laid out
# as an installed SDK and as a source build, and checks what it refuses.
# Configure only: the stand-in libraries are empty files.
#
# Usage: openpegasus-configure.sh CMAKE SOURCE_DIR
set -uo pipefail

cmake=$1
src=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

fail()
{
    echo "FAIL: $*"
    failures=$((failures + 1))
}

# A server tree: headers under $1, libraries in $2.
make_tree()
{
    mkdir -p "$1" "$2"
    cp -r "$src/sdk/include/Pegasus" "$1/"
    for lib in pegcommon pegprovider pegclient; do
        : >"$2/lib$lib.so"
    done
}

# configure NAME EXPECTED_STATUS ARGS...: output in $work/NAME.log, and in
# $work/NAME.text with line breaks folded, for finding wrapped messages.
configure()
{
    local name=$1 expected=$2
    shift 2
    "$cmake" -S "$src" -B "$work/$name" -DORV_BUILD_BENCHMARKS=OFF "$@" >"$work/$name.log" 2>&1
    local status=$?
    tr -s ' \n' '  ' <"$work/$name.log" >"$work/$name.text"
    if [ "$expected" = ok ] && [ $status -ne 0 ]; then
        fail "$name: configure failed"
        cat "$work/$name.log"
        return 1
    fi
    if [ "$expected" = error ] && [ $status -eq 0 ]; then
        fail "$name: configure should have failed"
        return 1
    fi
    return 0
}

# Only the three libraries, compiled against the given tree.
check_targets()
{
    local name=$1 include=$2 libdir=$3 platform=$4
    local targets
    targets=$("$cmake" --build "$work/$name" --target help 2>/dev/null)
    for t in ORV_StatsProvider ORV_SiblingProviders orvapi; do
        grep -q "\b$t\b" <<<"$targets" || fail "$name: no target $t"
    done
    for t in pegasus_sdk_tests cim_om cim_server orv_module_tests orvapi_tests orv_siblings_tests; do
        grep -q "\b$t\b" <<<"$targets" && fail "$name: builds $t as well"
    done
    local flags
    flags=$(cat "$work/$name"/Providers/ORV/CMakeFiles/ORV_StatsProvider.dir/flags.make)
    grep -q -- "-DPEGASUS_PLATFORM_$platform" <<<"$flags" || fail "$name: no -DPEGASUS_PLATFORM_$platform"
    grep -q -- "$include" <<<"$flags" || fail "$name: does not compile against $include"
    grep -q -- "$src/sdk/include" <<<"$flags" && fail "$name: still compiles against the in-tree SDK"
    local link
    link=$(cat "$work/$name"/Providers/ORV/CMakeFiles/ORV_StatsProvider.dir/link.txt)
    for lib in pegcommon pegprovider pegclient; do
        grep -qE "$libdir/lib$lib\.so|-l$lib( |$)" <<<"$link" || fail "$name: does not link lib$lib.so"
    done
    grep -qE "$libdir/libpeg|-L$libdir( |$)" <<<"$link" || fail "$name: does not link from $libdir"
}

# An installed SDK: /usr/include/Pegasus and /usr/lib64/libpeg*.so.
make_tree "$work/usr/include" "$work/usr/lib64"
if configure installed ok -DORV_PEGASUS_INCLUDE_DIR="$work/usr/include" \
    -DORV_PEGASUS_LIBRARY_DIR="$work/usr/lib64"; then
    check_targets installed "$work/usr/include" "$work/usr/lib64" LINUX_X86_64_GNU
fi

# A source build: $PEGASUS_ROOT/src and $PEGASUS_HOME/lib, another platform.
make_tree "$work/pegasus/src" "$work/home/lib"
if configure source ok -DORV_PEGASUS_INCLUDE_DIR="$work/pegasus/src" \
    -DORV_PEGASUS_LIBRARY_DIR="$work/home/lib" -DORV_PEGASUS_PLATFORM=LINUX_IX86_GNU; then
    check_targets source "$work/pegasus/src" "$work/home/lib" LINUX_IX86_GNU
fi

# Refusals, each naming what is wrong.
configure no-headers error -DORV_PEGASUS_INCLUDE_DIR="$work/usr" \
    -DORV_PEGASUS_LIBRARY_DIR="$work/usr/lib64" &&
    { grep -q "holds no Pegasus/Common/Config.h" "$work/no-headers.text" || fail "no-headers: unclear error"; }
rm "$work/home/lib/libpegclient.so"
configure no-client error -DORV_PEGASUS_INCLUDE_DIR="$work/pegasus/src" \
    -DORV_PEGASUS_LIBRARY_DIR="$work/home/lib" &&
    { grep -q "holds no libpegclient.so" "$work/no-client.text" || fail "no-client: unclear error"; }
configure half error -DORV_PEGASUS_INCLUDE_DIR="$work/usr/include" &&
    { grep -q "Give both ORV_PEGASUS_INCLUDE_DIR and ORV_PEGASUS_LIBRARY_DIR" "$work/half.text" ||
        fail "half: unclear error"; }

[ $failures -eq 0 ] && echo "OpenPegasus build mode: all checks passed"
exit $((failures > 0))

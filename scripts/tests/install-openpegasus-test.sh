#!/usr/bin/env bash
# Runs scripts/install-openpegasus.sh against stand-in cimmof, cimprovider and
# cimcli that record their calls and keep a little server state in files:
# install order and options, idempotence, uninstall, and the error texts.
#
# Usage: install-openpegasus-test.sh SOURCE_DIR
set -uo pipefail

src=$1
script="$src/scripts/install-openpegasus.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

fail()
{
    echo "FAIL: $*"
    failures=$((failures + 1))
}

# The stand-in tools. State: $work/state/modules (registered module names),
# $work/state/classes ("namespace class" lines); $work/calls logs every call.
mkdir -p "$work/bin" "$work/state" "$work/build/lib" "$work/providers"
touch "$work/state/modules" "$work/state/classes"
cat >"$work/bin/cimprovider" <<'TOOL'
#!/usr/bin/env bash
echo "cimprovider $*" >>"$FAKE/calls"
if [ -e "$FAKE/down" ]; then
    echo "Cannot connect to local CIM server. Connection failed." >&2
    exit 1
fi
case "$*" in
    "-l" | "-l -s") cat "$FAKE/state/modules" ;;
    "-r -m "*)
        grep -qx "$3" "$FAKE/state/modules" || { echo "Provider module not found" >&2; exit 1; }
        grep -vx "$3" "$FAKE/state/modules" >"$FAKE/m"; mv "$FAKE/m" "$FAKE/state/modules" ;;
    *) echo "unexpected" >&2; exit 1 ;;
esac
TOOL
cat >"$work/bin/cimmof" <<'TOOL'
#!/usr/bin/env bash
echo "cimmof $*" >>"$FAKE/calls"
ns=root/cimv2
while [ $# -gt 1 ]; do
    case $1 in -n) ns=$2; shift 2 ;; *) shift ;; esac
done
file=$1
sed -n '/instance of PG_ProviderModule/,/};/s/^ *Name *= *"\([^"]*\)".*/\1/p' "$file" |
    while read -r m; do grep -qx "$m" "$FAKE/state/modules" || echo "$m" >>"$FAKE/state/modules"; done
sed -nE 's/^[[:space:]]*(\[.*\][[:space:]]*)?class[[:space:]]+([A-Za-z0-9_]+).*/\2/p' "$file" |
    while read -r c; do grep -qx "$ns $c" "$FAKE/state/classes" || echo "$ns $c" >>"$FAKE/state/classes"; done
TOOL
cat >"$work/bin/cimcli" <<'TOOL'
#!/usr/bin/env bash
echo "cimcli $*" >>"$FAKE/calls"
[ "$3" = -n ] || exit 2
case $1 in
    gc) grep -qx "$4 $2" "$FAKE/state/classes" ;;
    dc) grep -vx "$4 $2" "$FAKE/state/classes" >"$FAKE/c"; mv "$FAKE/c" "$FAKE/state/classes" ;;
    *) exit 2 ;;
esac
TOOL
chmod +x "$work/bin/"*
for lib in libORV_StatsProvider.so.1 libORV_SiblingProviders.so liborvapi.so; do
    echo "$lib" >"$work/build/lib/$lib"
done
export FAKE=$work

# run NAME ARGS...: runs the script with the stand-ins first on PATH.
run()
{
    local name=$1
    shift
    : >"$work/calls"
    PATH="$work/bin:/usr/bin:/bin" "$script" --build-dir "$work/build" \
        --provider-dir "$work/providers" "$@" >"$work/$name.out" 2>&1
}

snapshot()
{
    (cd "$work/providers" && ls -l --time-style=+%s.%N . && cat ./*) 2>&1
    cat "$work/state/modules" "$work/state/classes"
}

# Install: class MOF in load order with experimental classes, registration in
# the interop namespace, then the libraries in the provider directory.
run install || fail "install failed: $(cat "$work/install.out")"
expected=$(grep -vE '^(#|$)' "$src/schema/load-order.txt" | while read -r target file; do
    if [ "$target" = registration ]; then
        echo "cimmof -n root/PG_InterOp $src/$file"
    else
        echo "cimmof -aE -n $target $src/$file"
    fi
done)
actual=$(grep '^cimmof' "$work/calls")
[ "$actual" = "$expected" ] || fail "cimmof calls differ:"$'\n'"$actual"$'\n'"expected:"$'\n'"$expected"
for lib in libORV_StatsProvider.so.1 libORV_SiblingProviders.so liborvapi.so; do
    cmp -s "$work/build/lib/$lib" "$work/providers/$lib" || fail "$lib not copied"
done
[ "$(readlink "$work/providers/libORV_StatsProvider.so")" = libORV_StatsProvider.so.1 ] ||
    fail "no libORV_StatsProvider.so link for the server to load"
grep -qx ORV_StatsProviderModule "$work/state/modules" || fail "module not registered"
grep -q "cimprovider -l -s" "$work/install.out" || fail "no hint how to check the result"

# A second run changes nothing and fails nothing.
before=$(snapshot)
run again || fail "second install failed: $(cat "$work/again.out")"
[ "$(snapshot)" = "$before" ] || fail "second install changed the installation"
grep -q "^copied" "$work/again.out" && fail "second install copied libraries again"

# Uninstall: both modules, every class loaded, the libraries.
run uninstall --uninstall || fail "uninstall failed: $(cat "$work/uninstall.out")"
[ -s "$work/state/modules" ] && fail "modules left registered: $(cat "$work/state/modules")"
[ -s "$work/state/classes" ] && fail "classes left: $(head -3 "$work/state/classes")"
[ -z "$(ls -A "$work/providers")" ] || fail "libraries left: $(ls "$work/providers")"
grep -q "cimcli dc ORV_VolumeStatisticalData -n root/orv" "$work/calls" || fail "no class deletion"
# Subclasses go before the classes they derive from.
order=$(grep -n "cimcli dc \(ORV_VolumeStatisticalData\|CIM_BlockStorageStatisticalData\) " "$work/calls" |
    cut -d' ' -f3 | tr '\n' ' ')
[ "$order" = "ORV_VolumeStatisticalData CIM_BlockStorageStatisticalData " ] || fail "deletion order: $order"

run uninstall-again --uninstall || fail "second uninstall failed: $(cat "$work/uninstall-again.out")"
grep -qE "cimprovider -r|cimcli dc" "$work/calls" && fail "second uninstall removed something"

# Errors: no cimmof on PATH, no server.
mv "$work/bin/cimmof" "$work/cimmof.away"
run no-cimmof && fail "ran without cimmof"
grep -q "cimmof not found on PATH" "$work/no-cimmof.out" || fail "unclear text: $(cat "$work/no-cimmof.out")"
mv "$work/cimmof.away" "$work/bin/cimmof"
touch "$work/down"
run down && fail "ran with the server down"
grep -q "the CIM server does not answer" "$work/down.out" || fail "unclear text: $(cat "$work/down.out")"
grep -q "^cimmof" "$work/calls" && fail "loaded MOF with the server down"
rm "$work/down"

# Missing build output is named.
rm "$work/build/lib/liborvapi.so"
run unbuilt && fail "installed without liborvapi.so"
grep -q "liborvapi.so is missing" "$work/unbuilt.out" || fail "unclear text: $(cat "$work/unbuilt.out")"

[ $failures -eq 0 ] && echo "install-openpegasus: all checks passed"
exit $((failures > 0))

#!/bin/bash
# End to end: orv-stat against orv-cimserver on a model whose volumes run a
# steady, known workload (no burst), so the rates are known in advance.
# usage: run_orv_stat_e2e.sh SERVER CIMUSER ORVSTAT TESTDIR WORKDIR
set -u
SERVER=$1 CIMUSER=$2 ORVSTAT=$3 TESTDIR=$4 WORK=$5
rm -rf "$WORK" && mkdir -p "$WORK/state"
FAILS=0
PID=""
fail() { echo "FAIL: $*"; FAILS=$((FAILS + 1)); }
cleanup() { [ -n "$PID" ] && kill -TERM "$PID" 2>/dev/null; wait 2>/dev/null; return 0; }
trap cleanup EXIT

printf 'demo-pw\n' | "$CIMUSER" --users "$WORK/users" add demo --password-stdin >/dev/null || exit 1
port_free() { ! (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }
for _ in 1 2 3 4 5; do
    HTTP=$((20000 + RANDOM % 20000))
    port_free $HTTP || continue
    ORV_SIM_MODEL=$TESTDIR/model.json "$SERVER" --http-port $HTTP --https-port 0 \
        --state-dir "$WORK/state" --users "$WORK/users" >"$WORK/server.out" 2>"$WORK/server.err" &
    PID=$!
    for _ in $(seq 100); do
        grep -q "http://" "$WORK/server.out" 2>/dev/null && break 2
        kill -0 $PID 2>/dev/null || break
        sleep 0.1
    done
    kill $PID 2>/dev/null; PID=""
done
[ -n "$PID" ] || { echo "cannot start the server"; cat "$WORK/server.err"; exit 1; }
URL=http://127.0.0.1:$HTTP

# Two reports in JSON; every figure checked against the model's workload.
# Three-second intervals: the time a loaded machine (or a sanitizer build)
# takes to answer blurs when counters were read, by a share that a longer
# interval keeps well inside the tolerances below.
echo demo-pw | "$ORVSTAT" --url $URL --user demo --password-stdin --type volume --interval 3 \
    --count 2 --json >"$WORK/json.out" 2>"$WORK/json.err"
rc=$?
[ $rc -eq 0 ] || fail "orv-stat --json exit $rc: $(cat "$WORK/json.err")"
grep -q "reading the statistics manifests" "$WORK/json.err" || fail "no progress on stderr"
python3 - "$WORK/json.out" <<'PY' || FAILS=$((FAILS + 1))
import json, sys
reports = [json.loads(l) for l in open(sys.argv[1])]
ok = True
def check(what, got, want, tol):
    global ok
    if got is None or abs(got - want) > tol * max(1.0, abs(want)):
        print(f"FAIL: {what}: {got}, expected {want}"); ok = False
if len(reports) != 2:
    print(f"FAIL: {len(reports)} reports, expected 2"); sys.exit(1)
for rep in reports:
    by = {e["id"]: e for e in rep["elements"]}
    hot = by.get("QZ_KYRO:0123456789ABCDEF0123456789ABCDE1-Stats")
    cold = by.get("QZ_KYRO:0123456789ABCDEF0123456789ABCDE2-Stats")
    idle = by.get("QZ_KYRO:0123456789ABCDEF0123456789ABCDE3-Stats")
    if not (hot and cold and idle):
        print("FAIL: missing volumes:", list(by)); sys.exit(1)
    if rep["elements"][0] is not hot:
        print("FAIL: not sorted by IOPS")
        ok = False
    # Element times have whole seconds, the counters run on microseconds:
    # allow for one I/O of truncation per second and interval jitter.
    iv = hot["interval_s"]
    check("hot total IOPS", hot["total_iops"], 1000, 0.05)
    check("hot read IOPS", hot["read_iops"], 750, 0.05)
    check("hot write IOPS", hot["write_iops"], 250, 0.05)
    check("hot MB/s", hot["total_mbps"], (750 * 8192 + 250 * 4096) / 1048576, 0.05)
    check("hot service ms", hot["service_ms"], (750 * 2 + 250 * 4) / 1000, 0.02)
    check("hot read service ms", hot["read_service_ms"], 2.0, 0.02)
    check("hot cache hit %", hot["cache_hit_pct"], (0.8 * 750 + 250) / 1000 * 100, 0.02)
    check("cold total IOPS", cold["total_iops"], 10, 0.25)
    check("idle total IOPS", idle["total_iops"], 0, 0)
sys.exit(0 if ok else 1)
PY

# The table: header and the top volume only.
echo demo-pw | "$ORVSTAT" --url $URL --user demo --password-stdin --interval 1 --count 1 \
    --top 1 >"$WORK/table.out" 2>/dev/null || fail "table run failed"
grep -q "3 elements, top 1 by iops" "$WORK/table.out" || fail "table header: $(head -1 "$WORK/table.out")"
[ "$(grep -c 'QZ_KYRO' "$WORK/table.out")" -eq 1 ] || fail "--top 1 printed other rows"

# CSV: one header, one row per volume.
echo demo-pw | "$ORVSTAT" --url $URL --user demo --password-stdin --interval 1 --count 1 \
    --csv >"$WORK/csv.out" 2>/dev/null || fail "csv run failed"
[ "$(wc -l <"$WORK/csv.out")" -eq 4 ] || fail "csv: $(cat "$WORK/csv.out")"

# Wrong password: refused at once, with its own exit status.
echo wrong | timeout 20 "$ORVSTAT" --url $URL --user demo --password-stdin --interval 1 \
    >/dev/null 2>"$WORK/auth.err"
[ $? -eq 3 ] || fail "wrong password: exit not 3"
grep -q "401" "$WORK/auth.err" || fail "wrong password: $(cat "$WORK/auth.err")"

# A server that stops answering: a clear message per interval, and a
# non-zero exit once --count intervals have passed.
kill -TERM $PID; wait $PID 2>/dev/null; PID=""
echo demo-pw | timeout 30 "$ORVSTAT" --url $URL --user demo --password-stdin --interval 0.5 \
    --count 2 >/dev/null 2>"$WORK/down.err"
rc=$?
[ $rc -eq 1 ] || fail "server down: exit $rc, expected 1"
[ "$(grep -c "is not answering" "$WORK/down.err")" -eq 2 ] || fail "server down: $(cat "$WORK/down.err")"

[ $FAILS -eq 0 ] && echo "orv-stat e2e: all passed"
exit $((FAILS != 0))

#!/usr/bin/env python3
"""End to end: orv-dashboard against orv-cimserver on a model whose elements
run a steady, known workload (no burst), so every figure is known in advance.

usage: dashboard_e2e.py api|browser SERVER CIMUSER DASHBOARD TESTDIR WORKDIR

api: the JSON API's figures, page credentials, refused CIM credentials and a
server that stops answering. browser: the page in headless Chromium (exit 77,
a skip, where Chromium is missing); keeps WORKDIR/dashboard.png.
"""
import base64
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import urllib.error
import urllib.request

MODE, SERVER, CIMUSER, DASHBOARD, TESTDIR, WORK = sys.argv[1:7]
PASSWORD = "demo-pw"
HOT = "QZ_KYRO:0123456789ABCDEF0123456789ABCDE1-Stats"
COLD = "QZ_KYRO:0123456789ABCDEF0123456789ABCDE2-Stats"
IDLE = "QZ_KYRO:0123456789ABCDEF0123456789ABCDE3-Stats"
FAST = "QZ_KYRO:FAST-Stats"
SLOW = "QZ_KYRO:<i>SLOW</i>-Stats"  # markup in a name must stay text
MB = 1048576
INTERVAL = "3"
# Rates carry the jitter of when the server read its counters within the
# client's request: on a loaded machine (ctest -j, sanitizers) a tenth of a
# second either way in a 3-second interval. Ratios of counters (latency,
# read share, MB per I/O) have no such error and are held tight.
RATE, MEAN_RATE, RATIO = 0.10, 0.05, 0.02

failures = []
processes = []


def fail(text):
    print("FAIL:", text)
    failures.append(text)


def check(what, got, want, tolerance):
    if got is None or abs(got - want) > tolerance * max(1.0, abs(want)):
        fail(f"{what}: {got}, expected {want}")


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def start(args, name, env=None, stdin=None):
    out = open(os.path.join(WORK, name + ".out"), "w+")
    err = open(os.path.join(WORK, name + ".err"), "w+")
    p = subprocess.Popen(args, stdin=subprocess.PIPE, stdout=out, stderr=err,
                         env=dict(os.environ, **(env or {})))
    if stdin is not None:
        p.stdin.write(stdin.encode())
    p.stdin.close()
    processes.append(p)
    return p, out, err


def wait_for_line(p, out, pattern, seconds=15):
    deadline = time.time() + seconds
    while time.time() < deadline:
        out.seek(0)
        m = re.search(pattern, out.read())
        if m:
            return m
        if p.poll() is not None:
            return None
        time.sleep(0.1)
    return None


def get(port, path, auth=None):
    request = urllib.request.Request(f"http://127.0.0.1:{port}{path}")
    if auth:
        request.add_header("Authorization", "Basic " + base64.b64encode(auth.encode()).decode())
    try:
        with urllib.request.urlopen(request, timeout=10) as r:
            return r.status, r.read()
    except urllib.error.HTTPError as e:
        return e.code, e.read()


def get_json(port, path, auth=None):
    status, body = get(port, path, auth)
    if status != 200:
        raise RuntimeError(f"{path}: HTTP {status}: {body[:200]}")
    return json.loads(body)


def start_server():
    subprocess.run([CIMUSER, "--users", os.path.join(WORK, "users"), "add", "demo",
                    "--password-stdin"], input=PASSWORD + "\n", text=True, check=True,
                   stdout=subprocess.DEVNULL)
    os.makedirs(os.path.join(WORK, "state"))
    for _ in range(5):
        port = free_port()
        p, out, _ = start([SERVER, "--http-port", str(port), "--https-port", "0", "--state-dir",
                           os.path.join(WORK, "state"), "--users", os.path.join(WORK, "users")],
                          "server", env={"ORV_SIM_MODEL": os.path.join(TESTDIR, "model.json")})
        if wait_for_line(p, out, r"http://"):
            return p, port
        p.kill()
        p.wait()
    sys.exit("cannot start the server")


def start_dashboard(server_port, name, password=PASSWORD, extra=(), env=None):
    p, out, err = start([DASHBOARD, "--url", f"http://127.0.0.1:{server_port}", "--user", "demo",
                         "--password-stdin", "--listen", "127.0.0.1:0", "--interval", INTERVAL,
                         *extra], name, env=env, stdin=password + "\n")
    m = wait_for_line(p, out, r"serving http://127\.0\.0\.1:(\d+)/")
    if not m:
        err.seek(0)
        sys.exit(f"{name} did not start: {err.read()}")
    return p, int(m.group(1))


def wait_for_samples(port, count, seconds=30, auth=None):
    deadline = time.time() + seconds
    while time.time() < deadline:
        totals = get_json(port, "/api/totals", auth)
        if len(totals["time"]) >= count:
            return totals
        time.sleep(0.2)
    fail(f"fewer than {count} samples after {seconds} s")
    return totals


def ids(rates):
    return [row["id"] for row in rates["rows"]]


def run_api(server, server_port):
    _, port = start_dashboard(server_port, "dashboard")
    totals = wait_for_samples(port, 3)
    # The array's statistics sum its ports' data traffic (not the volumes',
    # which add up to 1010 I/O/s): port A runs 900 I/O/s (75 % reads of
    # 8 KiB at 2 ms, writes of 4 KiB at 4 ms), port B 600 (half reads,
    # 4 KiB, 1 ms).
    a_reads, a_writes, b_reads, b_writes = 900 * 0.75, 900 * 0.25, 600 * 0.5, 600 * 0.5
    reads, writes = a_reads + b_reads, a_writes + b_writes
    mbps = (a_reads * 8192 + (a_writes + b_reads + b_writes) * 4096) / MB
    latency = (a_reads * 2 + a_writes * 4 + (b_reads + b_writes) * 1) / (reads + writes)
    if totals["source"] != "array":
        fail(f"totals from {totals['source']}, not the array's element")
    want_counts = {"array": 1, "node": 2, "port": 2, "volume": 3, "disk": 2, "lun": 0}
    if totals["elements"] != want_counts:
        fail(f"element counts {totals['elements']}, expected {want_counts}")
    if totals["problem"] is not None:
        fail(f"problem while the server answers: {totals['problem']}")
    for i in range(len(totals["time"])):
        check(f"array IOPS #{i}", totals["total_iops"][i], reads + writes, RATE)
        check(f"array read IOPS #{i}", totals["read_iops"][i], reads, RATE)
        check(f"array write IOPS #{i}", totals["write_iops"][i], writes, RATE)
        check(f"array read share #{i}", totals["read_iops"][i] / totals["total_iops"][i],
              reads / (reads + writes), RATIO)
        check(f"array MB/s #{i}", totals["total_mbps"][i], mbps, RATE)
        check(f"array MB per I/O #{i}", totals["total_mbps"][i] / totals["total_iops"][i],
              mbps / (reads + writes), RATIO)
        check(f"array latency #{i}", totals["latency_ms"][i], latency, RATIO)
    # Where one interval came out long, its neighbour came out short.
    check("array IOPS over the window", sum(totals["total_iops"]) / len(totals["time"]),
          reads + writes, MEAN_RATE)
    if not 2 <= totals["time"][-1] - totals["time"][-2] <= 6:
        fail(f"samples {totals['time'][-2:]} are not an interval apart")

    volumes = get_json(port, "/api/rates?type=volume")
    if ids(volumes) != [HOT, COLD, IDLE]:
        fail(f"volumes by IOPS: {ids(volumes)}")
    else:
        hot = volumes["rows"][0]
        check("hot IOPS", hot["total_iops"], 1000, RATE)
        check("hot read share", hot["read_iops"] / hot["total_iops"], 0.75, RATIO)
        check("hot MB per I/O", hot["total_mbps"] / hot["total_iops"],
              (750 * 8192 + 250 * 4096) / MB / 1000, RATIO)
        check("hot latency", hot["service_ms"], (750 * 2 + 250 * 4) / 1000, RATIO)
        check("hot cache hit %", hot["cache_hit_pct"], (0.8 * 750 + 250) / 1000 * 100, RATIO)
        check("idle IOPS", volumes["rows"][2]["total_iops"], 0, 0)
        if volumes["rows"][2]["service_ms"] is not None:
            fail("an idle volume has a latency")
    # By latency: cold (9 ms) before hot (2.5 ms); idle has none to rank.
    if ids(get_json(port, "/api/rates?type=volume&sort=latency")) != [COLD, HOT]:
        fail("volumes by latency: " + str(ids(get_json(port, "/api/rates?type=volume&sort=latency"))))
    if ids(get_json(port, "/api/rates?type=volume&top=1")) != [HOT]:
        fail("top=1 is not the hot volume alone")
    disks = get_json(port, "/api/rates?type=disk&sort=latency")
    if ids(disks) != [SLOW, FAST]:
        fail(f"disks by latency: {ids(disks)}")
    else:
        check("slow disk latency", disks["rows"][0]["service_ms"], 20, RATIO)
    ports = get_json(port, "/api/rates?type=port")
    check("busiest port IOPS", ports["rows"][0]["total_iops"], 900, RATE)
    check("second port IOPS", ports["rows"][1]["total_iops"], 600, RATE)
    for bad in ["/api/rates?type=volumes", "/api/rates?type=volume&top=0", "/api/nothing"]:
        status, _ = get(port, bad)
        if status not in (400, 404):
            fail(f"{bad}: HTTP {status}")

    # The page's own credentials, from the environment.
    _, locked = start_dashboard(server_port, "locked", extra=["--page-user", "viewer"],
                                env={"ORV_DASHBOARD_PAGE_PASSWORD": "p4ss"})
    for auth, want in [(None, 401), ("viewer:nope", 401), ("viewer:p4ss", 200)]:
        status, _ = get(locked, "/api/totals", auth)
        if status != want:
            fail(f"page credentials {auth}: HTTP {status}, expected {want}")

    # Refused CIM credentials end the dashboard with status 3.
    refused, _ = start_dashboard(server_port, "refused", password="wrong")
    try:
        rc = refused.wait(timeout=20)
        if rc != 3:
            fail(f"refused credentials: exit {rc}, expected 3")
    except subprocess.TimeoutExpired:
        fail("refused credentials: still running")

    # A server that stops answering: the page says so and keeps the window.
    server.terminate()
    server.wait(timeout=40)
    deadline = time.time() + 15
    while time.time() < deadline:
        totals = get_json(port, "/api/totals")
        if totals["problem"] and "not answering" in totals["problem"]:
            break
        time.sleep(0.3)
    else:
        fail(f"no problem shown after the server stopped: {totals['problem']}")
    if len(totals["time"]) < 2:
        fail("the window was lost when the server stopped")


def run_browser(server_port):
    chromium = shutil.which("chromium") or shutil.which("chromium-browser")
    if not chromium:
        print("SKIP: no chromium on PATH (Debian package chromium)")
        sys.exit(77)
    _, port = start_dashboard(server_port, "dashboard")
    wait_for_samples(port, 3)
    url = f"http://127.0.0.1:{port}/"
    profile = tempfile.mkdtemp(prefix="orv-dashboard-chromium-")
    base = [chromium, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
            "--no-first-run", "--disable-background-networking", "--disable-component-update",
            "--disable-sync", "--hide-scrollbars", f"--user-data-dir={profile}",
            "--window-size=1280,1700", "--virtual-time-budget=5000"]
    try:
        dom = subprocess.run(base + ["--dump-dom", url], capture_output=True, text=True,
                             timeout=60).stdout
        shot = os.path.join(WORK, "dashboard.png")
        subprocess.run(base + [f"--screenshot={shot}", url], capture_output=True, timeout=60)
    finally:
        shutil.rmtree(profile, ignore_errors=True)
    with open(os.path.join(WORK, "dom.html"), "w") as f:
        f.write(dom)
    # uPlot drew the charts: three plots, each with its canvas.
    if len(re.findall(r'<div class="uplot', dom)) != 3 or dom.count("<canvas") < 3:
        fail("the page has no uPlot charts (see dom.html)")
    table = re.search(r'<table id="volume-table">.*?</table>', dom, re.S)
    first = re.search(r"<tbody><tr><td[^>]*>([^<]*)</td>", table.group(0)) if table else None
    if not first or first.group(1) != HOT:
        fail(f"first volume row: {first.group(1) if first else None}, expected {HOT}")
    iops = re.search(r'id="now-iops">(\d+)<', dom)
    if not iops:
        fail("no array IOPS on the page")
    else:
        check("array IOPS on the page", int(iops.group(1)), 1500, RATE)
    # A name holding markup shows as text, never as an element.
    if ">" + SLOW.replace("<", "&lt;").replace(">", "&gt;") + "<" not in dom:
        fail("the disk named with markup is not shown as text")
    if re.search(r">QZ_KYRO:<i>", dom):
        fail("a name's markup became part of the page")
    try:
        with open(shot, "rb") as f:
            png = f.read()
        if not png.startswith(b"\x89PNG") or len(png) < 10000:
            fail(f"screenshot {shot} looks empty ({len(png)} bytes)")
        else:
            print(f"screenshot: {shot}")
    except OSError as e:
        fail(f"no screenshot: {e}")


def main():
    shutil.rmtree(WORK, ignore_errors=True)
    os.makedirs(WORK)
    try:
        server, server_port = start_server()
        if MODE == "api":
            run_api(server, server_port)
        else:
            run_browser(server_port)
    finally:
        for p in processes:
            if p.poll() is None:
                p.terminate()
        for p in processes:
            try:
                p.wait(timeout=40)
            except subprocess.TimeoutExpired:
                p.kill()
    if failures:
        print(f"{len(failures)} failures; logs in {WORK}")
        sys.exit(1)
    print(f"orv-dashboard {MODE}: all passed")


main()

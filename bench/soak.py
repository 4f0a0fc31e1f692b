#!/usr/bin/env python3
"""Soak driver: orv-cimserver under hours-long mixed load, valid and hostile.

usage: soak.py [--build DIR] [--array FILE] [--minutes N] [--clients N]
               [--sample-seconds S] [--seed N]

Starts the server (HTTP on a free loopback port, HTTPS off) on an array
model, then runs --clients threads for --minutes. Each thread mixes valid
requests of the account `admin` from 127.0.0.1 (enumerations, GetInstance,
associators, references, GetStatisticsCollection, pull operations) with
hostile ones from 127.0.0.2: broken XML, the request shapes that once cost
the server without bound, bad or missing credentials, slow and partial
sends, oversized bodies (the server runs with --request-timeout 15, so the
bodies that never end do not keep their client for two minutes). Hostile requests that need a login use their own
account (`monitor`), as an attacker with an account would.

At the end it prints the requests sent per kind, every valid request that
failed (the run fails when there is one), how the hostile ones were
answered, and the server's RSS sampled every --sample-seconds: first, last,
max and the least-squares slope over the run and over its second half.

Not a test and not in CI: it takes as long as it is told to. Loopback only.
"""
import argparse
import base64
import collections
import os
import random
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import urllib.parse
import xml.etree.ElementTree as ET

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
VALID_FROM, HOSTILE_FROM = "127.0.0.1", "127.0.0.2"
ACCOUNTS = {"admin": "admin-pw", "monitor": "monitor-pw", "guest": "guest-pw"}
# The server's --request-timeout here (default 120 s): hostile requests that
# never finish their body end at it, and a shorter one keeps the clients
# that sent them in the mix.
REQUEST_TIMEOUT = 15

NS_HEADER = "root%2Forv"
# The request shapes are the end-to-end driver's.
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import e2e_bench  # noqa: E402
from e2e_bench import HEAD, NS, TAIL, class_param, intrinsic, value_param  # noqa: E402


def service_path(system):
    return ('<INSTANCENAME CLASSNAME="ORV_BlockStatisticsService">'
            '<KEYBINDING NAME="CreationClassName"><KEYVALUE>ORV_BlockStatisticsService</KEYVALUE></KEYBINDING>'
            '<KEYBINDING NAME="Name"><KEYVALUE>%s-BlockStatisticsService</KEYVALUE></KEYBINDING>'
            '<KEYBINDING NAME="SystemCreationClassName"><KEYVALUE>ORV_StorageSystem</KEYVALUE></KEYBINDING>'
            '<KEYBINDING NAME="SystemName"><KEYVALUE>%s</KEYVALUE></KEYBINDING>'
            '</INSTANCENAME>') % (system, system)


def service_call(system, params=""):
    return (HEAD + '<METHODCALL NAME="GetStatisticsCollection"><LOCALINSTANCEPATH>%s%s'
            '</LOCALINSTANCEPATH>%s</METHODCALL>' % (NS, service_path(system), params) + TAIL)


def service_object(system):
    path = ('root/orv:ORV_BlockStatisticsService.CreationClassName="ORV_BlockStatisticsService",'
            'Name="%s-BlockStatisticsService",SystemCreationClassName="ORV_StorageSystem",'
            'SystemName="%s"' % (system, system))
    return urllib.parse.quote(path, safe="")


def basic(user, password):
    return "Basic " + base64.b64encode(("%s:%s" % (user, password)).encode()).decode()


def head(method, obj, length, user="admin", extra=(), content_type='application/xml; charset="utf-8"'):
    lines = ["POST /cimom HTTP/1.1", "Host: 127.0.0.1"]
    if content_type is not None:
        lines.append("Content-Type: " + content_type)
    lines += ["CIMOperation: MethodCall", "CIMMethod: " + method, "CIMObject: " + obj]
    if user:
        lines.append("Authorization: " + basic(user, ACCOUNTS[user]))
    if length is not None:
        lines.append("Content-Length: %d" % length)
    lines += list(extra)
    return ("\r\n".join(lines) + "\r\n\r\n").encode("latin-1")


class Answer:
    def __init__(self, status, body):
        self.status, self.body = status, body


def exchange(port, source, data, timeout, pace=None):
    """Sends data (in pieces with pauses when pace = (bytes, seconds)), reads
    one HTTP/1.1 answer. Returns an Answer, or raises OSError/TimeoutError."""
    with socket.create_connection(("127.0.0.1", port), timeout=timeout,
                                  source_address=(source, 0)) as s:
        s.settimeout(timeout)
        try:
            if pace:
                step, pause = pace
                for i in range(0, len(data), step):
                    s.sendall(data[i:i + step])
                    time.sleep(pause)
            else:
                s.sendall(data)
        except (BrokenPipeError, ConnectionResetError):
            pass  # the server may answer and close before taking everything
        return read_answer(s)


def read_answer(s):
    buf = b""
    while b"\r\n\r\n" not in buf:
        chunk = s.recv(65536)
        if not chunk:
            if not buf:
                raise ConnectionError("closed without an answer")
            raise ConnectionError("closed inside the answer head")
        buf += chunk
    head_text, _, rest = buf.partition(b"\r\n\r\n")
    lines = head_text.decode("latin-1").split("\r\n")
    status = int(lines[0].split()[1])
    headers = {}
    for line in lines[1:]:
        name, _, value = line.partition(":")
        headers[name.strip().lower()] = value.strip()
    if "content-length" in headers:
        n = int(headers["content-length"])
        while len(rest) < n:
            chunk = s.recv(max(65536, n - len(rest)))
            if not chunk:
                raise ConnectionError("closed inside the body")
            rest += chunk
        return Answer(status, rest[:n])
    if headers.get("transfer-encoding", "").lower() == "chunked":
        body = b""
        while True:
            while b"\r\n" not in rest:
                chunk = s.recv(65536)
                if not chunk:
                    raise ConnectionError("closed inside a chunk size")
                rest += chunk
            size_line, _, rest = rest.partition(b"\r\n")
            size = int(size_line.split(b";")[0], 16)
            while len(rest) < size + 2:
                chunk = s.recv(65536)
                if not chunk:
                    if size == 0:
                        return Answer(status, body)
                    raise ConnectionError("closed inside a chunk")
                rest += chunk
            if size == 0:
                return Answer(status, body)
            body += rest[:size]
            rest = rest[size + 2:]
    # Neither: the body runs to the close.
    while True:
        chunk = s.recv(65536)
        if not chunk:
            return Answer(status, rest)
        rest += chunk


class Server(e2e_bench.Server):
    def __init__(self, build, array, work):
        super().__init__(build, array, work, accounts=ACCOUNTS,
                         extra_args=["--request-timeout", str(REQUEST_TIMEOUT)])

    def rss(self):
        return self.status("VmRSS")

    def stop(self):
        self.proc.send_signal(signal.SIGTERM)
        try:
            return self.proc.wait(timeout=60)
        except subprocess.TimeoutExpired:
            self.proc.kill()
            return "killed"


class Stats:
    def __init__(self):
        self.lock = threading.Lock()
        self.valid = collections.Counter()
        self.hostile = collections.Counter()
        self.outcomes = collections.defaultdict(collections.Counter)
        self.failures = []

    def ok(self, kind):
        with self.lock:
            self.valid[kind] += 1

    def fail(self, kind, why):
        with self.lock:
            self.valid[kind] += 1
            self.failures.append((time.strftime("%H:%M:%S"), kind, why))

    def hostile_done(self, kind, outcome):
        with self.lock:
            self.hostile[kind] += 1
            self.outcomes[kind][outcome] += 1


class ValidCalls:
    """Valid requests of `admin`: each returns the XML answer or raises."""

    def __init__(self, port, system, names):
        self.port, self.system, self.names = port, system, names

    def post(self, body, method, obj=NS_HEADER):
        data = body.encode()
        answer = exchange(self.port, VALID_FROM, head(method, obj, len(data)) + data, timeout=300)
        if answer.status != 200:
            raise RuntimeError("HTTP %d %r" % (answer.status, answer.body[:200]))
        root = ET.fromstring(answer.body)  # the whole answer well-formed
        error = root.find(".//ERROR")
        if error is not None:
            raise RuntimeError("CIM error %s %s" % (error.get("CODE"), error.get("DESCRIPTION")))
        return answer.body

    def run(self, rnd):
        kind = rnd.choice(["EnumerateInstances", "EnumerateInstanceNames", "GetInstance",
                           "Associators", "ReferenceNames", "GetStatisticsCollection", "Pull",
                           "EnumerateClassNames"])
        if kind == "EnumerateInstances":
            cls = rnd.choice(["ORV_VolumeStatisticalData", "ORV_LUNStatisticalData",
                              "ORV_DiskStatisticalData", "ORV_BlockStatisticsManifest"])
            self.post(intrinsic(kind, class_param(cls)), kind)
        elif kind == "EnumerateInstanceNames":
            cls = rnd.choice(["ORV_PortStatisticalData", "ORV_StatisticsCollection",
                              "ORV_MemberOfStatisticsCollection"])
            self.post(intrinsic(kind, class_param(cls)), kind)
        elif kind == "GetInstance":
            self.post(intrinsic(kind, '<IPARAMVALUE NAME="InstanceName">%s</IPARAMVALUE>'
                                % rnd.choice(self.names["stats"])), kind)
        elif kind == "Associators":
            self.post(intrinsic(kind, '<IPARAMVALUE NAME="ObjectName">%s</IPARAMVALUE>'
                                % self.names["collection"] +
                                '<IPARAMVALUE NAME="AssocClass"><CLASSNAME NAME="ORV_MemberOfStatisticsCollection"/></IPARAMVALUE>'),
                      kind)
        elif kind == "ReferenceNames":
            self.post(intrinsic(kind, '<IPARAMVALUE NAME="ObjectName">%s</IPARAMVALUE>'
                                % rnd.choice(self.names["stats"])), kind)
        elif kind == "GetStatisticsCollection":
            self.post(service_call(self.system), kind, service_object(self.system))
        elif kind == "Pull":
            page = rnd.choice([1, 50, 500])
            data = self.post(intrinsic("OpenEnumerateInstances",
                                       class_param("ORV_LUNStatisticalData") +
                                       value_param("MaxObjectCount", page)), "OpenEnumerateInstances")
            pulls = 0
            while b'NAME="EndOfSequence"><VALUE>FALSE' in data:
                ctx = re.search(rb'NAME="EnumerationContext"><VALUE>([^<]*)<', data).group(1).decode()
                if pulls == 3 and rnd.random() < 0.3:
                    self.post(intrinsic("CloseEnumeration", value_param("EnumerationContext", ctx)),
                              "CloseEnumeration")
                    break
                data = self.post(intrinsic("PullInstancesWithPath",
                                           value_param("EnumerationContext", ctx) +
                                           value_param("MaxObjectCount", max(page, 100))),
                                 "PullInstancesWithPath")
                pulls += 1
        else:
            self.post(HEAD + '<IMETHODCALL NAME="EnumerateClassNames">%s%s</IMETHODCALL>'
                      % (NS, value_param("DeepInheritance", "TRUE")) + TAIL, kind)
        return kind


def nested_reference(depth):
    inner = '<KEYVALUE>x</KEYVALUE>'
    for _ in range(depth):
        inner = ('<VALUE.REFERENCE><INSTANCENAME CLASSNAME="C"><KEYBINDING NAME="k">%s'
                 '</KEYBINDING></INSTANCENAME></VALUE.REFERENCE>' % inner)
    return intrinsic("GetInstance", '<IPARAMVALUE NAME="InstanceName"><INSTANCENAME CLASSNAME="C">'
                     '<KEYBINDING NAME="k">%s</KEYBINDING></INSTANCENAME></IPARAMVALUE>' % inner)


class HostileCalls:
    """Requests that must be refused (or served) quickly and at bounded cost;
    each returns a short outcome: the status, or what the connection did."""

    def __init__(self, port, system, names):
        self.port, self.system, self.names = port, system, names
        svc = service_object(system)
        big_key = "k" * (1 << 20)
        # Past the array cap, under the element limit: a CIM error.
        types = "".join("<VALUE>%d</VALUE>" % (2 + i % 9) for i in range(20000))
        self.shapes = {
            "broken-xml": (head("EnumerateInstances", NS_HEADER, None, "monitor"),
                           intrinsic("EnumerateInstances", class_param("X"))[:-40]),
            "not-xml": (head("EnumerateInstances", NS_HEADER, None, "monitor"), "\x00\xff<<<&&&"),
            "nested-references": (head("GetInstance", NS_HEADER, None, "monitor"), nested_reference(60)),
            "many-attributes": (head("EnumerateInstances", NS_HEADER, None, "monitor"),
                                intrinsic("EnumerateInstances",
                                          '<IPARAMVALUE NAME="ClassName"><CLASSNAME NAME="X" %s/></IPARAMVALUE>'
                                          % " ".join('a%d="v"' % i for i in range(20000)))),
            "repeated-element-types": (head("GetStatisticsCollection", svc, None, "monitor"),
                                       service_call(system, '<PARAMVALUE NAME="ElementTypes"><VALUE.ARRAY>%s'
                                                    '</VALUE.ARRAY></PARAMVALUE>' % types)),
            "megabyte-key": (head("GetInstance", NS_HEADER, None, "monitor"),
                             intrinsic("GetInstance", '<IPARAMVALUE NAME="InstanceName"><INSTANCENAME '
                                       'CLASSNAME="ORV_LUNStatisticalData"><KEYBINDING NAME="InstanceID">'
                                       '<KEYVALUE>QZ_KYRO:VLUN_1_%s:1:2:3_h</KEYVALUE></KEYBINDING>'
                                       '</INSTANCENAME></IPARAMVALUE>' % big_key)),
            "repeated-paramvalue": (head("GetStatisticsCollection", svc, None, "monitor"),
                                    service_call(system, '<PARAMVALUE NAME="ElementTypes"><VALUE.ARRAY>'
                                                 '<VALUE>2</VALUE></VALUE.ARRAY></PARAMVALUE>' * 2)),
        }

    def send(self, data, timeout=60, pace=None):
        try:
            return str(exchange(self.port, HOSTILE_FROM, data, timeout, pace).status)
        except socket.timeout:
            return "timeout"
        except ConnectionError as e:
            return "closed" if "without an answer" in str(e) else "cut: " + str(e)
        except OSError as e:
            return "error: " + e.__class__.__name__

    def run(self, rnd):
        kind = rnd.choice(list(self.shapes) + [
            "bad-password", "unknown-user", "lowercase-basic-junk", "no-credentials",
            "conflicting-length", "length-and-chunked", "nul-in-header", "xmlfoo-type",
            "no-content-type", "protocol-1.zzz", "cimobject-mismatch", "huge-chunk-size",
            "gzip-chunked", "oversized-length", "oversized-chunked", "slow-head", "partial-body",
            "idle-connection"])
        body_of = lambda k: self.shapes[k][1].encode("latin-1", "replace")
        if kind in self.shapes:
            h, _ = self.shapes[kind]
            body = body_of(kind)
            return kind, self.send(h.replace(b"\r\n\r\n", b"\r\nContent-Length: %d\r\n\r\n" % len(body)) + body)
        ok_body = intrinsic("EnumerateInstanceNames", class_param("ORV_PortStatisticalData")).encode()
        n = len(ok_body)
        if kind == "bad-password":
            h = head("EnumerateInstanceNames", NS_HEADER, n, None,
                     ["Authorization: " + basic("guest", "wrong-%d" % rnd.randrange(1 << 30))])
        elif kind == "unknown-user":
            h = head("EnumerateInstanceNames", NS_HEADER, n, None,
                     ["Authorization: " + basic("mallory%d" % rnd.randrange(100), "x")])
        elif kind == "lowercase-basic-junk":
            h = head("EnumerateInstanceNames", NS_HEADER, n, None,
                     ["Authorization: basic " + base64.b64encode(b"monitor:monitor-pw").decode() + " junk"])
        elif kind == "no-credentials":
            h = head("EnumerateInstanceNames", NS_HEADER, n, None)
        elif kind == "conflicting-length":
            h = head("EnumerateInstanceNames", NS_HEADER, n, "monitor", ["Content-Length: %d" % (n + 1)])
        elif kind == "length-and-chunked":
            h = head("EnumerateInstanceNames", NS_HEADER, n, "monitor", ["Transfer-Encoding: chunked"])
        elif kind == "nul-in-header":
            h = head("EnumerateInstanceNames", NS_HEADER, n, "monitor", ["X-Note: a\x00b"])
        elif kind == "xmlfoo-type":
            h = head("EnumerateInstanceNames", NS_HEADER, n, "monitor", content_type="application/xmlfoo")
        elif kind == "no-content-type":
            h = head("EnumerateInstanceNames", NS_HEADER, n, "monitor", content_type=None)
        elif kind == "protocol-1.zzz":
            h = head("EnumerateInstanceNames", NS_HEADER, n, "monitor", ["CIMProtocolVersion: 1.zzz"])
        elif kind == "cimobject-mismatch":
            body = service_call(self.system).encode()
            return kind, self.send(head("GetStatisticsCollection", "root%2Forv%3AOther.k%3D1", len(body),
                                        "monitor") + body)
        elif kind == "huge-chunk-size":
            # Ends at the server's request deadline at the latest.
            return kind, self.send(head("EnumerateInstanceNames", NS_HEADER, None, "monitor",
                                        ["Transfer-Encoding: chunked"]) + b"ffffffffffffffff\r\nabc",
                                   timeout=REQUEST_TIMEOUT + 10)
        elif kind == "gzip-chunked":
            return kind, self.send(head("EnumerateInstanceNames", NS_HEADER, None, "monitor",
                                        ["Transfer-Encoding: gzip, chunked"]) + b"5\r\nabcde\r\n",
                                   timeout=30)
        elif kind == "oversized-length":
            return kind, self.send(head("EnumerateInstanceNames", NS_HEADER, 10 ** 10, "monitor") + b"<",
                                   timeout=30)
        elif kind == "oversized-chunked":
            chunk = b"%x\r\n" % (1 << 20) + b"x" * (1 << 20) + b"\r\n"
            return kind, self.send(head("EnumerateInstanceNames", NS_HEADER, None, "monitor",
                                        ["Transfer-Encoding: chunked"]) + chunk * 9 + b"0\r\n\r\n",
                                   timeout=60)
        elif kind == "slow-head":
            # A slow-loris: the head one byte at a time, for a few seconds.
            data = head("EnumerateInstanceNames", NS_HEADER, n, "monitor") + ok_body
            try:
                with socket.create_connection(("127.0.0.1", self.port), timeout=10,
                                              source_address=(HOSTILE_FROM, 0)) as s:
                    for b in data[:rnd.randrange(5, 40)]:
                        s.sendall(bytes([b]))
                        time.sleep(0.2)
                return kind, "abandoned"
            except OSError as e:
                return kind, "error: " + e.__class__.__name__
        elif kind == "partial-body":
            data = head("EnumerateInstanceNames", NS_HEADER, n + 5000, "monitor") + ok_body
            try:
                with socket.create_connection(("127.0.0.1", self.port), timeout=10,
                                              source_address=(HOSTILE_FROM, 0)) as s:
                    s.sendall(data)
                    time.sleep(rnd.uniform(0.5, 3))
                return kind, "abandoned"
            except OSError as e:
                return kind, "error: " + e.__class__.__name__
        else:  # idle-connection: connect, say nothing, go away
            try:
                with socket.create_connection(("127.0.0.1", self.port), timeout=10,
                                              source_address=(HOSTILE_FROM, 0)):
                    time.sleep(rnd.uniform(1, 5))
                return kind, "abandoned"
            except OSError as e:
                return kind, "error: " + e.__class__.__name__
        return kind, self.send(h + ok_body)


def discover(port, system):
    calls = ValidCalls(port, system, {})
    names = {}
    data = calls.post(intrinsic("EnumerateInstanceNames", class_param("ORV_StatisticsCollection")),
                      "EnumerateInstanceNames")
    names["collection"] = re.search(rb"<INSTANCENAME.*?</INSTANCENAME>", data, re.S).group(0).decode()
    stats = []
    for cls in ("ORV_VolumeStatisticalData", "ORV_LUNStatisticalData", "ORV_PortStatisticalData"):
        data = calls.post(intrinsic("EnumerateInstanceNames", class_param(cls)), "EnumerateInstanceNames")
        found = re.findall(rb"<INSTANCENAME.*?</INSTANCENAME>", data, re.S)
        stats += [f.decode() for f in found[:20]]
    if not stats:
        sys.exit("the model has no statistics elements to ask for")
    names["stats"] = stats
    return names


def slope(samples):
    """Least-squares slope of (t, value) in value units per minute."""
    if len(samples) < 2:
        return 0.0
    n = len(samples)
    mt = sum(t for t, _ in samples) / n
    mv = sum(v for _, v in samples) / n
    den = sum((t - mt) ** 2 for t, _ in samples)
    return 60 * sum((t - mt) * (v - mv) for t, v in samples) / den if den else 0.0


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("--build", default=os.path.join(ROOT, "build"))
    ap.add_argument("--array", default=os.path.join(ROOT, "sim/orvapi/models/default.json"))
    ap.add_argument("--minutes", type=float, default=10)
    ap.add_argument("--clients", type=int, default=16)
    ap.add_argument("--hostile-share", type=float, default=0.3,
                    help="share of each client's requests that are hostile (default 0.3)")
    ap.add_argument("--sample-seconds", type=float, default=5)
    ap.add_argument("--seed", type=int, default=1)
    args = ap.parse_args()
    with open(args.array) as f:
        system = re.search(r'"name"\s*:\s*"([^"]+)"', f.read()).group(1)

    with tempfile.TemporaryDirectory() as work:
        server = Server(args.build, args.array, work)
        stats = Stats()
        samples = []
        try:
            names = discover(server.port, system)
            valid = ValidCalls(server.port, system, names)
            hostile = HostileCalls(server.port, system, names)
            deadline = time.monotonic() + args.minutes * 60
            start = time.monotonic()
            print("server pid %d on port %d, model %s, %d clients for %.1f min"
                  % (server.proc.pid, server.port, os.path.basename(args.array), args.clients,
                     args.minutes), flush=True)

            def client(index):
                rnd = random.Random(args.seed * 1000 + index)
                while time.monotonic() < deadline:
                    if rnd.random() < args.hostile_share:
                        kind, outcome = hostile.run(rnd)
                        stats.hostile_done(kind, outcome)
                        continue
                    kind = "?"
                    try:
                        kind = valid.run(rnd)
                        stats.ok(kind)
                    except Exception as e:  # every failure of a valid request counts
                        stats.fail(kind, "%s: %s" % (e.__class__.__name__, str(e)[:300]))

            threads = [threading.Thread(target=client, args=(i,), daemon=True)
                       for i in range(args.clients)]
            for t in threads:
                t.start()
            next_report = start + 60
            while any(t.is_alive() for t in threads):
                if server.proc.poll() is not None:
                    sys.exit("the server ended during the run (status %s); see %s"
                             % (server.proc.returncode, server.err_path))
                samples.append((time.monotonic() - start, server.rss()))
                if time.monotonic() >= next_report:
                    next_report += 60
                    with stats.lock:
                        print("  %4.0f s: %d valid (%d failed), %d hostile, RSS %.1f MB"
                              % (time.monotonic() - start, sum(stats.valid.values()),
                                 len(stats.failures), sum(stats.hostile.values()),
                                 samples[-1][1] / 1e6), flush=True)
                time.sleep(args.sample_seconds)
            samples.append((time.monotonic() - start, server.rss()))
            elapsed = time.monotonic() - start
        finally:
            status = server.stop()

        print("\nran %.1f min; server exit status after SIGTERM: %s" % (elapsed / 60, status))
        print("valid requests: %d, failed: %d" % (sum(stats.valid.values()), len(stats.failures)))
        for kind, count in sorted(stats.valid.items()):
            print("  %-26s %7d" % (kind, count))
        for when, kind, why in stats.failures[:20]:
            print("  FAILED %s %s: %s" % (when, kind, why))
        print("hostile requests: %d" % sum(stats.hostile.values()))
        for kind, count in sorted(stats.hostile.items()):
            outcomes = ", ".join("%s x%d" % o for o in stats.outcomes[kind].most_common())
            print("  %-26s %7d  %s" % (kind, count, outcomes))
        mb = [(t, v / 1e6) for t, v in samples]
        values = [v for _, v in mb]
        half = [s for s in mb if s[0] >= elapsed / 2]
        print("server RSS (MB), %d samples: first %.1f, last %.1f, max %.1f; slope %+.2f MB/min "
              "over the run, %+.2f MB/min over its second half"
              % (len(values), values[0], values[-1], max(values), slope(mb), slope(half)))
        return 1 if stats.failures else 0


if __name__ == "__main__":
    sys.exit(main())

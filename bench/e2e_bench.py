#!/usr/bin/env python3
"""End-to-end load driver: orv-cimserver on an array model, driven over HTTP.

usage: e2e_bench.py [--build DIR] [--array FILE] [--repeat N] [--only NAME ...]

Starts the server (HTTPS off) on the model (default: the full-size
sim/orvapi/models/large.json), then times each request below as a client
sees it (curl for the two large enumerations, Python's http.client for the
rest): wall time to the last byte, bytes received, the server's peak RSS
during the request (the kernel's high-water mark, reset before each run) and
its RSS once the answer is complete, and the CPU time the server spent on it,
work after the answer's end included (which, unlike the wall time, does not
grow much when the machine is busy with other work). Not a test: nothing here passes or fails.
"""
import argparse
import base64
import http.client
import os
import re
import signal
import socket
import subprocess
import sys
import tempfile
import time
import urllib.parse

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
USER, PASSWORD = "admin", "admin-pw"

HEAD = ('<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0">'
        '<MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ>')
TAIL = '</SIMPLEREQ></MESSAGE></CIM>'
NS = '<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="orv"/></LOCALNAMESPACEPATH>'


def intrinsic(name, params):
    return HEAD + '<IMETHODCALL NAME="%s">%s%s</IMETHODCALL>' % (name, NS, params) + TAIL


def class_param(cls):
    return '<IPARAMVALUE NAME="ClassName"><CLASSNAME NAME="%s"/></IPARAMVALUE>' % cls


def value_param(name, value):
    return '<IPARAMVALUE NAME="%s"><VALUE>%s</VALUE></IPARAMVALUE>' % (name, value)


def service_call(system):
    path = ('<LOCALINSTANCEPATH>%s<INSTANCENAME CLASSNAME="ORV_BlockStatisticsService">'
            '<KEYBINDING NAME="CreationClassName"><KEYVALUE>ORV_BlockStatisticsService</KEYVALUE></KEYBINDING>'
            '<KEYBINDING NAME="Name"><KEYVALUE>%s-BlockStatisticsService</KEYVALUE></KEYBINDING>'
            '<KEYBINDING NAME="SystemCreationClassName"><KEYVALUE>ORV_StorageSystem</KEYVALUE></KEYBINDING>'
            '<KEYBINDING NAME="SystemName"><KEYVALUE>%s</KEYVALUE></KEYBINDING>'
            '</INSTANCENAME></LOCALINSTANCEPATH>') % (NS, system, system)
    return HEAD + '<METHODCALL NAME="GetStatisticsCollection">%s</METHODCALL>' % path + TAIL


def service_object(system):
    """The CIMObject header of a method call: the target's path, URL-encoded."""
    path = ('root/orv:ORV_BlockStatisticsService.CreationClassName="ORV_BlockStatisticsService",'
            'Name="%s-BlockStatisticsService",SystemCreationClassName="ORV_StorageSystem",'
            'SystemName="%s"' % (system, system))
    return urllib.parse.quote(path, safe="")


class Server:
    """orv-cimserver on `array`, HTTP only, with the given accounts (name to
    password; by default the driver's one) and any further arguments."""

    def __init__(self, build, array, work, accounts=None, extra_args=()):
        self.work = work
        users = os.path.join(work, "users")
        for user, password in (accounts or {USER: PASSWORD}).items():
            subprocess.run([os.path.join(build, "bin", "orv-cimuser"), "--users", users, "add", user,
                            "--password-stdin"], input=(password + "\n").encode(), check=True,
                           stdout=subprocess.DEVNULL)
        with socket.socket() as s:
            s.bind(("127.0.0.1", 0))
            self.port = s.getsockname()[1]
        self.err_path = os.path.join(work, "server.err")
        self.proc = subprocess.Popen(
            [os.path.join(build, "bin", "orv-cimserver"), "--http-port", str(self.port),
             "--https-port", "0", "--array", array, "--users", users,
             "--state-dir", os.path.join(work, "state"), "--access-log", os.path.join(work, "access.log")]
            + list(extra_args),
            stdout=subprocess.DEVNULL, stderr=open(self.err_path, "w"))
        for _ in range(300):
            try:
                socket.create_connection(("127.0.0.1", self.port), timeout=0.2).close()
                return
            except OSError:
                if self.proc.poll() is not None:
                    sys.exit("the server did not start; see " + self.err_path)
                time.sleep(0.1)
        sys.exit("the server did not answer")

    def status(self, field):
        with open("/proc/%d/status" % self.proc.pid) as f:
            m = re.search(r"^%s:\s+(\d+) kB" % field, f.read(), re.M)
        return int(m.group(1)) * 1024

    def cpu_seconds(self):
        """User and system time the server has used so far (all threads)."""
        with open("/proc/%d/stat" % self.proc.pid) as f:
            fields = f.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def reset_peak(self):
        with open("/proc/%d/clear_refs" % self.proc.pid, "w") as f:
            f.write("5")

    def post_curl(self, body, method, obj):
        """The request sent by curl, a C client, counting the answer's bytes:
        Python's own HTTP client takes longer to read a quarter of a gigabyte
        than the server takes to write it."""
        request = os.path.join(self.work, "request.xml")
        with open(request, "w") as f:
            f.write(body)
        result = subprocess.run(
            ["curl", "-sS", "-o", "/dev/null", "-w", "%{http_code} %{size_download}",
             "--data-binary", "@" + request,
             "-H", 'Content-Type: application/xml; charset="utf-8"', "-H", "CIMOperation: MethodCall",
             "-H", "CIMMethod: " + method, "-H", "CIMObject: " + obj, "-H", "TE: trailers",
             "-u", "%s:%s" % (USER, PASSWORD), "http://127.0.0.1:%d/cimom" % self.port],
            capture_output=True, text=True, check=True)
        status, size = result.stdout.split()
        if status != "200":
            raise RuntimeError("%s failed: HTTP %s" % (method, status))
        return int(size)

    def post(self, body, method, obj, extra=None):
        headers = {"Content-Type": 'application/xml; charset="utf-8"', "CIMOperation": "MethodCall",
                   "CIMMethod": method, "CIMObject": obj,
                   "Authorization": "Basic " + base64.b64encode(("%s:%s" % (USER, PASSWORD)).encode()).decode()}
        headers.update(extra or {})
        conn = http.client.HTTPConnection("127.0.0.1", self.port, timeout=600)
        conn.request("POST", "/cimom", body.encode(), headers)
        resp = conn.getresponse()
        data = resp.read()
        conn.close()
        if resp.status != 200 or b"<ERROR" in data[:4096]:
            raise RuntimeError("%s failed: HTTP %d %s" % (method, resp.status, data[:300]))
        return data

    def stop(self):
        self.proc.send_signal(signal.SIGTERM)
        self.proc.wait(timeout=60)


def pull_all(server, cls, page):
    """OpenEnumerateInstances then PullInstancesWithPath in pages of `page`."""
    total = 0
    data = server.post(intrinsic("OpenEnumerateInstances",
                                 class_param(cls) + value_param("MaxObjectCount", page)),
                       "OpenEnumerateInstances", "root%2Forv")
    total += len(data)
    while b'NAME="EndOfSequence"><VALUE>FALSE' in data:
        ctx = re.search(rb'NAME="EnumerationContext"><VALUE>([^<]*)<', data).group(1).decode()
        data = server.post(intrinsic("PullInstancesWithPath",
                                     value_param("EnumerationContext", ctx) +
                                     value_param("MaxObjectCount", page)),
                           "PullInstancesWithPath", "root%2Forv")
        total += len(data)
    return total


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--build", default=os.path.join(ROOT, "build"))
    ap.add_argument("--array", default=os.path.join(ROOT, "sim/orvapi/models/large.json"))
    ap.add_argument("--repeat", type=int, default=2)
    ap.add_argument("--only", nargs="*")
    args = ap.parse_args()
    with open(args.array) as f:
        system = re.search(r'"name"\s*:\s*"([^"]+)"', f.read()).group(1)

    runs = [
        ("GetStatisticsCollection, all types",
         lambda s: len(s.post(service_call(system), "GetStatisticsCollection",
                              service_object(system)))),
        ("EnumerateInstances ORV_VolumeStatisticalData",
         lambda s: s.post_curl(intrinsic("EnumerateInstances", class_param("ORV_VolumeStatisticalData")),
                               "EnumerateInstances", "root%2Forv")),
        ("EnumerateInstances ORV_LUNStatisticalData",
         lambda s: s.post_curl(intrinsic("EnumerateInstances", class_param("ORV_LUNStatisticalData")),
                               "EnumerateInstances", "root%2Forv")),
        ("Pull ORV_LUNStatisticalData, pages of 1000",
         lambda s: pull_all(s, "ORV_LUNStatisticalData", 1000)),
    ]
    with tempfile.TemporaryDirectory() as work:
        server = Server(args.build, args.array, work)
        try:
            print("model %s, server pid %d, RSS at start %.0f MB"
                  % (os.path.basename(args.array), server.proc.pid, server.status("VmRSS") / 1e6))
            print("%-46s %9s %9s %10s %12s %12s" % ("request", "wall s", "CPU s", "MB", "peak RSS MB",
                                                   "RSS after MB"))
            for name, run in runs:
                if args.only and not any(o.lower() in name.lower() for o in args.only):
                    continue
                for _ in range(args.repeat):
                    server.reset_peak()
                    cpu = server.cpu_seconds()
                    t = time.monotonic()
                    size = run(server)
                    wall = time.monotonic() - t
                    # After a pause, so that the CPU time includes what the
                    # server does once the answer is out (freeing it).
                    time.sleep(0.2)
                    cpu = server.cpu_seconds() - cpu
                    print("%-46s %9.2f %9.2f %10.1f %12.0f %12.0f" % (name, wall, cpu, size / 1e6,
                          server.status("VmHWM") / 1e6, server.status("VmRSS") / 1e6), flush=True)
        finally:
            server.stop()


if __name__ == "__main__":
    main()

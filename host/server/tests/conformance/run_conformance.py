#!/usr/bin/env python3
"""Replays recorded CIM-XML requests against orv-cimserver and compares each
answer with the one a reference OpenPegasus server gave.

usage: run_conformance.py SERVER CIMUSER CORPUS WORKDIR [CASE ...]

CORPUS holds model.json (the array model the recording ran on) and cases/,
one folder per request: request.xml, request.json (user, password, CIMMethod,
CIMObject), response.xml and response.json (HTTP status, CIMError header).

What a client sees is compared, not bytes: the HTTP status and CIMError
header, then the IMETHODRESPONSE / METHODRESPONSE element parsed, with
these liberties:
  - attribute order and whitespace between elements do not count;
  - properties in an instance and key bindings in a path are compared as
    sets, and so are the objects an operation returns (OpenPegasus itself
    returns objects gathered from several providers in varying order);
  - values that move with the clock are compared by form only;
  - the server's own host name in class paths is not compared;
  - a null output parameter may be left out of a method response, and
    associators may be narrowed to the requested result class.
Every mismatch is named; the exit status is non-zero when there is one.
"""
import base64
import difflib
import http.client
import json
import os
import re
import signal
import socket
import subprocess
import sys
import time
import xml.etree.ElementTree as ET

USERS = ["admin", "demo", "noaccess", "auditor", "legacy", "locked", "stranger", "root"]

DATETIME = re.compile(r"^(\d{14}\.\d{6}[+-]\d{3}|\d{14}\.\d{6}:000)$")

# Counters that move with the clock, per class: the array's and the nodes'
# sample times and the nodes' cache counters.
VOLATILE = {
    "orv_arraystatisticaldata": {"statistictime", "timelastsampled"},
    "orv_nodestatisticaldata": {
        "statistictime", "timelastsampled", "freecachepages", "lockedreadblocks",
        "lockedwriteblocks", "nldelayedack", "readhitios", "readmissios", "writehitios",
        "writemissios", "write1cachepages", "writencachepages", "writescheduledcachepages",
        "writingcachepages"},
}
VOLATILE_SUFFIXES = ("cfcdirty", "delayedcopyonwritecachepages")

# Elements whose text is a value; elsewhere text is layout.
TEXT_ELEMENTS = {"VALUE", "KEYVALUE", "HOST"}
# Children compared as sets (sorted by their canonical form).
UNORDERED_CHILDREN = {"INSTANCE", "INSTANCENAME", "IRETURNVALUE"}
# Children dropped before comparing when they stand for a null output
# parameter: an empty PARAMVALUE.
RESPONSE_ELEMENTS = ("IMETHODRESPONSE", "METHODRESPONSE")


def is_volatile(class_name, prop_name):
    prop = prop_name.lower()
    cls = (class_name or "").lower()
    if prop == "timelastsampled":
        return True
    if prop in VOLATILE.get(cls, ()):
        return True
    return cls == "orv_nodestatisticaldata" and prop.endswith(VOLATILE_SUFFIXES)


def mask_records(text):
    """The time field of the array's GetStatisticsCollection records."""
    out = []
    for line in text.split("\n"):
        fields = line.split(";")
        if len(fields) > 2 and fields[1] == "2" and DATETIME.match(fields[2]):
            fields[2] = "<datetime>"
        out.append(";".join(fields))
    return "\n".join(out)


class Canon:
    """A canonical, comparable form of one CIM-XML element."""

    def __init__(self, elem, class_name=None, in_classpath=False):
        self.tag = elem.tag
        self.attrs = dict(elem.attrib)
        if self.tag in ("INSTANCE", "CLASS"):
            class_name = elem.get("CLASSNAME") or elem.get("NAME")
        in_classpath = in_classpath or self.tag == "CLASSPATH"
        text = elem.text or ""
        self.text = text if self.tag in TEXT_ELEMENTS else text.strip()
        if self.tag == "HOST" and in_classpath:
            self.text = "<server host>"
        self.children = [Canon(c, class_name, in_classpath) for c in elem]
        if self.tag.startswith("PROPERTY") and self.attrs.get("TYPE") == "datetime":
            self._mask_values("datetime")
        elif self.tag.startswith("PROPERTY") and is_volatile(class_name, self.attrs.get("NAME", "")):
            self._mask_values("counter")
        if self.tag == "VALUE" and ";" in self.text:
            self.text = mask_records(self.text)
        if self.tag in UNORDERED_CHILDREN:
            self.children.sort(key=lambda c: c.render())

    def _mask_values(self, kind):
        for value in self._values():
            if kind == "datetime" and DATETIME.match(value.text):
                value.text = "<datetime>"
            elif kind == "counter" and re.fullmatch(r"\d+", value.text):
                value.text = "<counter>"

    def _values(self):
        for c in self.children:
            if c.tag == "VALUE":
                yield c
            yield from c._values()

    def find(self, tag):
        """The first descendant (or self) with this tag, depth first."""
        if self.tag == tag:
            return self
        for c in self.children:
            found = c.find(tag)
            if found is not None:
                return found
        return None

    def render(self, indent=0):
        pad = "  " * indent
        attrs = " ".join('%s="%s"' % (k, v) for k, v in sorted(self.attrs.items()))
        head = pad + "<" + self.tag + (" " + attrs if attrs else "") + ">"
        if not self.children:
            return head + self.text + "\n"
        return head + self.text + "\n" + "".join(c.render(indent + 1) for c in self.children)


def response_element(body):
    root = ET.fromstring(body)
    for name in RESPONSE_ELEMENTS:
        found = root.find(".//" + name)
        if found is not None:
            return found
    raise ValueError("no IMETHODRESPONSE or METHODRESPONSE")


def is_null_param(canon):
    return canon.tag == "PARAMVALUE" and not canon.children and not canon.text


def object_class(canon):
    """The class of one returned object: of its instance, else of its path."""
    for tag in ("INSTANCE", "INSTANCENAME", "CLASS", "CLASSNAME"):
        found = canon.find(tag)
        if found is not None:
            return (found.attrs.get("CLASSNAME") or found.attrs.get("NAME") or "").lower()
    return ""


def narrowed_to_result_class(expected, got, request_xml):
    """Associators may leave out what the reference returned outside the
    requested result class: our answer is the reference's, less objects of
    other classes."""
    if not re.search(r'IMETHODCALL NAME="Associator(s|Names)"', request_xml):
        return False
    rc = re.search(r'IPARAMVALUE NAME="ResultClass"><CLASSNAME NAME="([^"]+)"', request_xml)
    exp_ret, got_ret = expected.find("IRETURNVALUE"), got.find("IRETURNVALUE")
    if not rc or exp_ret is None or got_ret is None:
        return False
    remaining = [c.render() for c in exp_ret.children]
    for g in got_ret.children:
        if g.render() not in remaining:
            return False
        remaining.remove(g.render())
    dropped_classes = {object_class(c) for c in exp_ret.children if c.render() in remaining}
    return rc.group(1).lower() not in dropped_classes and \
        len(got.children) == len(expected.children)


def compare(case_dir, status, cim_error, body):
    """Returns a list of differences (empty when the answers match)."""
    with open(os.path.join(case_dir, "response.json")) as f:
        want = json.load(f)
    with open(os.path.join(case_dir, "request.xml")) as f:
        request_xml = f.read()
    problems = []
    if status != want["status"]:
        problems.append("HTTP status %s, expected %s" % (status, want["status"]))
    if (cim_error or None) != want.get("CIMError"):
        problems.append("CIMError header %r, expected %r" % (cim_error, want.get("CIMError")))
    with open(os.path.join(case_dir, "response.xml"), "rb") as f:
        expected_body = f.read()
    if not expected_body.strip():
        return problems
    try:
        expected = Canon(response_element(expected_body))
        got = Canon(response_element(body))
    except (ET.ParseError, ValueError) as e:
        problems.append("response not comparable: %s" % e)
        return problems
    # Allowance: a null output parameter left out.
    if expected.tag == "METHODRESPONSE":
        got_names = {c.attrs.get("NAME") for c in got.children if c.tag == "PARAMVALUE"}
        expected.children = [c for c in expected.children
                             if not (is_null_param(c) and c.attrs.get("NAME") not in got_names)]
    a, b = expected.render(), got.render()
    if a != b and not narrowed_to_result_class(expected, got, request_xml):
        diff = difflib.unified_diff(a.splitlines(), b.splitlines(), "OpenPegasus", "orv-cimserver",
                                    n=2, lineterm="")
        lines = list(diff)
        problems.append("answer differs:\n    " + "\n    ".join(lines[:60]) +
                        ("\n    ... (%d more lines)" % (len(lines) - 60) if len(lines) > 60 else ""))
    return problems


def free_port():
    with socket.socket() as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def start_server(server, corpus, work):
    log = open(os.path.join(work, "server.err"), "w")
    for _ in range(5):
        port = free_port()
        proc = subprocess.Popen(
            [server, "--http-port", str(port), "--https-port", "0",
             "--array", os.path.join(corpus, "model.json"),
             "--users", os.path.join(work, "users"), "--state-dir", os.path.join(work, "state"),
             "--access-log", os.path.join(work, "access.log")],
            stdout=subprocess.DEVNULL, stderr=log)
        for _ in range(100):
            if proc.poll() is not None:
                break
            try:
                socket.create_connection(("127.0.0.1", port), timeout=0.2).close()
                return proc, port
            except OSError:
                time.sleep(0.1)
        if proc.poll() is None:
            proc.kill()
        proc.wait()
    sys.exit("cannot start the server; see %s/server.err" % work)


def send(port, case_dir):
    with open(os.path.join(case_dir, "request.json")) as f:
        req = json.load(f)
    with open(os.path.join(case_dir, "request.xml"), "rb") as f:
        body = f.read()
    auth = base64.b64encode(("%s:%s" % (req["user"], req["password"])).encode()).decode()
    headers = {
        "Content-Type": 'application/xml; charset="utf-8"',
        "CIMOperation": "MethodCall",
        "CIMMethod": req["CIMMethod"],
        "CIMObject": req["CIMObject"],
        "CIMProtocolVersion": "1.0",
        "Authorization": "Basic " + auth,
    }
    conn = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
    try:
        conn.request("POST", "/cimom", body, headers)
        resp = conn.getresponse()
        return resp.status, resp.getheader("CIMError"), resp.read()
    finally:
        conn.close()


def main():
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    server, cimuser, corpus, work = sys.argv[1:5]
    only = set(sys.argv[5:])
    cases_dir = os.path.join(corpus, "cases")
    if not os.path.isdir(cases_dir):
        sys.exit("no conformance corpus at %s" % corpus)
    os.makedirs(os.path.join(work, "state"), exist_ok=True)
    users_file = os.path.join(work, "users")
    if os.path.exists(users_file):
        os.remove(users_file)
    for user in USERS:
        subprocess.run([cimuser, "--users", users_file, "add", user, "--password-stdin"],
                       input=(user + "pw\n").encode(), check=True, stdout=subprocess.DEVNULL)

    proc, port = start_server(server, corpus, work)
    passed, failed = 0, []
    try:
        for name in sorted(os.listdir(cases_dir)):
            if only and name not in only:
                continue
            case_dir = os.path.join(cases_dir, name)
            try:
                status, cim_error, body = send(port, case_dir)
                problems = compare(case_dir, status, cim_error, body)
            except (OSError, http.client.HTTPException) as e:
                problems = ["request failed: %s" % e]
            if problems:
                failed.append(name)
                print("MISMATCH %s\n  %s" % (name, "\n  ".join(problems)))
            else:
                passed += 1
    finally:
        proc.send_signal(signal.SIGTERM)
        try:
            proc.wait(timeout=30)
        except subprocess.TimeoutExpired:
            proc.kill()
    print("conformance: %d passed, %d failed" % (passed, len(failed)))
    if failed:
        print("mismatched cases: " + " ".join(failed))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

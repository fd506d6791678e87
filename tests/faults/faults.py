#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Puts the faults of faults.txt into the library, one by one, and says which test catches each.

    tests/faults/faults.py                 all of them
    tests/faults/faults.py rsz 'scan-*'    by family or name
    tests/faults/faults.py --check         only whether each still has its place

The tests of a fault's family come first, quick ones and what failed last before slow ones; then the table of hashes,
which sees nearly everything; then all others. Sources are put back after each fault and when the run is stopped.
"""
import argparse
import collections
import fnmatch
import json
import os
import pathlib
import re
import signal
import sys
import time
from subprocess import PIPE, STDOUT, Popen, TimeoutExpired

ROOT = pathlib.Path(__file__).resolve().parents[2]
SETTINGS = "--preset x86_64 -DORUMLOX_OPTIMISATION=-O1 -DORUMLOX_TOOLS=OFF -DORUMLOX_EXAMPLES=OFF -B".split()
# By family what its tests' names have in them, else its own name.
FIRST = {"rgb": "csc", "layouts": "csc|layout", "tiles": "csc|layout", "common": "common|choice|layout|rot"}
Fault = collections.namedtuple("Fault", "name family file old new")


def with_fault(fault):
    """The file, its text and the text with the fault, or nothing. Blanks and line ends are all one."""
    path = ROOT / fault.file.split("@")[0]
    old, _, number = fault.old.partition(" #")
    text = path.read_text() if path.exists() else ""
    places = list(re.finditer(r"\s+".join(map(re.escape, old.split())), text))
    if len(places) < int(number or 1) or (len(places) > 1 and not number):
        return None
    start, end = places[int(number or 1) - 1].span()
    return path, text, text[:start] + fault.new + text[end:]


def write(fault, path, text):
    """Of header@unit only the unit is compiled: to all others the header looks the same."""
    old = path.stat()
    path.write_text(text)
    for unit in fault.file.split("@")[1:]:
        os.utime(path, ns=(old.st_atime_ns, old.st_mtime_ns))
        (ROOT / unit).touch()


def call(*command, limit=None):
    """The output and the exit status, None at the time limit."""
    process = Popen(command, cwd=ROOT, start_new_session=True, text=True, stdout=PIPE, stderr=STDOUT)
    try:
        return process.communicate(timeout=limit)[0], process.returncode
    except TimeoutExpired:
        return "", None
    finally:
        if process.returncode is None:
            os.killpg(process.pid, signal.SIGKILL)


def outcome(fault, tests, options):
    """Builds and tests: whether the fault is caught and by what."""
    costs = ROOT / options.build / "Testing/Temporary/CTestCostData.txt"  # name, runs, seconds: 0 if it failed last
    rows = re.findall(r"^(\S+) \d+ (\S+)$", costs.read_text() if costs.exists() else "", re.M)
    seconds = {name: float(usual) for name, usual in rows}
    first = re.compile(FIRST.get(fault.family, fault.family) + "|values|common")
    groups = {"caught": [], "hashes": [], "others": []}
    for test in sorted(tests, key=lambda test: seconds.get(test, 0)):
        groups["caught" if first.search(test) else "hashes" if "hashes" in test else "others"].append(test)
    for kind, group in groups.items():
        targets = {"orumlox", *map(tests.get, group)}
        output, status = call("cmake", "--build", options.build, "-j", options.jobs, "--target", *targets)
        if status != 0:
            return "NOT BUILT", output
        for test in group:
            status = call("ctest", "--test-dir", options.build, "-R", f"^{test}$", limit=600)[1]
            if status != 0:
                return kind, test if status else f"{test} (time limit)"
    return "SURVIVED", ""


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("names", nargs="*", default=["*"])
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--build", default="build/faults")
    parser.add_argument("--jobs", default="1", help="of the build")
    options = parser.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("stopped"))
    lines = re.findall("^[^#\n].*", (ROOT / "tests/faults/faults.txt").read_text(), re.M)
    faults = [Fault(*map(str.strip, line.split(" | "))) for line in lines]
    faults = [fault for fault in faults if any(fnmatch.filter(fault[:2], name) for name in options.names)]
    lost = [f"no place, or several: {fault}" for fault in faults if not with_fault(fault)]
    if options.check or lost:
        sys.exit("\n".join(lost) or None)
    for command in ([*SETTINGS, options.build], ["--build", options.build, "-j", options.jobs]):
        if (done := call("cmake", *command))[1] != 0:
            sys.exit(done[0])
    output = call("ctest", "--test-dir", options.build, "--show-only=json-v1")[0]
    tests = {test["name"]: pathlib.Path(part).name for test in json.loads(output[output.index("{"):])["tests"]
             if "audit" not in test["name"]  # whose rules are about an optimised build
             for part in test["command"] if part.startswith(str(ROOT / options.build)) and os.path.isfile(part)}
    bad = 0
    for fault in faults:
        begin = time.time()
        path, text, faulty = with_fault(fault)
        try:
            write(fault, path, faulty)
            kind, by = outcome(fault, tests, options)
        finally:
            write(fault, path, text)
        bad += kind in ("NOT BUILT", "SURVIVED")
        print(f"{fault.name:28} {fault.family:8} {kind:9} {time.time() - begin:4.0f} s  {by}", flush=True)
    sys.exit(f"{bad} of {len(faults)} faults are not caught" if bad else 0)


main()

"""Lets every system call that can lose results fail, one at a time, and kills the program at each of them: after every
run the results are complete under their marker or name, or they do not pretend to be. strace does the injecting.

    inject_faults.py [--all] [CASE ...]

Without --all: the calls that write, name and open. With it the reading ones as well, and a large import."""
import argparse
import collections
import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import threading

from cases import CASES, Outcome

WRITING = ("write", "pwrite64", "writev", "fsync", "fdatasync", "rename", "renameat", "renameat2", "linkat", "openat",
           "close", "ftruncate", "fallocate", "unlink", "unlinkat", "fchmod", "flock", "fcntl", "clone",
           "clone3")
READING = ("read", "pread64", "newfstatat", "getdents64", "lseek")
# The fault, and which occurrences of the call it hits: this one, or this and all behind it.
FAULTS = (("error=ENOSPC", ""), ("error=ENOSPC", "+"), ("error=EIO", ""), ("error=EIO", "+"), ("signal=SIGKILL", ""))
SKIPPED = 77
# Without --seccomp-bpf, which is faster and loses injected signals.
STRACE = ["strace", "-f", "-qq"]
ARRIVED = re.compile(r"\(INJECTED\)|killed by SIGKILL")
LINE = re.compile(r"^(?:\[pid +)?(\d+)\]? +(\w+)\((.*)$")


def traced(command, directory, *options):
    process = subprocess.run([*STRACE, *options, *command], cwd=directory, stdin=subprocess.DEVNULL,
                             stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, timeout=30, check=False)
    return process.returncode, process.stderr


def cannot_inject():
    """Why this environment does not let strace inject faults; empty where it does."""
    if shutil.which("strace") is None:
        return "strace is not installed"
    # The only sure sign: a fault that arrives.
    with tempfile.TemporaryDirectory() as directory:
        status, err = traced(["touch", "x"], directory, "-o", "log", "-e", "trace=openat", "-e",
                             "inject=openat:error=ENOSPC")
        return "" if status != 0 and b"No space left" in err + (pathlib.Path(directory) / "log").read_bytes() else \
            f"strace cannot inject faults here: {err.decode(errors='replace').strip()}"


class Point:
    """One occurrence of a system call in a run: the place where a fault goes."""

    def __init__(self, call, when, text, is_renamed):
        self.call = call
        self.when = when
        self.text = text
        self.is_renamed = is_renamed  # whether the result has its name already

    def faults(self):
        """Those that can happen here. Under strace a close that fails leaves the file open, which Linux never does: a
        reader would wait for the end of a pipe for ever."""
        if self.call != "close":
            return FAULTS
        return [fault for fault in FAULTS if fault[1] == "" and ("<pipe:" not in self.text or "signal" in fault[0])]


def record(case, directory, calls):
    """The points of a run without a fault, counted per thread as strace counts them."""
    case.fill(directory)
    log = directory.with_suffix(".log")
    status, err = traced(case.command, directory, "-y", "-o", str(log), "-e", "trace=" + ",".join(calls))
    if status != 0:
        raise RuntimeError(f"{case.name} fails without a fault: {err!r}")
    seen = collections.Counter()
    points = {}
    is_renamed = False
    for line in log.read_text(errors="replace").splitlines():
        match = LINE.match(line)
        if not match:
            continue
        thread, call, rest = match.groups()
        seen[thread, call] += 1
        key = (call, seen[thread, call])
        point = points.setdefault(key, Point(*key, f"{call}({rest}", is_renamed))
        # The same occurrence in a program that the first one has started.
        if "<pipe:" in rest and "<pipe:" not in point.text:
            point.text += f" and {call}({rest}"
        is_renamed = is_renamed or (call.startswith("rename") and '"job.odb")' in rest)
    return list(points.values())


def run_with(case, directory, point, fault):
    """One run with one fault; what is wrong afterwards."""
    effect, further = fault
    case.fill(directory)
    log = directory.with_suffix(".log")
    try:
        status, err = traced(case.command, directory, "-o", str(log), "-e", f"trace={point.call}", "-e",
                             f"inject={point.call}:{effect}:when={point.when}{further}")
    except subprocess.TimeoutExpired:
        return ["it hangs"]
    killed = effect.startswith("signal") and status == -9
    if not killed and not case.has_threads and not ARRIVED.search(log.read_text(errors="replace")):
        return ["the fault did not arrive"]
    silenced = point.call == "write" and (further == "+" or point.text.startswith("write(2"))
    return case.check(directory, Outcome(status, err, point.is_renamed, killed, silenced, point.text))


def try_all(case, scratch, points, jobs):
    """Every fault at every point; prints what is wrong and returns how many faults there were and how many went wrong."""
    tasks = [(point, fault) for point in points for fault in point.faults()]
    local = threading.local()

    def one(task):
        if not hasattr(local, "directory"):
            local.directory = pathlib.Path(tempfile.mkdtemp(dir=scratch))
        return task, run_with(case, local.directory, *task)

    failures = 0
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for (point, fault), wrong in pool.map(one, tasks):
            for text in wrong:
                failures += 1
                where = f"{point.call} {point.when}{fault[1]}, {point.text[:100]}"
                print(f"{case.name}: {fault[0]} at {where}\n    {text}")
    return len(tasks), failures


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--all", action="store_true", help="reading calls too")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("cases", nargs="*", help="extraction, upgrade, import; all where none is named")
    options = parser.parse_args()
    why = cannot_inject()
    if why:
        print(f"skipped: {why}")
        return SKIPPED
    calls = WRITING + READING if options.all else WRITING
    failures = 0
    with tempfile.TemporaryDirectory(prefix="kolvex-faults.") as scratch:
        for kind in CASES:
            if kind.name not in options.cases if options.cases else kind.most_points and not options.all:
                continue
            case = kind(scratch)
            points = record(case, pathlib.Path(scratch) / "recorded", calls)
            if case.most_points:
                points = points[::len(points) // case.most_points]
            faults, wrong = try_all(case, scratch, points, options.jobs)
            print(f"{case.name}: {len(points)} calls, {faults} faults, {wrong} wrong")
            failures += wrong
            missing = {call for call in case.makes if call in calls} - {point.call for point in points}
            if not points or missing and not case.most_points:
                raise RuntimeError(f"not every system call was recorded: {sorted(missing)}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())

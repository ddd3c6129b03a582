#!/usr/bin/python3
"""Damages and forges files in thousands of ways and holds the programs to what they promise.

Usage: run.py KIND [--count 1000] [--first 0] [--jobs 2] [--keep DIRECTORY]

KIND is one of those that --help lists. KOLVEX_BIN names the directory of the programs. No mutant may crash a
program, take more than 5 s of processor time, wait for anything, or take more than 300 MB. The extraction of a damaged database either says what is wrong and leaves no
marker, or gives the records of the whole one; other records are allowed where no checksum protects the bytes, and where
`kolvex verify` finds the damage. The import either says what is wrong and leaves no database, or leaves one that is
sound and can be extracted from. Mutants are numbered; --first and --count choose. "forged" mutants have checksums made
again, as only an enemy does: what they do to the extraction is counted and no failure; `kolvex verify` stands them.
"catalog" mutants have a changed catalog and sums that agree with it, and are held to all that is promised.
"structure" mutants are changed through HDF5's interface, so that every sum of its is right; those that end in "-words"
by what stands in the text. Memory of each program is limited in proportion to the file it reads.

Prints what became of them, and the failures; the status is 1 when there is one.
"""
import argparse
import collections
import multiprocessing
import os
import pathlib
import resource
import shutil
import signal
import sys
import tempfile

import catalogs
import mutate
import grammar
import seeds
import structure

CONFIG = ("ODB EXTRACTIONS\nEXTRACT_MASS EXTRACT_HISTORY MINMAX_HISTORY EXTRACT_ALL EXTRACT_FIELD EXTRACT_FIELD_SETS "
          "EXTRACT_FIELD_COMPONENTS TENSOR_INVARIANTS ENGINEERING_MAX ENGINEERING_MIN\nPERCENTAGE = 5\n")
# Of processor time; a program that takes so much longer on the clock waits for something, however busy the machine is.
SECONDS = 5
PATIENCE = 12
IS_SANITIZED = seeds.BIN.parent.name == "asan"
MEGABYTES = 1500 if IS_SANITIZED else 300
SANITIZER_STATUS = 99
ENVIRONMENT = {**os.environ, "ASAN_OPTIONS": f"detect_leaks=0:exitcode={SANITIZER_STATUS}",
               "UBSAN_OPTIONS": f"halt_on_error=1:exitcode={SANITIZER_STATUS}"}
RESULTS = ("params.txt", "paramsdone.txt", "upgradedOdb.odb", "out.odb")
IMPORTS = {"frd": "frd", "binary": "frd", "dat": "dat", "inp": "inp", "vtk": "vtk", "frd-words": "frd", "dat-words": "dat",
           "inp-words": "inp", "vtk-words": "vtk",
           "exodus": "e", "exodus4": "e"}


class Broken(Exception):
    """A promise that was."""


def run(program, *arguments):
    """Status and standard error of a program in the working directory; a crash or a hang is Broken."""
    actions = [(os.POSIX_SPAWN_OPEN, 0, "/dev/null", os.O_RDONLY, 0), (os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0),
               (os.POSIX_SPAWN_OPEN, 2, "messages", os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)]
    seconds = SECONDS * (4 if IS_SANITIZED else 1)
    limits = [f"--cpu={seconds}:{seconds + 1}"] + ([] if IS_SANITIZED else [f"--data={most_memory()}"])
    command = ["/usr/bin/prlimit", *limits, str(seeds.BIN / program), *arguments]
    child = os.posix_spawn(command[0], command, ENVIRONMENT, file_actions=actions)
    signal.setitimer(signal.ITIMER_REAL, seconds * PATIENCE)
    try:
        _, status, usage = os.wait4(child, 0)
    except TimeoutError:
        os.kill(child, signal.SIGKILL)
        os.waitpid(child, 0)
        raise Broken(f"{program} hangs for {seconds * PATIENCE} s") from None
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
    messages = pathlib.Path("messages").read_bytes()
    if os.WIFSIGNALED(status) and (os.WTERMSIG(status) == signal.SIGXCPU or usage.ru_utime + usage.ru_stime >= seconds):
        raise Broken(f"{program} takes more than {seconds} s of processor time")
    if os.WIFSIGNALED(status) or os.WEXITSTATUS(status) == SANITIZER_STATUS:
        raise Broken(f"{program} crashed with {status}: {messages[:2000].decode(errors='replace')}")
    if usage.ru_maxrss > MEGABYTES * 1024:
        raise Broken(f"{program} took {usage.ru_maxrss // 1024} MB")
    return os.WEXITSTATUS(status), messages


def most_memory():
    """Bytes that a program may take for the largest file here."""
    sizes = [entry.stat().st_size for entry in os.scandir() if entry.name.startswith(("m.odb", "job.", "out.odb"))]
    return (64 << 20) + 16 * max(sizes, default=0)


def late(*_):
    raise TimeoutError


def clear():
    for name in RESULTS:
        pathlib.Path(name).unlink(missing_ok=True)


def extracted(name):
    """The records under a marker, or None, and the messages."""
    status, messages = run("quarnish", "-odb", name, "-config", "config.txt")
    if not os.path.exists("paramsdone.txt"):
        if status not in (0, 1) or not messages:
            raise Broken(f"status {status} without a marker, and the message {messages!r}")
        return None, messages
    if status != 0:
        raise Broken(f"a marker with status {status}: {messages!r}")
    return pathlib.Path("params.txt").read_bytes(), messages


def check_database(data, is_protected, expected):
    """What became of a damaged database."""
    pathlib.Path("m.odb").write_bytes(data)
    records, messages = extracted("m.odb")
    if records is None:
        if not messages.startswith((b"m.odb", b"upgradedOdb.odb", b"**ERROR**")) and b"precision" not in messages.lower():
            raise Broken(f"the message names no file: {messages!r}")
        return "crashed in its child, told" if b"reading it crashed" in messages else "told"
    if records == expected:
        return "same records"
    if not is_protected:
        return "other records, nothing protects the bytes"
    status, messages = run("verify", "m.odb")
    if status != 1:
        raise Broken(f"other records, and verify ends with {status}: {messages!r}")
    return "other records, verify tells"


def check_forged(data, is_protected, expected):
    """What became of a database made to do harm: anything may happen to the extraction, verify stays whole."""
    try:
        outcome = check_database(data, is_protected, expected)
    except Broken as broken:
        outcome = "broken: " + str(broken).split(":", maxsplit=1)[0]
    status, messages = run("verify", "m.odb")
    if status not in (0, 1, 3, 4) or (status != 0 and not messages.startswith(b"m.odb: ")):
        raise Broken(f"verify ends with {status}: {messages!r}")
    return outcome + (", verify's child crashed" if b"reading it crashed" in messages else "")


def check_catalog(data, is_protected, expected):
    """What became of a database whose catalog was changed and sealed again; verify stays whole, whatever it says."""
    outcome = check_database(data, is_protected, expected)
    status, messages = run("verify", "m.odb")
    if status not in (0, 1) or (status == 1 and not messages.startswith(b"m.odb: ")):
        raise Broken(f"verify ends with {status}: {messages!r}")
    if b"changed after its catalog was made" in messages:
        raise Broken("the sums do not agree, so that nothing but them was tried")
    return outcome + (", verify tells" if status == 1 and outcome == "same records" else "")


def check_import(files, kind, data):
    """What became of a damaged file of a run."""
    for name, content in files.items():
        pathlib.Path(f"job.{name}").write_bytes(content)
    pathlib.Path(f"job.{IMPORTS[kind]}").write_bytes(data)
    points = ["--integration-points"] if kind.startswith("exodus") else []
    status, messages = run("import", "job", "-o", "out.odb", *points)
    if any(".tmp." in name for name in os.listdir()):
        raise Broken("a temporary file stays")
    if status != 0:
        last = messages.splitlines()[-1] if messages else b""
        if status != 1 or not last.startswith(b"job.") or b": error: " not in last or os.path.exists("out.odb"):
            raise Broken(f"status {status}, {messages[-500:]!r}, database: {os.path.exists('out.odb')}")
        return "told"
    status, found = run("verify", "out.odb")
    if status != 0:
        raise Broken(f"the database is not sound: {found!r}")
    records, found = extracted("out.odb")
    if records is None:
        raise Broken(f"the database cannot be extracted from: {found!r}")
    return "imported with warnings" if messages else "imported"


class Worker:
    """Makes and checks mutants in a directory of its own."""

    def __init__(self, kind, keep):
        self.kind, self.keep = kind, keep
        memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
        self.directory = pathlib.Path(tempfile.mkdtemp(prefix="kolvex-mutants.", dir=memory))
        os.chdir(self.directory)
        signal.signal(signal.SIGALRM, late)
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        pathlib.Path("config.txt").write_text(CONFIG)
        if kind.startswith("exodus"):
            self.files = {}
            self.whole = [(seeds.exodus_files(self.directory)[kind], True)]
        elif kind in IMPORTS:
            self.files = {} if IMPORTS[kind] == "vtk" else seeds.job_files()
            whole = list(seeds.vtk_files().values()) if IMPORTS[kind] == "vtk" else [self.files[kind.split("-")[0]]]
            self.whole = [(data, True) for data in whole]
            self.files.pop("binary", None)
        else:
            self.whole = self.databases(kind)
        self.expected = []
        for data, _ in self.whole if kind not in IMPORTS else ():
            pathlib.Path("m.odb").write_bytes(data)
            self.expected.append(extracted("m.odb")[0])
            clear()

    def databases(self, kind):
        """Pairs of bytes and whether sums protect them."""
        if kind == "catalog":
            return [(data, True) for data in seeds.catalogued(self.directory)]
        if kind == "layout1":
            return seeds.layout1(self.directory)
        made = seeds.layout2(self.directory)
        if kind == "structure":
            return [(data, False) for data, _ in made + seeds.layout1(self.directory)]
        return made if kind != "forged" else made[:1]

    def made(self, number):
        which = number % len(self.whole)
        data, is_protected = self.whole[which]
        if self.kind == "forged":
            return which, is_protected, mutate.forged(data, number)
        if self.kind == "catalog":
            return which, is_protected, catalogs.forged(data, number)
        if self.kind == "structure":
            return which, is_protected, structure.changed(data, number, self.directory / "changed.odb")
        if self.kind.endswith("-words"):
            return which, is_protected, grammar.changed(data, number, IMPORTS[self.kind])
        is_text = self.kind in ("frd", "dat", "inp") or self.kind == "vtk" and number % 2 == 0
        kinds = mutate.TEXT if is_text else mutate.NETCDF if self.kind == "exodus" else mutate.BINARY
        return which, is_protected, mutate.mutant(data, number, kinds)

    def check(self, number):
        which, is_protected, data = self.made(number)
        try:
            if self.kind in IMPORTS:
                return check_import(self.files, self.kind, data), None
            check = {"forged": check_forged, "catalog": check_catalog}.get(self.kind, check_database)
            return check(data, is_protected, self.expected[which]), None
        except Broken as broken:
            if self.keep:
                (self.keep / f"{self.kind}-{number}").write_bytes(data)
            return "BROKEN", f"{self.kind} {number}: {broken}"
        finally:
            clear()


WORKERS = {}


def check_range(job):
    kind, keep, numbers = job
    if kind not in WORKERS:
        WORKERS[kind] = Worker(kind, keep)
    counts, failures = collections.Counter(), []
    for number in numbers:
        outcome, failure = WORKERS[kind].check(number)
        counts[outcome] += 1
        if failure:
            failures.append(failure)
    return WORKERS[kind].directory, counts, failures


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("kind", choices=["layout2", "forged", "catalog", "structure", "layout1", *IMPORTS])
    parser.add_argument("--count", type=int, default=1000)
    parser.add_argument("--first", type=int, default=0)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--keep", type=lambda name: pathlib.Path(name).resolve(), help="where broken mutants go")
    options = parser.parse_args()
    if options.keep:
        options.keep.mkdir(parents=True, exist_ok=True)
    last = options.first + options.count
    jobs = [(options.kind, options.keep, range(at, min(at + 50, last))) for at in range(options.first, last, 50)]
    counts, failures, directories = collections.Counter(), [], set()
    try:
        with multiprocessing.Pool(options.jobs) as pool:
            for directory, some, broken in pool.imap_unordered(check_range, jobs):
                directories.add(directory)
                counts += some
                failures += broken
    finally:
        for directory in directories:
            shutil.rmtree(directory, ignore_errors=True)
    print(f"{options.kind}: {sum(counts.values())} mutants: " +
          ", ".join(f"{count} {outcome}" for outcome, count in counts.most_common()))
    print("\n".join(failures[:20]))
    return 1 if failures or not counts else 0


if __name__ == "__main__":
    sys.exit(main())

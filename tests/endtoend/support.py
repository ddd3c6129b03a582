"""What the end-to-end tests share: running a program in a directory of its own, and writing databases with h5py."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import h5py
import numpy as np

BIN = pathlib.Path(os.environ["KOLVEX_BIN"])
ROOT = pathlib.Path(__file__).resolve().parents[2]
FAILED = b"ODB Application exited with error(s)\n"


class Run:
    """Status, output and files of one finished run."""

    def __init__(self, process, directory):
        self.status = process.returncode
        self.out = process.stdout
        self.err = process.stderr
        self.directory = directory

    def text(self, name):
        """The bytes of a file that the run left, None where there is none."""
        path = self.directory / name
        return path.read_bytes() if path.exists() else None


class ProgramTest(unittest.TestCase):
    """A test with an empty working directory."""

    maxDiff = None

    def setUp(self):
        self.directory = pathlib.Path(tempfile.mkdtemp(prefix="kolvex-test."))
        self.addCleanup(shutil.rmtree, self.directory)

    def path(self, name):
        return self.directory / name

    def write(self, name, text):
        self.path(name).write_bytes(text.encode() if isinstance(text, str) else text)
        return name

    def run_program(self, *arguments, program="quarnish", **options):
        earlier = self.databases()
        process = subprocess.run([str(BIN / program), *map(str, arguments)], cwd=options.pop("cwd", self.directory),
                                 stdout=options.pop("stdout", subprocess.PIPE), stderr=subprocess.PIPE,
                                 stdin=subprocess.DEVNULL, timeout=120, check=False, **options)
        for path, _ in self.databases().items() - earlier.items():
            self.check_written(path)
        return Run(process, self.directory)

    def databases(self):
        """What tells whether one is written between two looks at the directory."""
        files = {path: path.stat() for path in self.directory.rglob("*.odb") if path.is_file() and not path.is_symlink()}
        return {path: (file.st_ino, file.st_mtime_ns, file.st_size) for path, file in files.items()}

    def check_written(self, path):
        """Every database that a program has written is sound: its catalog says what HDF5's structure says, all sums agree."""
        done = subprocess.run([str(BIN / "verify"), str(path)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              stdin=subprocess.DEVNULL, timeout=120, check=False)
        self.assertEqual(done.returncode, 0, done.stdout)

    def config(self, *lines):
        """A configuration file that switches on what the lines say."""
        return self.write("config.txt", "ODB EXTRACTIONS\n" + "".join(line + "\n" for line in lines))


def installed_prefix(test):
    """A directory into which the build is installed."""
    prefix = test.path("prefix")
    subprocess.run([os.environ["KOLVEX_CMAKE"], "--install", str(BIN.parent), "--prefix", str(prefix)], check=True,
                   stdout=subprocess.DEVNULL, timeout=120)
    return prefix


def text(value):
    """Fixed-length UTF-8, padded with NULs."""
    raw = [v.encode() for v in np.atleast_1d(value)]
    size = max(1, *(len(v) for v in raw)) if raw else 1
    array = np.array(raw, dtype=h5py.string_dtype("utf-8", size))
    return array if isinstance(value, (list, tuple)) else array[0]


def set_attributes(group, **attributes):
    for name, value in attributes.items():
        is_text = isinstance(value, str) or (isinstance(value, (list, tuple)) and value and isinstance(value[0], str))
        group.attrs[name] = text(value) if is_text else value


class Database:
    """A database of layout 2 under construction, one instance I-1 of one part P."""

    def __init__(self, path):
        self.file = h5py.File(path, "w", libver=("v110", "v110"))
        self.file.attrs["layout"] = 2
        self.file.create_group("parts/P")
        set_attributes(self.file.create_group("assembly/instances/I-1"), part="P")
        self.steps = self.file.create_group("steps", track_order=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.file.close()

    def location(self, name, position, **labels):
        group = self.file.create_group("locations/" + name)
        set_attributes(group, instance="I-1", position=position)
        for kind, values in labels.items():
            group[kind] = np.array(values, "i4")

    def step(self, name, increments=(1,), **attributes):
        step = self.steps.create_group(name)
        set_attributes(step, **attributes)
        frames = step.create_group("frames")
        frames["incrementNumber"] = np.array(increments, "i4")
        frames["value"] = np.arange(len(increments), dtype="f8")
        frames["description"] = text([f"Increment {i}" for i in increments])
        return step

    @staticmethod
    def field(step, name, data_type, blocks, labels=(), **attributes):
        """Blocks are pairs of a location and rows [frames, rows, width] or [frames, rows]."""
        field = step.create_group("fields/" + name)
        set_attributes(field, type=data_type, **attributes)
        if labels:
            set_attributes(field, componentLabels=list(labels))
        for k, (location, rows) in enumerate(blocks):
            block = field.create_group(f"blocks/{k}")
            set_attributes(block, location=location)
            block["data"] = np.asarray(rows)
        return field


def small_database(path):
    """One step, one frame, a scalar field at three nodes and two node sets."""
    with Database(path) as odb:
        odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
        odb.file["assembly/nodeSets/TIP/I-1"] = np.array([3], "i4")
        odb.file["assembly/elementSets/ALL ELEMENTS/I-1"] = np.array([1], "i4")
        step = odb.step("Step-1")
        odb.field(step, "NT", 2, [("nodes", np.array([[20, 30, 1234567]], "f4"))], description="Nodal temperature")

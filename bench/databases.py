"""Databases for measurements, written straight with h5py."""
import h5py
import numpy as np

TENSOR = ["11", "22", "33", "12", "13", "23"]
INVARIANTS = [1, 2, 3, 4, 5, 6, 7, 9, 10, 11]


def text(value, size=64):
    return np.array(value.encode(), dtype=h5py.string_dtype("utf-8", size))


class Database:
    """A database of one instance and one step."""

    def __init__(self, path, frames):
        self.file = h5py.File(path, "w", libver=("v110", "v110"))
        self.file.attrs["layout"] = 2
        self.file.create_group("parts/P")
        self.file.create_group("assembly/instances/I").attrs["part"] = text("P")
        self.step = self.file.create_group("steps", track_order=True).create_group("Step-1")
        group = self.step.create_group("frames")
        group["incrementNumber"] = np.arange(frames, dtype="i4") + 1
        group["value"] = np.arange(frames, dtype="f8")
        group["description"] = np.array([b"Increment"] * frames, dtype=h5py.string_dtype("utf-8", 9))
        self.frames = frames
        self.random = np.random.default_rng(1)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.file.close()

    def location(self, name, rows, elements=True):
        group = self.file.create_group("locations/" + name)
        group.attrs.update(instance=text("I"), position=text("centroid" if elements else "nodal"))
        group["elementLabels" if elements else "nodeLabels"] = np.arange(rows, dtype="i4") + 1

    def sets(self, count, size, rows):
        """`count` sets of `size` elements each, one after the other, from the first again behind the last."""
        group = self.file.create_group("assembly/elementSets")
        labels = np.arange(rows, dtype="i4") + 1
        for i in range(count):
            first = i * size % rows
            group.create_group(f"SET-{i}")["I"] = labels[first:first + size]

    def field(self, name, kind, labels, locations, rows, dtype="f4", packed=False):
        field = self.step.create_group("fields/" + name)
        field.attrs.update(type=kind, description=text("Stress" if kind == 5 else "Spatial"))
        if labels:
            field.attrs["componentLabels"] = np.array([v.encode() for v in labels], dtype=h5py.string_dtype("utf-8", 2))
        field.attrs["validInvariants"] = np.array(INVARIANTS, "i4")
        shape = (rows, len(labels)) if len(labels) > 1 else (rows,)
        for k, location in enumerate(locations):
            block = field.create_group(f"blocks/{k}")
            block.attrs["location"] = text(location)
            options = {}
            if packed:
                options = dict(chunks=(1,) + shape, compression="gzip", compression_opts=4, fletcher32=True)
            data = block.create_dataset("data", (self.frames,) + shape, dtype, **options)
            for frame in range(self.frames):
                data[frame] = self.random.standard_normal(shape, dtype="f4")


def stress(path, frames, rows, sets=0, size=0, packed=False):
    with Database(path, frames) as odb:
        odb.location("elements", rows)
        if sets:
            odb.sets(sets, size, rows)
        odb.field("S", 5, TENSOR, ["elements"], rows, packed=packed)


def displacement(path, frames, rows):
    with Database(path, frames) as odb:
        odb.location("nodes", rows, elements=False)
        odb.field("U", 3, ["1", "2", "3"], ["nodes"], rows)


def scalars(path, frames, rows, blocks, dtype):
    with Database(path, frames) as odb:
        odb.location("nodes", rows, elements=False)
        odb.field("T", 2, [], ["nodes"] * blocks, rows, dtype=dtype)


def many_frames(path, frames, rows, fields):
    with Database(path, frames) as odb:
        odb.location("nodes", rows, elements=False)
        for i in range(fields):
            odb.field(f"F{i}", 2, [], ["nodes"], rows)

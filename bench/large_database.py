#!/usr/bin/python3
"""Makes a large database for measurements: stresses at integration points and displacements at nodes.

Usage: large_database.py big.odb [--rows 250000] [--frames 128] [--sets 20]
"""
import argparse

import h5py
import numpy as np


def text(value, size=64):
    return np.array(value.encode(), dtype=h5py.string_dtype("utf-8", size))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("path")
    parser.add_argument("--rows", type=int, default=250_000, help="rows of stress in a frame; half as many nodes")
    parser.add_argument("--frames", type=int, default=128)
    parser.add_argument("--sets", type=int, default=20, help="element sets, each a run of elements, covering all of them")
    options = parser.parse_args()
    rows, nodes, frames = options.rows, options.rows // 2, options.frames
    elements = np.arange(rows, dtype="i4") // 8 + 1
    random = np.random.default_rng(1)
    with h5py.File(options.path, "w", libver=("v110", "v110")) as odb:
        odb.attrs["layout"] = 2
        odb.create_group("parts/P")
        odb.create_group("assembly/instances/I").attrs["part"] = text("P")
        for i, labels in enumerate(np.array_split(np.unique(elements), options.sets) if options.sets else []):
            odb[f"assembly/elementSets/SET-{i}/I"] = labels
        stress = odb.create_group("locations/stress")
        stress.attrs.update(instance=text("I"), position=text("integrationPoint"), elementType=text("C3D8"))
        stress["elementLabels"] = elements
        stress["integrationPoints"] = np.arange(rows, dtype="i4") % 8 + 1
        places = odb.create_group("locations/nodes")
        places.attrs.update(instance=text("I"), position=text("nodal"))
        places["nodeLabels"] = np.arange(nodes, dtype="i4") + 1
        step = odb.create_group("steps", track_order=True).create_group("Step-1")
        group = step.create_group("frames")
        group["incrementNumber"] = np.arange(frames, dtype="i4") + 1
        group["value"] = np.arange(frames, dtype="f8")
        group["description"] = np.array([b"Increment"] * frames, dtype=h5py.string_dtype("utf-8", 9))
        for name, kind, labels, description, place, count in (
                ("S", 5, ["11", "22", "33", "12", "13", "23"], "Stress components", "stress", rows),
                ("U", 3, ["1", "2", "3"], "Spatial displacement", "nodes", nodes)):
            field = step.create_group(f"fields/{name}")
            field.attrs.update(type=kind, description=text(description))
            field.attrs["componentLabels"] = np.array([v.encode() for v in labels], dtype=h5py.string_dtype("utf-8", 2))
            field.attrs["validInvariants"] = np.array([1, 2, 3, 4, 5, 6, 7, 9, 10, 11] if kind == 5 else [8], "i4")
            block = field.create_group("blocks/0")
            block.attrs["location"] = text(place)
            data = block.create_dataset("data", (frames, count, len(labels)), "f4")
            for i in range(frames):
                data[i] = random.standard_normal((count, len(labels)), dtype="f4")


if __name__ == "__main__":
    main()

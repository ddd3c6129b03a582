#!/usr/bin/python3
"""Prints the stresses of a node in every frame of a database, read with h5py alone.

Usage: stress_of_a_node.py job.odb NODE [FIELD]   for example   stress_of_a_node.py lug.odb 17 S
"""
import sys

import h5py
import numpy as np

if len(sys.argv) not in (3, 4) or sys.argv[1].startswith("-"):
    sys.exit(__doc__.strip())
node = int(sys.argv[2])
name = sys.argv[3] if len(sys.argv) == 4 else "S"

with h5py.File(sys.argv[1]) as odb:
    for step_name, step in odb["steps"].items():
        field = step.get(f"fields/{name}")
        if field is None:
            continue
        labels = [label.decode() for label in field.attrs.get("componentLabels", [])]
        print(step_name, *labels, sep="\t")
        for block in field["blocks"].values():
            location = odb["locations"][block.attrs["location"].decode()]
            if "nodeLabels" not in location:
                continue
            rows = np.flatnonzero(location["nodeLabels"][()] == node)
            if "rowOf" in location:  # rows that several elements share are stored once
                rows = np.unique(location["rowOf"][()][rows])
            frames = next((g["frames"][()] for g in (block, field) if "frames" in g), range(len(step["frames/value"])))
            for slab, frame in enumerate(frames):
                for row in rows:
                    numbers = np.atleast_1d(block["data"][slab, row])
                    print(f"{step['frames/value'][frame]:g}", *(f"{number:.6g}" for number in numbers), sep="\t")

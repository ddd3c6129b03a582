#!/usr/bin/python3
"""Writes a small output database with h5py alone: a bar of two trusses, pulled in two increments.

Usage: write_by_hand.py bar.odb   and then   kolvex quarnish -odb bar.odb -config extract.cfg
"""
import sys

import h5py
import numpy as np


def text(value):
    """Fixed-length UTF-8, as the format wants all its texts."""
    raw = [v.encode() for v in np.atleast_1d(value)]
    size = max(1, *(len(v) for v in raw))
    array = np.array(raw, dtype=h5py.string_dtype("utf-8", size))
    return array if isinstance(value, list) else array[0]


if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
    sys.exit(__doc__.strip())

with h5py.File(sys.argv[1], "w", libver=("v110", "v110")) as odb:
    odb.attrs["layout"] = 3
    odb.attrs["title"] = text("Two trusses")

    odb.create_group("parts/BAR")
    instance = odb.create_group("assembly/instances/BAR-1")
    instance.attrs["part"] = text("BAR")
    odb["assembly/nodeSets/TIP/BAR-1"] = np.array([3], "i4")
    odb["assembly/elementSets/ROOT/BAR-1"] = np.array([1], "i4")

    nodes = odb.create_group("locations/nodes")
    nodes.attrs.update(instance=text("BAR-1"), position=text("nodal"))
    nodes["nodeLabels"] = np.array([1, 2, 3], "i4")
    elements = odb.create_group("locations/elements")
    elements.attrs.update(instance=text("BAR-1"), position=text("centroid"), elementType=text("T3D2"))
    elements["elementLabels"] = np.array([1, 2], "i4")
    # The ends of both elements: four places, but the node between them has one row for both.
    ends = odb.create_group("locations/ends")
    ends.attrs.update(instance=text("BAR-1"), position=text("elementNodal"), elementType=text("T3D2"), storedRows=3)
    ends["elementLabels"] = np.array([1, 1, 2, 2], "i4")
    ends["nodeLabels"] = np.array([1, 2, 2, 3], "i4")
    ends["rowOf"] = np.array([0, 1, 1, 2], "i4")

    steps = odb.create_group("steps", track_order=True)
    step = steps.create_group("Pull-1")
    step.attrs.update(mass=0.25, massCenter=[1.0, 0.0, 0.0])
    frames = step.create_group("frames")
    frames["incrementNumber"] = np.array([0, 1], "i4")
    frames["value"] = np.array([0.0, 1.0])
    frames["description"] = text(["Increment 0", "Increment 1"])

    u = step.create_group("fields/U")
    u.attrs.update(type=3, description=text("Spatial displacement"), componentLabels=text(["1", "2", "3"]))
    block = u.create_group("blocks/0")
    block.attrs["location"] = text("nodes")
    block["data"] = np.array([[[0, 0, 0]] * 3, [[0, 0, 0], [0.3, 0.4, 0], [0.6, 0.8, 0]]], "f4")

    s = step.create_group("fields/S")
    s.attrs.update(type=5, description=text("Stress components"), componentLabels=text(["11", "22", "33", "12", "13", "23"]))
    block = s.create_group("blocks/0")
    block.attrs["location"] = text("elements")
    block["data"] = np.array([[[0] * 6] * 2, [[100, 0, 0, 0, 0, 0], [80, 0, 0, 0, 0, 0]]], "f4")

    t = step.create_group("fields/NT")
    t.attrs.update(type=2, description=text("Temperature"))
    block = t.create_group("blocks/0")
    block.attrs["location"] = text("ends")
    block["data"] = np.array([[20, 20, 20], [50, 30, 25]], "f4")

    tip = step.create_group("history/Node BAR-1.3")
    tip.attrs.update(node=3, description=text("Output at the tip"))
    tip["outputs/U1"] = np.array([[0, 0], [1, 0.6]], "f4")

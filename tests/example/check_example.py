#!/usr/bin/python3
"""Holds the records of the example against the solver's own tables.

The .frd file gives, per frame and per set of the deck, the largest displacement magnitude, the extreme stress components
and the extreme equivalent stress; the .dat file the largest displacement of the printed node set; the outline of the deck's
mesh its mass, centre and inertia. Nothing here is shared with the importer.

Usage: check_example.py --deck lug.inp --frd lug.frd --dat lug.dat --params params.txt
"""
import argparse
import collections
import math
import re
import sys

TOLERANCE = 1e-5
COMPONENTS = {"11": "SXX", "22": "SYY", "33": "SZZ", "12": "SXY", "13": "SZX", "23": "SYZ"}


def read_sets(deck):
    """Node and element sets of the deck, and the nodes of every element; sets within sets by their order."""
    nodes, elements, connectivity, current, mode = {}, {}, {}, None, ""
    for line in open(deck, encoding="ascii"):
        line = line.strip()
        if line.startswith("*"):
            parts = [p.strip() for p in line.split(",")]
            keys = dict(p.split("=") for p in parts[1:] if "=" in p)
            mode = parts[0].upper()
            current = None
            if mode in ("*NSET", "*NODE") and "NSET" in keys:
                current = nodes.setdefault(keys["NSET"].strip(), set())
            elif mode in ("*ELSET", "*ELEMENT") and "ELSET" in keys:
                current = elements.setdefault(keys["ELSET"].strip(), set())
            continue
        items = [i.strip() for i in line.split(",") if i.strip()]
        if mode in ("*NODE", "*ELEMENT"):
            current.add(int(items[0]))
            if mode == "*ELEMENT":
                connectivity[int(items[0])] = [int(i) for i in items[1:]]
        elif mode in ("*NSET", "*ELSET") and current is not None:
            for item in items:
                current |= {int(item)} if item.isdigit() else (nodes if mode == "*NSET" else elements)[item]
    return nodes, elements, connectivity


def read_frd(path):
    """Yields (step, increment or mode in the step, block name, {node: {component: value}})."""
    step = increment = counter = 0
    modes = {}
    rows = None
    for line in open(path, encoding="ascii"):
        key = line[:6]
        if line.startswith("    1PSTEP"):
            increment, step = int(line[36:48]), int(line[48:60])
        elif line.startswith("  100CL"):
            counter = int(line[58:63])
            modal = line[57] == "2"
            frame = modes.setdefault((step, counter), 1 + sum(s == step for s, _ in modes)) if modal else increment
        elif line.startswith(" -4"):
            name, components, rows = line[5:13].strip(), [], {}
        elif line.startswith(" -5") and line[33:38].strip() != "1":
            components.append(line[5:13].strip())
        elif rows is not None and key.startswith(" -1"):
            values = [float(line[13 + 12 * i:25 + 12 * i]) for i in range(len(components))]
            rows[int(line[3:13])] = dict(zip(components, values))
        elif rows is not None and key.startswith(" -3"):
            yield step, frame, name, rows
            rows = None


def mises(s):
    normal = (s["SXX"] - s["SYY"]) ** 2 + (s["SYY"] - s["SZZ"]) ** 2 + (s["SZZ"] - s["SXX"]) ** 2
    return math.sqrt(0.5 * normal + 3 * (s["SXY"] ** 2 + s["SYZ"] ** 2 + s["SZX"] ** 2))


class Check:
    """Compares numbers with records by name and counts them."""

    def __init__(self, params):
        self.records = dict(line.rstrip("\n").split("\t") for line in open(params, encoding="utf-8"))
        self.compared = 0
        self.failures = []

    def compare(self, name, expected, scale=0.0):
        self.compared += 1
        found = self.records.get(name)
        if found is None:
            self.failures.append(f"{name} is missing, expected {expected:.6g}")
        elif abs(float(found) - expected) > TOLERANCE * max(abs(expected), scale):
            self.failures.append(f"{name} is {found}, expected {expected:.6g}")

    def compare_list(self, name, expected):
        """A record in parentheses; small numbers count as a part of the largest one."""
        found = self.records.get(name, "()")[1:-1].split(", ")
        self.compared += 1
        scale = max(map(abs, expected))
        if len(found) != len(expected) or any(abs(float(f) - e) > TOLERANCE * scale for f, e in zip(found, expected)):
            self.failures.append(f"{name} is {found}, expected {expected}")


def density_of(deck):
    lines = [line.strip() for line in open(deck, encoding="ascii")]
    return float(lines[lines.index("*DENSITY") + 1])


def prism_edges(deck, connectivity):
    """The outline of a mesh of prisms along z, as edges ((x, y), (x, y)) with the material on the left; its two ends in z."""
    points = {}
    for line in open(deck, encoding="ascii"):
        if line.startswith("*ELEMENT"):
            break
        if line[0].isdigit():
            label, *at = line.split(",")
            points[int(label)] = tuple(map(float, at))
    low, high = (end(z for _, _, z in points.values()) for end in (min, max))
    edges = set()
    for corners in connectivity.values():
        base = [points[node] for node in corners[:4]]
        if base[0][2] == low:
            edges |= {(a[:2], b[:2]) for a, b in zip(base, base[1:] + base[:1])}
    return {edge for edge in edges if edge[::-1] not in edges}, low, high


def check_mass(check, deck, connectivity, density):
    """Moments of the area inside a polygon, edge by edge (Green's theorem), times the thickness, in every step."""
    edges, low, high = prism_edges(deck, connectivity)
    area = x = y = xx = yy = xy = 0.0
    for (x0, y0), (x1, y1) in edges:
        turn = x0 * y1 - x1 * y0
        area += turn / 2
        x, y = x + turn * (x0 + x1) / 6, y + turn * (y0 + y1) / 6
        xx += turn * (x0 * x0 + x0 * x1 + x1 * x1) / 12
        yy += turn * (y0 * y0 + y0 * y1 + y1 * y1) / 12
        xy += turn * (x0 * y1 + 2 * x0 * y0 + 2 * x1 * y1 + x1 * y0) / 24
    thickness, z = high - low, (low + high) / 2
    mass = density * area * thickness
    centre = (x / area, y / area, z)
    spread = mass * thickness ** 2 / 12
    about_centre = [mass * (xx / area - centre[0] ** 2), mass * (yy / area - centre[1] ** 2), spread,
                    mass * (xy / area - centre[0] * centre[1]), 0.0, 0.0]
    pairs = ((0, 0), (1, 1), (2, 2), (0, 1), (0, 2), (1, 2))
    about_origin = [own + mass * centre[i] * centre[j] for own, (i, j) in zip(about_centre, pairs)]
    inertia = [[m[1] + m[2], m[0] + m[2], m[0] + m[1], -m[3], -m[4], -m[5]] for m in (about_centre, about_origin)]
    for step in (1, 2, 3):
        check.compare(f"Step_{step}__Mass", mass)
        check.compare_list(f"Step_{step}__MassCenter", centre)
        check.compare_list(f"Step_{step}__InertiaCenter", inertia[0])
        check.compare_list(f"Step_{step}__InertiaOrigin", inertia[1])


def check_frd(check, path, nodes, elements, connectivity):
    regions = {"": None}
    regions.update({f"__{name.replace('-', '_')}": members for name, members in nodes.items()})
    for name, members in elements.items():
        regions[f"__{name.replace('-', '_')}"] = {n for element in members for n in connectivity[element]}
    element_regions = {f"__{name.replace('-', '_')}" for name in elements}
    for step, frame, name, rows in read_frd(path):
        head = f"Step_{step}__Frame_{frame}"
        for region, members in regions.items():
            values = [row for node, row in rows.items() if members is None or node in members]
            if name == "DISP" and region not in element_regions:
                lengths = [math.hypot(*row.values()) for row in values]
                check.compare(f"{head}{region}__U__mag__max", max(lengths))
                check.compare(f"{head}{region}__U__mag__min", min(lengths))
            if name == "STRESS":
                equivalent = [mises(row) for row in values]
                check.compare(f"{head}{region}__S__mises__max", max(equivalent))
                check.compare(f"{head}{region}__S__mises__min", min(equivalent), max(equivalent))
                for component, column in COMPONENTS.items():
                    numbers = [row[column] for row in values]
                    check.compare(f"{head}{region}__S__{component}__max", max(numbers))
                    check.compare(f"{head}{region}__S__{component}__min", min(numbers))


def check_dat(check, path):
    """What is printed in the time steps: (step, increment) in the order of their times."""
    frames = {0.25: (1, 1), 0.5: (1, 2), 0.75: (1, 3), 1.0: (1, 4), 1.5: (2, 1), 2.0: (2, 2)}
    table = re.compile(r" ([a-z]+) \([^)]*\) for set (\S+) and time +(\S+)\n\n((?: +\d.*\n)+)")
    histories = collections.defaultdict(list)
    for title, name, time, rows in table.findall(open(path, encoding="ascii").read()):
        if float(time) not in frames:
            continue
        step, frame = frames[float(time)]
        rows = [row.split() for row in rows.splitlines()]
        head = f"Step_{step}__Frame_{frame}"
        if title == "displacements":
            lengths = [math.hypot(*map(float, row[1:])) for row in rows]
            for field in (f"{name}__U", "U_PRINT"):
                check.compare(f"{head}__{field}__mag__max", max(lengths))
            for row in rows:
                histories[f"Step_{step}", f"U3_{row[0]}"].append(float(row[3]))
        if title == "stresses":
            # In files of this kind 13 comes before 23; the equivalent stress takes both alike.
            points = [dict(zip(("SXX", "SYY", "SZZ", "SXY", "SZX", "SYZ"), map(float, row[2:8]))) for row in rows]
            check.compare(f"{head}__S_IP__mises__max", max(map(mises, points)))
            check.compare(f"{head}__S_IP__11__max", max(point["SXX"] for point in points))
    for (step, output), values in histories.items():
        check.compare(f"{step}__History_Max__{output}", max(values))
        check.compare(f"{step}__History_Min__{output}", min(values))


def main():
    parser = argparse.ArgumentParser()
    for option in ("deck", "frd", "dat", "params"):
        parser.add_argument("--" + option, required=True)
    files = parser.parse_args()
    check = Check(files.params)
    nodes, elements, connectivity = read_sets(files.deck)
    check_mass(check, files.deck, connectivity, density_of(files.deck))
    from_deck = check.compared
    check_frd(check, files.frd, nodes, elements, connectivity)
    from_frd = check.compared - from_deck
    check_dat(check, files.dat)
    from_dat = check.compared - from_frd - from_deck
    print(f"compared {from_deck} records with the deck, {from_frd} with the .frd file, {from_dat} with the .dat file")
    print("\n".join(check.failures[:20]))
    if check.failures or from_deck < 12 or from_frd < 500 or from_dat < 30:
        sys.exit(f"{len(check.failures)} of {check.compared} differ")


if __name__ == "__main__":
    main()

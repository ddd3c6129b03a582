#!/usr/bin/python3
"""Makes lug.inp: a steel lug with an eye, clamped at the foot of its shank, pulled and bent by a pin.

A mapped mesh of C3D8I elements: rings around the eye whose outer line turns from a circle (top) into a square (bottom),
and a shank below. Lengths in mm, forces in N, stresses in MPa, masses in t.

Usage: make_lug.py > lug.inp
"""
import math

EYE, HEAD, FOOT, THICKNESS = 10.0, 24.0, -80.0, 12.0  # radii of eye and head, y of the foot, z extent
AROUND, RINGS, SHANK, LAYERS = 48, 9, 14, 5  # elements around the eye, from eye to head, down the shank, through z
PULL, BEND = 52000.0, 4000.0  # forces of the pin along y (first step) and along z (second step)


def outer_point(angle):
    """The outer line of the head at an angle from x: a circle above, a square below."""
    x, y = math.cos(angle), math.sin(angle)
    scale = HEAD if y >= -1e-9 else HEAD / max(abs(x), abs(y))
    return x * scale, y * scale


def ring_point(i, j):
    """Point i of AROUND on ring j of RINGS + 1; rings lie closer together at the eye."""
    angle = 2 * math.pi * i / AROUND
    t = (j / RINGS) ** 1.4
    outer = outer_point(angle)
    return tuple((1 - t) * EYE * c + t * o for c, o in zip((math.cos(angle), math.sin(angle)), outer))


class Mesh:
    """Nodes and elements in layers; nodes at one place are one node."""

    def __init__(self):
        self.nodes = {}
        self.points = []
        self.elements = []

    def node(self, x, y, layer):
        z = THICKNESS * layer / LAYERS
        key = (round(x, 6), round(y, 6), layer)
        if key not in self.nodes:
            self.points.append((x, y, z))
            self.nodes[key] = len(self.points)
        return self.nodes[key]

    def column(self, corners):
        """One element per layer over four corners (counter-clockwise); returns their labels."""
        labels = []
        for layer in range(LAYERS):
            low = [self.node(x, y, layer) for x, y in corners]
            high = [self.node(x, y, layer + 1) for x, y in corners]
            self.elements.append(low + high)
            labels.append(len(self.elements))
        return labels


def build():
    """The mesh and its sets: the rim of the eye, the head, the shank (elements); eye, foot and tip (nodes)."""
    mesh = Mesh()
    rim, head, shank = [], [], []
    for j in range(RINGS):
        for i in range(AROUND):
            corners = [ring_point(i, j), ring_point(i, j + 1), ring_point(i + 1, j + 1), ring_point(i + 1, j)]
            labels = mesh.column(corners)
            head += labels
            if j < 2:
                rim += labels
    first = AROUND * 5 // 8  # the lower corners of the square
    last = AROUND * 7 // 8
    for k in range(SHANK):
        y1, y0 = (-HEAD + (FOOT + HEAD) * n / SHANK for n in (k, k + 1))
        for i in range(first, last):
            x0, x1 = ring_point(i, RINGS)[0], ring_point(i + 1, RINGS)[0]
            shank += mesh.column([(x0, y0), (x1, y0), (x1, y1), (x0, y1)])
    eye = {mesh.node(*ring_point(i, 0), layer): i for i in range(AROUND) for layer in range(LAYERS + 1)}
    tip = [mesh.node(*ring_point(AROUND // 4, RINGS), layer) for layer in range(LAYERS + 1)]
    foot = [n for n, p in enumerate(mesh.points, 1) if abs(p[1] - FOOT) < 1e-6]
    return mesh, {"RIM": rim, "HEAD": head, "SHANK": shank}, {"EYE": sorted(eye), "FOOT": foot, "TIP": tip}, eye


def print_list(labels):
    for start in range(0, len(labels), 12):
        print(", ".join(str(label) for label in labels[start:start + 12]) + ",")


def print_loads(eye):
    """The pin presses on the upper half of the eye, as the cosine from its top."""
    weights = {n: max(0.0, math.sin(2 * math.pi * i / AROUND)) for n, i in eye.items()}
    total = sum(w * math.sin(2 * math.pi * eye[n] / AROUND) for n, w in weights.items())
    for n, w in sorted(weights.items()):
        if w > 1e-9:
            angle = 2 * math.pi * eye[n] / AROUND
            yield n, PULL * w * math.cos(angle) / total, PULL * w * math.sin(angle) / total, BEND * w / sum(weights.values())


def main():
    mesh, element_sets, node_sets, eye = build()
    print("*HEADING\nA lug, pulled and bent by its pin\n*NODE, NSET=ALL-NODES")
    for label, (x, y, z) in enumerate(mesh.points, 1):
        print(f"{label}, {x:.6f}, {y:.6f}, {z:.6f}")
    print("*ELEMENT, TYPE=C3D8I, ELSET=LUG")
    for label, nodes in enumerate(mesh.elements, 1):
        print(f"{label}, " + ", ".join(map(str, nodes)))
    for name, labels in element_sets.items():
        print(f"*ELSET, ELSET={name}")
        print_list(labels)
    for name, labels in node_sets.items():
        print(f"*NSET, NSET={name}")
        print_list(labels)
    print("*ELSET, ELSET=WATCHED-PARTS\nRIM, SHANK")
    print("*MATERIAL, NAME=STEEL\n*ELASTIC\n210000., 0.3\n*PLASTIC\n355., 0.\n420., 0.05\n480., 0.2")
    print("*DENSITY\n7.85E-9\n*SOLID SECTION, ELSET=LUG, MATERIAL=STEEL\n*BOUNDARY\nFOOT, 1, 3")
    requests = "*NODE FILE\nU, RF\n*EL FILE\nS, E, PEEQ"
    prints = "*NODE PRINT, NSET=TIP\nU\n*EL PRINT, ELSET=RIM\nS\n*EL PRINT, ELSET=LUG, TOTALS=ONLY\nELSE"
    loads = list(print_loads(eye))
    print("*STEP, NLGEOM, INC=50\nThe pin pulls\n*STATIC, DIRECT\n0.25, 1.\n*CLOAD")
    for n, fx, fy, _ in loads:
        print(f"{n}, 1, {fx:.6f}\n{n}, 2, {fy:.6f}")
    print(f"{requests}\n{prints}\n*END STEP")
    print("*STEP, NLGEOM, INC=50\nThe pin bends\n*STATIC, DIRECT\n0.5, 1.\n*CLOAD")
    for n, _, _, fz in loads:
        print(f"{n}, 3, {fz:.6f}")
    print(f"{requests}\n{prints}\n*END STEP")
    print("*STEP, PERTURBATION\nHow the pulled lug rings\n*FREQUENCY\n4\n*NODE FILE\nU\n*EL FILE\nS\n*END STEP")


if __name__ == "__main__":
    main()

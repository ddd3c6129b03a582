"""Small decks for the solver: bricks, wedges and tetrahedra, in pieces that share no nodes."""

CORNERS = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0), (0, 0, 1), (1, 0, 1), (1, 1, 1), (0, 1, 1)]
WEDGE = [(0, 0, 0), (1, 0, 0), (0, 1, 0), (0, 0, 1), (1, 0, 1), (0, 1, 1)]
TETRAHEDRON = [(0, 0, 0), (1, 0, 0), (0, 1, 0), (0, 0, 1)]
BRICK_EDGES = [(0, 1), (1, 2), (2, 3), (3, 0), (4, 5), (5, 6), (6, 7), (7, 4), (0, 4), (1, 5), (2, 6), (3, 7)]
WEDGE_EDGES = [(0, 1), (1, 2), (2, 0), (3, 4), (4, 5), (5, 3), (0, 3), (1, 4), (2, 5)]
TETRAHEDRON_EDGES = [(0, 1), (1, 2), (2, 0), (0, 3), (1, 3), (2, 3)]


class Mesh:
    """Nodes and elements by label, in the order in which the deck lists them."""

    def __init__(self):
        self.nodes = {}
        self.elements = {}  # type: {label: nodes}

    def node(self, point):
        """The label of the node at a point, a new one where there is none yet."""
        for label, known in self.nodes.items():
            if known == point:
                return label
        label = 3 * len(self.nodes) + 5
        self.nodes[label] = point
        return label

    def add(self, kind, origin, corners, edges=()):
        """An element at an origin, of unit size; its middle nodes on the edges."""
        points = [tuple(float(o + c) for o, c in zip(origin, corner)) for corner in corners]
        points += [tuple((a + b) / 2 for a, b in zip(points[i], points[j])) for i, j in edges]
        label = 10 * (1 + sum(len(elements) for elements in self.elements.values()))
        self.elements.setdefault(kind, {})[label] = [self.node(point) for point in points]
        return label

    def at(self, condition):
        """Labels of the nodes whose coordinates meet a condition."""
        return [label for label, point in self.nodes.items() if condition(*point)]

    def text(self):
        lines = ["*NODE, NSET=Nall"]
        lines += ["%d, %g, %g, %g" % (label, *point) for label, point in self.nodes.items()]
        for kind, elements in self.elements.items():
            lines.append(f"*ELEMENT, TYPE={kind}, ELSET=E{kind}")
            for label, nodes in elements.items():
                numbers = [str(n) for n in [label, *nodes]]
                lines += [",".join(numbers[i:i + 11]) + ("," if i + 11 < len(numbers) else "")
                          for i in range(0, len(numbers), 11)]
        return "\n".join(lines) + "\n"


def solids():
    """Two elements each of five shapes; those of bricks share nodes."""
    mesh = Mesh()
    for x in range(2):
        mesh.add("C3D20R", (x, 0, 0), CORNERS, BRICK_EDGES)
        mesh.add("C3D8", (x, 3, 0), CORNERS)
        mesh.add("C3D15", (2 * x, 6, 0), WEDGE, WEDGE_EDGES)
        mesh.add("C3D10", (2 * x, 9, 0), TETRAHEDRON, TETRAHEDRON_EDGES)
        mesh.add("C3D4", (2 * x, 12, 0), TETRAHEDRON)
    return mesh


def deck(mesh, steps, extra=""):
    """A whole deck: the mesh held at its lower side, the nodes of its upper side in the set TOP."""
    height = max(z for _, _, z in mesh.nodes.values())
    text = "*HEADING\npieces of every shape\n" + mesh.text() + extra
    text += "*NSET, NSET=Bottom side\n" + ",\n".join(map(str, mesh.at(lambda x, y, z: z == 0))) + "\n"
    text += "*NSET, NSET=TOP\n" + ",\n".join(map(str, mesh.at(lambda x, y, z: z == height))) + "\n"
    text += "*MATERIAL, NAME=STEEL\n*ELASTIC\n210000., 0.3\n*DENSITY\n7.8e-9\n*EXPANSION\n1.2e-5\n"
    for kind in mesh.elements:
        text += f"*SOLID SECTION, ELSET=E{kind}, MATERIAL=STEEL\n"
    return text + "*BOUNDARY\nBottom side, 1, 3\n" + "".join(steps)


def step(procedure, loads="", title="", output="*NODE FILE\nU, RF\n*EL FILE\nS, E, ENER\n", options=""):
    """One step; every step asks for its output anew."""
    title = title + "\n" if title else ""
    return f"*STEP{options}\n{title}{procedure}\n{loads}{output}*END STEP\n"

#!/usr/bin/python3
"""Holds a database against the result file that it was imported from, number by number.

A reading of its own of the result file, by columns and with numpy, that shares nothing with the importer.
Usage: frd_check.py job.frd job.odb. Prints what it compared and fails at the first difference.
"""
import collections
import pathlib
import sys

import numpy as np

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "endtoend"))
from expanded import expanded  # noqa: E402

# Field, columns of the block. Tensors come as XX YY ZZ XY YZ ZX and are kept as 11 22 33 12 13 23.
VECTORS = {"DISP": "U", "VELO": "V", "FORC": "RF", "FLUX": "HFL", "DISPI": "U_IM", "FORCI": "RF_IM", "CURR": "CURR",
           "EMFB": "EMFB", "EMFE": "EMFE"}
TENSORS = {"STRESS": "S", "TOSTRAIN": "E", "MESTRAIN": "ME", "THSTRAIN": "THE", "STRESSI": "S_IM",
           "TOSTRAII": "E_IM", "MESTRAII": "ME_IM"}
SCALARS = {"NDTEMP": "NT", "PE": "PEEQ", "ENER": "ENER", "ERROR": "S_ERROR", "ERRORI": "S_ERROR_IM", "RFL": "RFL",
           "ELPOT": "ELPOT", "TOTEMP": "TOTEMP", "TOPRES": "TOPRES", "MAFLOW": "MAFLOW"}
# Section forces stand in the columns of stresses: shear along 1 and 2, normal force, torque, bending about 1 and about 2.
SECTION_FORCES = [("SF", [0, 1, 2]), ("SM", [4, 5, 3])]
NODES_OF_CODE = {1: 8, 2: 6, 3: 4, 4: 20, 5: 15, 6: 10, 7: 3, 8: 6, 9: 4, 10: 8, 11: 2, 12: 3}


def deck_order(code, nodes):
    """The nodes of an element of the file in the order of the deck."""
    if code == 4:
        return nodes[:12] + nodes[16:] + nodes[12:16]
    if code == 5:
        return nodes[:9] + nodes[12:] + nodes[9:12]
    if code == 12:
        return [nodes[0], nodes[2], nodes[1]]
    return nodes


class Block:
    """One result block: where it belongs, its labels and numbers."""

    def __init__(self, step, increment, mode, header):
        self.step = step
        self.increment = increment
        self.mode = mode
        self.counter = int(header[58:63])
        self.value = float(header[12:24])
        self.kind = int(header[57:58])
        self.name = ""
        self.components = []
        self.labels = []
        self.rows = []
        self.has_section_forces = False

    def mapped(self):
        """Pairs of a field's name and its columns; tensors have six."""
        if self.name == "STRESS" and self.has_section_forces:
            return SECTION_FORCES
        if self.name in TENSORS:
            return [(TENSORS[self.name], [0, 1, 2, 3, 5, 4])]
        if self.name in SCALARS:
            return [(SCALARS[self.name], [0])]
        if self.name == "CONTACT":
            return [("CDIS", [0, 1, 2]), ("CSTR", [3, 4, 5])]
        if self.name == "SDV":
            return [(name, [i]) for i, name in enumerate(self.components)]
        if self.name in VECTORS:
            return ([(VECTORS[self.name], [0, 1, 2])] +
                    [(f"{self.name}_{name}", [i]) for i, name in enumerate(self.components) if i > 2])
        if len(self.components) == 1:
            return [(self.name, [0])]
        return [(f"{self.name}_{name}", [i]) for i, name in enumerate(self.components)]


class ResultFile:
    """Nodes, elements and complete blocks of a result file, whose stresses are section forces from a step on.

    Elements without tensors are springs and their like: what lies at their nodes is their neighbours'."""

    def __init__(self, path, section_forces_from=None, without_tensors=()):
        self.nodes = {}
        self.elements = {}  # label: nodes in the order of the deck
        self.without_tensors = set(without_tensors)
        self.blocks = []
        with open(path, encoding="latin-1", newline="\n") as file:
            self.read(iter(file))
        for block in self.blocks:
            block.has_section_forces = section_forces_from is not None and block.step >= section_forces_from

    def elements_with_tensors(self):
        return {label: nodes for label, nodes in self.elements.items() if label not in self.without_tensors}

    def read(self, lines):
        step = increment = mode = 0
        for line in lines:
            key = line[:6]
            if line.startswith("    1PSTEP"):
                increment, step, mode = int(line[36:48]), int(line[48:60]), 0
            elif line.startswith("    1PMODE"):
                mode = int(line[24:36])
            elif key == "    2C":
                self.read_nodes(lines)
            elif key == "    3C":
                self.read_elements(lines)
            elif key == "  100C":
                self.read_block(Block(step, increment, mode, line), lines)

    def read_nodes(self, lines):
        for line in lines:
            if line.startswith(" -3"):
                return
            self.nodes[int(line[3:13])] = [float(line[i:i + 12]) for i in (13, 25, 37)]

    def read_elements(self, lines):
        for line in lines:
            if line.startswith(" -3"):
                return
            label, code = int(line[3:13]), int(line[13:18])
            nodes = []
            while len(nodes) < NODES_OF_CODE[code]:
                row = next(lines).rstrip("\n")
                nodes += [int(row[i:i + 10]) for i in range(3, len(row), 10)]
            self.elements[label] = deck_order(code, nodes)

    def read_block(self, block, lines):
        line = next(lines)
        block.name = line[5:13].strip()
        for _ in range(int(line[13:18])):
            line = next(lines)
            if line[33:38].strip() != "1":
                block.components.append(line[5:13].strip())
        for line in lines:
            if line.startswith(" -3"):
                self.blocks.append(block)
                return
            line = line.rstrip("\n")
            numbers = [float(line[i:i + 12]) for i in range(13, len(line), 12)]
            if line.startswith(" -1"):
                block.labels.append(int(line[3:13]))
                block.rows.append(numbers)
            else:
                block.rows[-1] += numbers


def frames_of(blocks):
    """The blocks of each frame, (step, counter) in file order; those without rows make none."""
    frames = collections.OrderedDict()
    for block in blocks:
        if block.labels:
            frames.setdefault((block.step, block.counter), []).append(block)
    return frames


def stored(odb, step, field, frame):
    """Of every block of a field in a frame its location and its rows."""
    group = odb["steps"][step]["fields"][field]
    all_frames = list(range(len(odb["steps"][step]["frames/value"])))
    of_field = list(group["frames"]) if "frames" in group else all_frames
    for k in range(len(group["blocks"])):
        block = group["blocks"][str(k)]
        of_block = list(block["frames"]) if "frames" in block else of_field
        if frame in of_block:
            location = odb["locations"][block.attrs["location"].decode()]
            rows = block["data"][of_block.index(frame)]
            yield location, rows.reshape(len(rows), -1)


class Comparison:
    """Counts what was compared, and stops at the first difference."""

    def __init__(self, results, odb):
        self.results = results
        self.odb = odb
        self.numbers = 0
        self.frames = 0
        self.fields = set()

    def mesh(self):
        mesh = self.odb["assembly/instances/PART-1-1/mesh"]
        labels = list(mesh["nodes/labels"])
        expect(labels, list(self.results.nodes), "node labels")
        expect(mesh["nodes/coordinates"][()].tolist(), list(self.results.nodes.values()), "coordinates")
        elements = {}
        for group in mesh["elements"].values() if "elements" in mesh else ():
            elements.update(zip(group["labels"][()].tolist(), group["connectivity"][()].tolist()))
        expect(elements, self.results.elements, "elements")

    def steps(self):
        places = collections.Counter()
        # Frames of a step that have equal numbers are numbered anew, all of them.
        numbers = collections.Counter((blocks[0].step, blocks[0].increment) for blocks in frames_of(self.results.blocks).values())
        steps = {step for (step, _), count in numbers.items() if count > 1}
        self.repeated = {key for key in numbers if key[0] in steps}
        for (step, _), blocks in frames_of(self.results.blocks).items():
            name = f"Step-{step}"
            index = places[name]
            places[name] += 1
            self.frame(name, index, blocks)
        counts = {name: len(step["frames/value"]) for name, step in self.odb["steps"].items() if "frames" in step}
        expect({name: count for name, count in counts.items() if count > 0}, dict(places), "frames")

    def frame(self, step, index, blocks):
        self.frames += 1
        first = blocks[0]
        table = self.odb["steps"][step]["frames"]
        in_time = first.kind in (0, 1, 3) and not (first.kind == 1 and first.increment == 0) and first.mode == 0
        if not in_time:
            expect(table["value"][index], first.value, "frequency or factor")
        elif (first.step, first.increment) not in self.repeated:
            expect(table["incrementNumber"][index], first.increment, "increment")
        if first.mode > 0:
            text = table["description"][index].decode()
            expect(text.startswith(f"Mode {first.mode}: "), True, text)
        for block in blocks:
            for field, columns in block.mapped():
                self.fields.add(field)
                rows = np.array(block.rows, dtype="f8")[:, columns].astype("f4")
                by_node = {label: row.tobytes() for label, row in zip(block.labels, rows)}
                self.field(step, index, field, by_node, len(columns) == 6)

    def field(self, step, index, field, by_node, is_tensor):
        place = f"{step} frame {index} {field}"
        found = {}
        for location, rows in stored(self.odb, step, field, index):
            keys = location["nodeLabels"][()].tolist()
            if is_tensor:
                keys = list(zip(location["elementLabels"][()].tolist(), keys))
            self.numbers += rows.size
            expect(len(found), 0, f"{place}: more than one block")
            # Scalars are stored as doubles, which the file has not more digits for.
            found.update((key, row.astype("f4").tobytes()) for key, row in zip(keys, rows))
        expected = by_node
        if is_tensor:
            expected = {(element, node): by_node[node] for element, nodes in self.results.elements_with_tensors().items()
                        for node in nodes if node in by_node}
        expect(found, expected, place)


def expect(found, expected, what):
    if found != expected:
        raise AssertionError(f"{what}: the database and the result file differ")


def compare(frd, odb, section_forces_from=None, without_tensors=()):
    """Compares everything; returns the counts of frames, fields and numbers."""
    with expanded(odb) as database:
        comparison = Comparison(ResultFile(frd, section_forces_from, without_tensors), database)
        comparison.mesh()
        comparison.steps()
    return comparison.frames, len(comparison.fields), comparison.numbers


if __name__ == "__main__":
    print("%s: %d frames, %d fields, %d numbers are equal" % (sys.argv[1], *compare(sys.argv[1], sys.argv[2])))

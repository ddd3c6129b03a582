"""Reads output databases of both layouts whole into plain objects, with h5py."""
import h5py
import numpy as np

PLACES = ["11", "22", "33", "12", "13", "23"]
ORDERS = {5: PLACES, 6: ["11", "22", "33", "12"], 7: ["11", "22", "12"], 8: ["11", "22", "33", "12"],
          9: ["11", "22", "12"]}


def is_tensor(kind):
    return 5 <= kind <= 9


def name_of(link):
    return link.replace("%2F", "/").replace("%2E", ".").replace("%25", "%")


def plain(value):
    """An attribute as Python has it: text, a number, a list of either."""
    if isinstance(value, bytes):
        return value.rstrip(b"\0").decode()
    if isinstance(value, np.ndarray):
        return [plain(v) for v in value.ravel()]
    return value.item() if isinstance(value, np.generic) and not isinstance(value, np.bytes_) else value


def attribute(item, name, absent):
    return plain(item.attrs[name]) if name in item.attrs else absent


def members(group, path):
    """The members of a group that may be absent, by name."""
    if path not in group:
        return []
    return sorted(((name_of(link), item) for link, item in group[path].items()), key=lambda pair: pair[0].encode())


class Block:
    """Rows of one field at one place in one frame."""

    def __init__(self, field, item, place, rows):
        self.field = field
        self.type = attribute(item, "type", field.type)
        self.labels = attribute(item, "componentLabels", []) or field.labels
        self.instance = attribute(place, "instance", "")
        self.position = attribute(place, "position", "")
        self.has_elements = self.position != "nodal"
        self.elements = self._labels(place, "elementLabels", self.has_elements)
        self.nodes = self._labels(place, "nodeLabels", self.position in ("nodal", "elementNodal"))
        self.points = self._labels(place, "integrationPoints", self.position == "integrationPoint")
        self.is_double = rows.dtype.itemsize == 8
        rows = rows.astype("f8" if self.is_double else "f4")
        self.rows = rows if rows.ndim > 1 else rows.reshape(-1, 1)

    @staticmethod
    def _labels(place, name, wanted):
        return [int(v) for v in place[name][...]] if wanted else None

    def subset(self, chosen):
        """The same block with some of its rows."""
        part = object.__new__(Block)
        part.__dict__ = dict(self.__dict__)
        part.rows = self.rows[chosen]
        part.elements = self.elements and [self.elements[i] for i in chosen]
        part.nodes = self.nodes and [self.nodes[i] for i in chosen]
        part.points = self.points and [self.points[i] for i in chosen]
        return part

    def is_element_based(self):
        return self.has_elements and len(self.rows) > 0

    def component_columns(self):
        """Of a tensor block: for each of the six components the column that holds it, None where none does."""
        labels = self.labels or ORDERS[self.type]
        columns = [None] * 6
        for column in reversed(range(self.rows.shape[1])):
            if labels[column][-2:] in PLACES:
                columns[PLACES.index(labels[column][-2:])] = column
        return columns

    def tensors(self):
        """All rows as six components in double, engineering shears halved."""
        out = np.zeros((len(self.rows), 6))
        for place, column in enumerate(self.component_columns()):
            if column is not None:
                out[:, place] = self.rows[:, column]
        if self.field.engineering_shear:
            out[:, 3:] *= 0.5
        return out

    def data(self):
        """All rows by component label of the field."""
        if not self.field.labels:
            return self.rows
        out = np.zeros((len(self.rows), len(self.field.labels)), self.rows.dtype)
        for place, label in enumerate(self.field.labels):
            if label in self.labels:
                out[:, place] = self.rows[:, self.labels.index(label)]
        return out


class Field:
    def __init__(self, name, item):
        self.name = name
        self.description = attribute(item, "description", "")
        self.type = attribute(item, "type", 0)
        self.labels = attribute(item, "componentLabels", [])
        self.invariants = attribute(item, "validInvariants", [])
        self.engineering_shear = bool(attribute(item, "engineeringShear", 0))
        self.blocks = []

    def subset(self, chosen, kind):
        """`chosen` holds the labels of a set by instance."""
        part = object.__new__(Field)
        part.__dict__ = dict(self.__dict__)
        part.blocks = []
        for block in self.blocks:
            labels = block.elements if kind == "ELEMENT_SET" else block.nodes
            wanted = chosen.get(block.instance, set())
            rows = [i for i, label in enumerate(labels or []) if label in wanted]
            if rows:
                part.blocks.append(block.subset(rows))
        return part


class Frame:
    def __init__(self, increment, description):
        self.increment = increment
        self.description = description
        self.fields = []


class Step:
    def __init__(self, name, item):
        self.name = name
        self.mass = float(attribute(item, "mass", -1.0))
        self.mass_center = attribute(item, "massCenter", [])
        self.inertia_center = attribute(item, "inertiaAboutCenter", [])
        self.inertia_origin = attribute(item, "inertiaAboutOrigin", [])
        self.regions = [Region(*member) for member in members(item, "history")]
        self.frames = []


class Region:
    def __init__(self, name, item):
        self.name = name
        self.place = {name: attribute(item, name, absent) for name, absent in
                      (("node", -1), ("element", -1), ("integrationPoint", 0), ("sectionPoint", 0), ("set", ""))}
        label = ""
        if self.place["node"] >= 0:
            label = str(self.place["node"])
        if self.place["element"] >= 0:
            label = str(self.place["element"])
        if self.place["integrationPoint"] != 0:
            label = str(self.place["integrationPoint"])
        if self.place["sectionPoint"] > 0:
            label = str(self.place["sectionPoint"])
        if self.place["set"] != "":
            label = self.place["set"]
        self.label = label
        self.outputs = [(name, data[...].astype("f4")) for name, data in members(item, "outputs")]


class Database:
    """`regions` lists what is visited besides the whole model: (kind, tag, labels by instance)."""

    def __init__(self, path):
        with h5py.File(path) as file:
            self.layout = attribute(file, "layout", 0)
            self.regions = self._regions(file)
            links = list(file["steps"]) if "steps" in file else []
            if "steps" in file and not file["steps"].id.get_create_plist().get_link_creation_order():
                links = sorted(links, key=str.encode)
            self.steps = [self._step(file, name_of(link), file["steps"][link]) for link in links]

    @staticmethod
    def _regions(file):
        parts = {name: attribute(item, "part", "") for name, item in members(file, "assembly/instances")}
        regions = []

        def walk(owner, tag, labels_of):
            for link, kind in (("elementSets", "ELEMENT_SET"), ("nodeSets", "NODE_SET")):
                for name, item in members(owner, link):
                    regions.append((kind, tag + name, labels_of(item)))

        if "assembly" in file:
            walk(file["assembly"], "__",
                 lambda item: {name_of(link): set(map(int, data[...])) for link, data in item.items()})
        for name, item in members(file, "assembly/instances"):
            walk(item, f"__{name}_", lambda data, name=name: {name: set(map(int, data[...]))})
        for part, item in members(file, "parts"):
            walk(item, f"__{part}_", lambda data, part=part: {
                instance: set(map(int, data[...])) for instance, of in parts.items() if of == part})
        return regions

    def _step(self, file, name, item):
        step = Step(name, item)
        return self._frames_1(step, item) if self.layout == 1 else self._frames_2(file, step, item)

    @staticmethod
    def _frames_1(step, item):
        for _, frame_item in sorted(item.get("frames", {}).items(), key=lambda pair: int(pair[0])):
            frame = Frame(int(attribute(frame_item, "incrementNumber", 0)), attribute(frame_item, "description", ""))
            for name, field_item in members(frame_item, "fields"):
                field = Field(name, field_item)
                for _, block in sorted(field_item.get("blocks", {}).items(), key=lambda pair: int(pair[0])):
                    field.blocks.append(Block(field, block, block, block["data"][...]))
                frame.fields.append(field)
            step.frames.append(frame)
        return step

    @staticmethod
    def _frames_2(file, step, item):
        if "frames" in item:
            increments, texts = item["frames/incrementNumber"][...], item["frames/description"][...]
            step.frames = [Frame(int(i), plain(t)) for i, t in zip(increments, texts)]
        for name, field_item in members(item, "fields"):
            in_field = list(field_item["frames"][...]) if "frames" in field_item else list(range(len(step.frames)))
            blocks = sorted(field_item.get("blocks", {}).items(), key=lambda pair: int(pair[0]))
            for number, frame in enumerate(step.frames):
                if number not in in_field:
                    continue
                field = Field(name, field_item)
                for _, block in blocks:
                    # Without a list of its own a block has the field's frames, in the order of that list.
                    slabs = list(block["frames"][...]) if "frames" in block else in_field
                    if number in slabs:
                        place = file["locations"][attribute(block, "location", "").replace("%", "%25").replace("/", "%2F")]
                        field.blocks.append(Block(field, block, place, block["data"][slabs.index(number)]))
                frame.fields.append(field)
        return step

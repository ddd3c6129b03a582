"""Random databases in the first two layouts, and configurations for them, the same for the same seed."""
import random

import h5py
import numpy as np

from database import ORDERS, is_tensor

SIZES = [0, 1, 2, 3, 7, 31, 32, 33, 40, 41, 42, 43, 64, 100, 150, 200]
SET_NAMES = ["TOP", "Edge-1", "TIP NODES", "_PickedSet5", "ErrWarnSet", "Info", "warning", "a/b", "100%", "Fläche", ".", "S 1-x"]
FIELD_NAMES = ["S", "S", "U", "NT 11", "E-TOTAL", "PEEQ", "A/B", "S%"]
STEP_NAMES = ["Step-1", "Load Case 2", "Aa", "Z-1", "b/c"]
DESCRIPTIONS = ["Stress components", "Spatial displacement", "Element volume", "", "whole Stress of Element", "stress"]
# Types that mean nothing to the extraction, whose numbers it takes as they are.
OTHER_TYPES = [4, 4, 0, 1, 10, -7, 2**31 - 1]
INVARIANTS = [1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11]
KEYWORDS = ["EXTRACT_MASS", "EXTRACT_HISTORY", "EXTRACT_FIELD", "MINMAX_HISTORY", "EXTRACT_ALL", "EXTRACT_STRESS",
            "EXTRACT_SPATIAL", "EXTRACT_ELEMENT", "EXTRACT_FIELD_SETS", "EXTRACT_FIELD_COMPONENTS", "ABSOLUTE_MAX",
            "ABSOLUTE_MIN", "ENGINEERING_MIN", "ENGINEERING_MAX", "TENSOR_INVARIANTS"]
PERCENTAGES = ["0", " 12.5", "7%", "abc", "1e1", "250", "-3", " 100", "33.333333333333333333333333", "50", "+.5e2", "99",
               "\t20 percent", "1e400", "nan", "inf", "0x10"]


def link(name):
    name = name.replace("%", "%25").replace("/", "%2F")
    return "%2E" if name == "." else name


class Generator:
    def __init__(self, seed):
        self.random = random.Random(seed)
        self.numbers = np.random.default_rng(seed)
        self.layout = 1 if self.random.random() < 0.3 else 2

    def chance(self, probability):
        return self.random.random() < probability

    def some(self, items, least=0, most=3):
        items = list(dict.fromkeys(items))
        return self.random.sample(items, min(len(items), self.random.randint(least, most)))

    # How the same things are stored in one layout or the other.

    def text(self, value):
        if self.layout == 1 and self.chance(0.5):
            return value
        raw = value.encode()
        return np.array(raw, dtype=h5py.string_dtype("utf-8", max(1, len(raw) + self.random.randint(0, 3))))

    def texts(self, values):
        if self.layout == 1 and self.chance(0.5):
            return np.array(values, dtype=h5py.string_dtype("utf-8"))
        raw = [v.encode() for v in values]
        return np.array(raw, dtype=h5py.string_dtype("utf-8", max([1] + [len(v) for v in raw])))

    def integers(self, values):
        return np.array(values, dtype=self.random.choice(["<i4", "<i4", "<i4", ">i4", "<i8", "<i2", "<u4"]))

    def signed(self, values):
        return np.array(values, dtype=self.random.choice(["<i4", "<i4", ">i4", "<i8"]))

    def store(self, group, name, array, frames=False):
        if frames and self.layout == 2 and array.size and self.chance(0.2):
            group.create_dataset(name, data=array, chunks=(1,) + array.shape[1:], compression=self.random.choice(["gzip", None]),
                                 fletcher32=True)
        else:
            group.create_dataset(name, data=array)

    # Numbers.

    def rows(self, count, width, kind, frames=1):
        """[frames, count, width]; in some of them rows repeat, the same ones in all frames."""
        rows = self.numbers_of(frames * count, width, kind).reshape(frames, count, width)
        if count and self.chance(0.4):
            rows = rows[:, self.numbers.integers(0, self.random.choice([1, count // 4 + 1, count]), count)]
        return rows

    def numbers_of(self, count, width, kind):
        size = (count, width)
        flavour = self.random.choice(["usual", "usual", "ties", "special", "tiny", "huge", "steps"])
        if flavour == "ties":
            values = self.numbers.integers(-3, 4, size).astype("f8")
        elif flavour == "steps":
            values = np.arange(count * width, dtype="f8").reshape(size) * self.random.choice([1, -1])
        else:
            values = self.numbers.normal(0, 100, size)
        if flavour == "tiny":
            values = values * 10.0 ** self.numbers.integers(-44, -15, size)
        if flavour == "huge":
            values = values * 10.0 ** self.numbers.integers(5, 17, size)
        if flavour == "special" and values.size:
            for special in (np.nan, np.inf, -np.inf, 0.0, -0.0):
                for _ in range(self.random.randint(0, 2)):
                    values.flat[self.random.randrange(values.size)] = special
        with np.errstate(over="ignore"):
            return values.astype(kind)

    # The model.

    def make(self, path):
        options = {} if self.layout == 1 else {"libver": ("v110", "v110")}
        with h5py.File(path, "w", **options) as file:
            file.attrs["layout"] = self.signed(self.layout)[()]
            self.parts = self.some(["P", "PART-2"], 1, 2)
            for part in self.parts:
                self.sets(file.create_group("parts/" + link(part)))
            assembly = file.create_group("assembly")
            self.instances = {name: self.random.choice(self.parts) for name in self.some(["I-1", "PART-1-1", "C d"], 1, 3)}
            for name, part in self.instances.items():
                group = assembly.create_group("instances/" + link(name))
                group.attrs["part"] = self.text(part)
                self.sets(group)
            for kind in ("elementSets", "nodeSets"):
                for name in self.some(SET_NAMES):
                    owner = assembly.create_group(f"{kind}/{link(name)}")
                    for instance in self.some(self.instances):
                        owner[link(instance)] = self.integers(self.labels(self.random.choice([0, 5, 20, 60])))
            self.locations = file.create_group("locations") if self.layout == 2 else None
            self.places = 0
            steps = file.create_group("steps", track_order=True)
            for name in self.some(STEP_NAMES, 1, 2):
                self.step(steps.create_group(link(name), track_order=self.chance(0.5)))

    def labels(self, count):
        return [self.random.randint(1, 80) for _ in range(count)]

    def sets(self, owner):
        for kind in ("elementSets", "nodeSets"):
            for name in self.some(SET_NAMES, 0, 2):
                owner[f"{kind}/{link(name)}"] = self.integers(self.labels(self.random.choice([0, 5, 40])))

    def place(self, group, count):
        """Writes where rows lie; `group` is a location or a block of layout 1."""
        position = self.random.choice(["nodal", "integrationPoint", "elementNodal", "centroid", "wholeElement"])
        group.attrs["instance"] = self.text(self.random.choice(list(self.instances)))
        group.attrs["position"] = self.text(position)
        if self.chance(0.5):
            group.attrs["elementType"] = self.text("C3D8")
        if self.chance(0.3):
            group.attrs["sectionPoint"] = self.signed(self.random.randint(0, 5))[()]
        if position in ("nodal", "elementNodal"):
            group["nodeLabels"] = self.integers(self.labels(count))
        if position != "nodal":
            group["elementLabels"] = self.integers(self.labels(count))
        if position == "integrationPoint":
            group["integrationPoints"] = self.integers([i % 8 + 1 for i in range(count)])

    def new_location(self, count):
        name = self.random.choice(["loc", "nodes of", "x/"]) + str(self.places)
        self.places += 1
        self.place(self.locations.create_group(link(name)), count)
        return name

    # Results.

    def component_labels(self, kind):
        if kind == 3:
            return self.random.choice([["1", "2", "3"], ["U1", "U2"], ["1", "2", "3", "4"], ["1"], []])
        if not is_tensor(kind):
            return self.random.choice([[], [], ["T"], ["A", "B"]])
        labels = list(ORDERS[kind])
        if self.chance(0.3):
            self.random.shuffle(labels)
        if self.chance(0.3):
            labels = labels[:self.random.randint(1, len(labels))]
        if self.chance(0.3):
            labels = ["S" + label for label in labels]
        if self.chance(0.1):
            labels.append("Q")
        return [] if self.chance(0.15) else labels

    def field_form(self):
        kind = self.random.choice(OTHER_TYPES if self.chance(0.06) else [2, 3, 5, 5, 5, 6, 7, 8, 9])
        labels = self.component_labels(kind)
        blocks = []
        for _ in range(self.random.choice([0, 1, 1, 1, 2, 3])):
            own = self.random.choice([2, 3, 4, 5, 7]) if self.chance(0.08) else kind
            own_labels = self.component_labels(own) if own != kind or self.chance(0.2) else []
            used = own_labels or labels
            if used:
                width = len(used)
            else:
                width = len(ORDERS[own]) if is_tensor(own) else self.random.randint(1, 3)
            numbers = "f8" if self.chance(0.25 if own == 2 else 0.06) else self.random.choice(["f4", "f4", "f4", ">f4"])
            blocks.append((own if own != kind else None, own_labels, width, numbers, self.random.choice(SIZES)))
        return kind, labels, blocks

    def describe(self, item, kind, labels):
        item.attrs["type"] = self.signed(kind)[()]
        item.attrs["description"] = self.text(self.description)
        if labels:
            item.attrs["componentLabels"] = self.texts(labels)
        if self.valid:
            item.attrs["validInvariants"] = self.signed(self.valid)
        if self.shear is not None:
            item.attrs["engineeringShear"] = self.signed(self.shear)[()]

    def step(self, step):
        if self.chance(0.6):
            step.attrs["mass"] = self.random.choice([-1.0, 2.5, 0.0, 1234567.0, 1e-9])
            for name, count in (("massCenter", 3), ("inertiaAboutCenter", 6), ("inertiaAboutOrigin", 6)):
                if self.chance(0.6):
                    step.attrs[name] = self.numbers.normal(0, 10, count)
        for name in self.some(["Node 1", "Assembly", "E-2", "z"], 0, 3):
            self.history(step.create_group("history/" + link(name)))
        frames = self.random.choice([0, 1, 1, 2, 3])
        increments = [self.random.choice([-2, 0, 1, 7, 100000]) + i for i in range(frames)]
        fields = self.some(FIELD_NAMES, 1, 4)
        forms = {}
        for name in fields:
            self.description = self.random.choice(DESCRIPTIONS)
            self.valid = self.random.sample(INVARIANTS, self.random.randint(0, 11))
            self.shear = self.random.choice([None, 0, 1])
            forms[name] = (self.field_form(), self.description, self.valid, self.shear)
        if self.layout == 1:
            self.frames_of_layout_1(step, increments, forms)
        else:
            self.frames_of_layout_2(step, increments, forms)

    def history(self, region):
        region.attrs["description"] = self.text("a region")
        if self.chance(0.5):
            region.attrs["node"] = self.signed(self.random.choice([-1, 0, 7]))[()]
        if self.chance(0.3):
            region.attrs["element"] = self.signed(self.random.choice([-1, 0, 12]))[()]
        if self.chance(0.3):
            region.attrs["integrationPoint"] = self.signed(self.random.choice([-3, 0, 2]))[()]
        if self.chance(0.3):
            region.attrs["sectionPoint"] = self.signed(self.random.choice([-1, 0, 3]))[()]
        if self.chance(0.4):
            region.attrs["set"] = self.text(self.random.choice(["", "TIP NODES", "A-1"]))
        for name in self.some(["U1", "RF1 - total", "ALLKE", "p/q"], 0, 3):
            shape = (self.random.choice([0, 1, 2, 20]), self.random.choice([0, 1, 2, 2, 2, 3]))
            region[f"outputs/{link(name)}"] = self.numbers_of(*shape, "f4")

    def frames_of_layout_1(self, step, increments, forms):
        for number, increment in enumerate(increments):
            frame = step.create_group(f"frames/{number}")
            frame.attrs["incrementNumber"] = self.signed(increment)[()]
            frame.attrs["value"] = float(number)
            frame.attrs["description"] = self.text(self.random.choice(["", "Increment 1"]))
            for name, ((kind, labels, blocks), self.description, self.valid, self.shear) in forms.items():
                if self.chance(0.2):
                    continue
                field = frame.create_group("fields/" + link(name))
                if self.chance(0.15):  # in this frame it says something else of itself
                    self.description, self.valid = self.random.choice(DESCRIPTIONS), self.random.sample(INVARIANTS, 4)
                    self.shear = self.random.choice([None, 0, 1])
                self.describe(field, kind, labels)
                for k, (own, own_labels, width, numbers, count) in enumerate(blocks):
                    block = field.create_group(f"blocks/{k}")
                    self.place(block, count)
                    self.override(block, own, own_labels)
                    rows = self.rows(count, width, numbers)[0]
                    block["data"] = rows[:, 0] if width == 1 and self.chance(0.5) else rows

    def override(self, block, own, own_labels):
        if own is not None:
            block.attrs["type"] = self.signed(own)[()]
        if own_labels:
            block.attrs["componentLabels"] = self.texts(own_labels)

    def frames_of_layout_2(self, step, increments, forms):
        group = step.create_group("frames")
        group["incrementNumber"] = self.signed(increments)
        group["value"] = np.arange(len(increments), dtype="f8")
        group["description"] = self.texts([self.random.choice(["", "Increment"]) for _ in increments])
        for name, ((kind, labels, blocks), self.description, self.valid, self.shear) in forms.items():
            field = step.create_group("fields/" + link(name))
            self.describe(field, kind, labels)
            frames = list(range(len(increments)))
            if self.chance(0.4):
                frames = self.random.sample(frames, self.random.randint(0, len(frames)))
                field["frames"] = self.integers(frames)
            for k, (own, own_labels, width, numbers, count) in enumerate(blocks):
                block = field.create_group(f"blocks/{k}")
                block.attrs["location"] = self.text(self.new_location(count))
                self.override(block, own, own_labels)
                own_frames = frames
                if self.chance(0.3):
                    own_frames = self.random.sample(frames, self.random.randint(0, len(frames)))
                    block["frames"] = self.integers(own_frames)
                rows = self.rows(count, width, numbers, len(own_frames))
                if width == 1 and self.chance(0.5):
                    rows = rows[:, :, 0]
                self.store(block, "data", rows, frames=True)

    # The configuration.

    def configuration(self):
        end = self.random.choice(["\n", "\n", "\r\n"])
        lines = ["remarks, EXTRACT_MASS among them"] if self.chance(0.3) else []
        lines.append("*** ODB EXTRACTIONS" + (" EXTRACT_MASS" if self.chance(0.1) else ""))
        chosen = [word for word in KEYWORDS if self.chance(0.6)]
        if self.chance(0.8):
            chosen += ["EXTRACT_FIELD", "EXTRACT_ALL", "EXTRACT_FIELD_SETS"]
        if self.chance(0.15):
            chosen.append("DO_NOT_COMPUTE_VALUES")
        if self.chance(0.8):
            chosen.append("PERCENTAGE" + self.random.choice(["=", " = ", "="]) + self.random.choice(PERCENTAGES))
        self.random.shuffle(chosen)
        return end.join(lines + chosen) + (end if self.chance(0.7) else "")

"""Reads a page of `kolvex report` as a browser would, with numpy and nothing of ours."""
import base64
import html.parser
import json
import zlib

import numpy as np

TYPES = {"f32": ("u4", "f4"), "i32": ("u4", "i4"), "u16": ("u2", "u2")}


class Scripts(html.parser.HTMLParser):
    """The contents of all script elements, the text of the title, and the names of all elements."""

    def __init__(self, text):
        super().__init__()
        self.scripts, self.title, self.elements, self.within = [], "", [], None
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        self.elements.append(tag)
        self.within = tag
        if tag == "script":
            self.scripts.append([dict(attrs), ""])

    def handle_endtag(self, tag):
        self.within = None

    def handle_data(self, data):
        if self.within == "script":
            self.scripts[-1][1] += data
        elif self.within == "title":
            self.title += data


class Page:
    def __init__(self, path):
        self.bytes = path.read_bytes()
        self.markup = Scripts(self.bytes.decode())
        by_id = {attrs.get("id"): text for attrs, text in self.markup.scripts}
        self.description = json.loads(by_id["description"])
        self.data = by_id["data"]

    def array(self, reference):
        raw = zlib.decompress(base64.b64decode(self.data[reference["at"]:reference["at"] + reference["length"]], validate=True))
        if reference["type"] == "u8":
            return raw
        bits, final = TYPES[reference["type"]]
        planes = np.frombuffer(raw, np.uint8).reshape(np.dtype(bits).itemsize, reference["items"])
        coded = np.ascontiguousarray(planes.T).view("<" + bits).ravel().astype(np.int64)
        differences = np.where(coded % 2 == 0, coded // 2, -(coded + 1) // 2)
        columns = [np.cumsum(differences[i::reference["stride"]]) for i in range(min(reference["stride"], len(differences)))]
        items = np.empty(len(differences), np.int64)
        for i, column in enumerate(columns):
            items[i::reference["stride"]] = column
        return (items % (1 << 8 * np.dtype(bits).itemsize)).astype(bits).view(final)

    def vertices(self):
        """Coordinates by the label of the node."""
        model = self.description["model"]
        labels = self.array(model["nodeLabels"])
        return dict(zip(labels.tolist(), self.array(model["coordinates"]).reshape(-1, 3).tolist()))

    def faces(self):
        """(label of the element, corners by labels of nodes, whether it is an inner one) of each face."""
        model = self.description["model"]
        nodes, cells = self.array(model["nodeLabels"]), self.array(model["elementLabels"])
        found = []
        for kind in model.get("faces", []):
            places = self.array(kind["vertices"]).reshape(-1, kind["nodes"])
            for place, owner in zip(places, self.array(kind["elements"])):
                found.append((int(cells[owner]), frozenset(nodes[place[:kind["corners"]]].tolist()), kind["inner"]))
        return found

    def members(self, name):
        """Labels that can be seen of a set."""
        [entry] = [s for s in self.description["sets"] if s["name"] == name]
        labels = self.array(self.description["model"]["elementLabels" if entry["kind"] == "element" else "nodeLabels"])
        return sorted(labels[self.array(entry["members"])].tolist())

    def frame(self, step, frame):
        return next(f for f in self.description["frames"] if (f["step"], f["frame"]) == (step, frame))

    def entry(self, step, frame, field):
        number = [f["name"] for f in self.description["fields"]].index(field)
        return next(f for f in self.frame(step, frame)["fields"] if f["field"] == number)

    def column(self, step, frame, field, name):
        """Numbers by label of the node or element, and the size of a step between them."""
        number = [f["name"] for f in self.description["fields"]].index(field)
        on = self.description["fields"][number]["on"]
        lowest, highest, reference = self.entry(step, frame, field)["columns"][name]
        items = self.array(reference)
        numbers = np.where(items == 65535, np.nan, lowest + (highest - lowest) * (items / 65534))
        labels = self.array(self.description["model"]["nodeLabels" if on == "vertices" else "elementLabels"])
        return dict(zip(labels.tolist(), numbers.tolist())), (highest - lowest) / 65534

    def records(self):
        lines = self.array(self.description["records"]["lines"]).decode().split("\n")
        assert lines.pop() == ""
        return [line.split("\t", 1) for line in lines]

"""Writes what a database holds in another layout, with h5py: files that no writer of ours has seen."""
import h5py
import numpy as np

from database import Database, attribute, members, name_of

PACKED = {"elementSets": "packedElementSets", "nodeSets": "packedNodeSets"}
FIRST, PLAIN, NEW, INDEXED = "layout 1", "layout 2", "layout 3", "layout 3, indexed"


def link(name):
    name = name.replace("%", "%25").replace("/", "%2F")
    return "%2E" if name == "." else name


def texts(values):
    raw = [value.encode() for value in values]
    return np.array(raw, dtype=h5py.string_dtype("utf-8", max([1] + [len(value) for value in raw])))


def text(value):
    return texts([value])[0]


def integers(values):
    return np.array(values, dtype="<i4")


class Rewriting:
    """One database, to be written in other layouts."""

    def __init__(self, path):
        self.database = Database(path)
        self.parts, self.instances, self.assembly = {}, {}, {}
        with h5py.File(path) as file:
            for name, item in members(file, "parts"):
                self.parts[name] = self._sets(item, lambda data: {"": integers(data[...])})
            for name, item in members(file, "assembly/instances"):
                self.instances[name] = (attribute(item, "part", ""), self._sets(item, lambda data: {"": integers(data[...])}))
            if "assembly" in file:
                self.assembly = self._sets(file["assembly"], lambda group: {
                    name_of(instance): integers(data[...]) for instance, data in group.items()})

    @staticmethod
    def _sets(owner, labels_of):
        return {kind: {name: labels_of(item) for name, item in members(owner, kind)} for kind in ("elementSets", "nodeSets")}

    def changes(self):
        """Whether a field says something else of itself in some of its frames, which layout 2 cannot."""
        return any(len({self.form(field) for frame in step.frames for field in frame.fields if field.name == name}) > 1
                   for step in self.database.steps for name in {f.name for frame in step.frames for f in frame.fields})

    @staticmethod
    def form(field):
        return field.description, field.type, tuple(field.labels), tuple(field.invariants), field.engineering_shear

    def write(self, path, kind):
        options = {} if kind == FIRST else {"libver": ("v110", "v110")}
        with h5py.File(path, "w", **options) as file:
            file.attrs["layout"] = np.int32({FIRST: 1, PLAIN: 2}.get(kind, 3))
            # An indexed file has the other things of layout 3 as well, the unindexed one nothing but its number.
            self.is_packed = kind == INDEXED
            self.locations = {}
            self._model(file)
            steps = file.create_group("steps", track_order=True)
            for step in self.database.steps:
                item = steps.create_group(link(step.name))
                self._step(item, step)
                if kind == FIRST:
                    self._frames_1(item, step)
                else:
                    self._frames_2(file, item, step, kind == INDEXED)

    def _model(self, file):
        for name, sets in self.parts.items():
            self._owner(file.create_group("parts/" + link(name)), sets)
        assembly = file.create_group("assembly")
        for name, (part, sets) in self.instances.items():
            item = assembly.create_group("instances/" + link(name))
            item.attrs["part"] = text(part)
            self._owner(item, sets)
        self._owner(assembly, self.assembly, is_assembly=True)

    def _owner(self, owner, sets, is_assembly=False):
        for kind, by_name in sets.items():
            if self.is_packed and by_name:
                self._packed_sets(owner, PACKED[kind], by_name, is_assembly)
                continue
            for name, by_instance in by_name.items():
                if not is_assembly:
                    owner[f"{kind}/{link(name)}"] = by_instance[""]
                    continue
                item = owner.create_group(f"{kind}/{link(name)}")
                for instance, labels in by_instance.items():
                    item[link(instance)] = labels

    @staticmethod
    def _packed_sets(owner, kind, by_name, is_assembly):
        entries = [(name, instance, labels) for name, by_instance in by_name.items()
                   for instance, labels in (by_instance or {"": integers([])}).items()]
        group = owner.create_group(kind)
        group["names"] = texts([name for name, _, _ in entries])
        group["first"] = np.cumsum([0] + [len(labels) for _, _, labels in entries], dtype="<i8")
        group["labels"] = np.concatenate([labels for _, _, labels in entries])
        if is_assembly:
            group["instances"] = texts([instance for _, instance, _ in entries])

    def _step(self, item, step):
        if step.mass != -1.0:
            item.attrs["mass"] = step.mass
        for name, numbers in (("massCenter", step.mass_center), ("inertiaAboutCenter", step.inertia_center),
                              ("inertiaAboutOrigin", step.inertia_origin)):
            if numbers:
                item.attrs[name] = np.array(numbers)
        # Samples without numbers take no room, so packed ones could not say how many they are.
        packed = [region for region in step.regions if self.is_packed and all(samples.shape[1] for _, samples in region.outputs)]
        if packed:
            self._packed_histories(item.create_group("packedHistory"), packed)
        for region in (region for region in step.regions if region not in packed):
            group = item.create_group("history/" + link(region.name))
            group.attrs["description"] = text("a region")
            for name, number in region.place.items():
                group.attrs[name] = text(number) if isinstance(number, str) else np.int32(number)
            for name, samples in region.outputs:
                group[f"outputs/{link(name)}"] = samples

    @staticmethod
    def _packed_histories(group, regions):
        group["regions"] = texts([region.name for region in regions])
        for name in ("description", "sectionPointDescription"):
            group[name] = texts(["a region" for _ in regions])
        group["set"] = texts([region.place["set"] for region in regions])
        for name in ("node", "element", "integrationPoint", "sectionPoint"):
            group[name] = integers([region.place[name] for region in regions])
        outputs = [(i, name, samples) for i, region in enumerate(regions) for name, samples in region.outputs]
        group["names"] = texts([name for _, name, _ in outputs])
        group["region"] = integers([i for i, _, _ in outputs])
        group["width"] = integers([samples.shape[1] for _, _, samples in outputs])
        group["first"] = np.cumsum([0] + [samples.size for _, _, samples in outputs], dtype="<i8")
        group["samples"] = np.concatenate([np.empty(0, "f4")] + [samples.ravel() for _, _, samples in outputs])

    # Results.

    @staticmethod
    def _describe(item, form):
        description, kind, labels, invariants, shear = form
        item.attrs["description"] = text(description)
        item.attrs["type"] = np.int32(kind)
        item.attrs["engineeringShear"] = np.int32(shear)
        if labels:
            item.attrs["componentLabels"] = texts(labels)
        if invariants:
            item.attrs["validInvariants"] = integers(invariants)

    @staticmethod
    def _place(item, block):
        item.attrs["instance"] = text(block.instance)
        item.attrs["position"] = text(block.position)
        for name, labels in (("nodeLabels", block.nodes), ("elementLabels", block.elements), ("integrationPoints", block.points)):
            if labels is not None:
                item[name] = integers(labels)

    @staticmethod
    def _differences(item, block, always):
        if always or block.type != block.field.type:
            item.attrs["type"] = np.int32(block.type)
        if block.labels and (always or block.labels != block.field.labels):
            item.attrs["componentLabels"] = texts(block.labels)

    def _frames_1(self, item, step):
        for number, frame in enumerate(step.frames):
            group = item.create_group(f"frames/{number}")
            group.attrs["incrementNumber"] = np.int32(frame.increment)
            group.attrs["value"] = float(number)
            group.attrs["description"] = text(frame.description)
            for field in frame.fields:
                owner = group.create_group("fields/" + link(field.name))
                self._describe(owner, self.form(field))
                for k, block in enumerate(field.blocks):
                    part = owner.create_group(f"blocks/{k}")
                    self._place(part, block)
                    self._differences(part, block, False)
                    part["data"] = block.rows

    def _frames_2(self, file, item, step, is_indexed):
        frames = item.create_group("frames")
        frames["incrementNumber"] = integers([frame.increment for frame in step.frames])
        frames["value"] = np.arange(len(step.frames), dtype="f8")
        frames["description"] = texts([frame.description for frame in step.frames])
        in_frames = {}
        for number, frame in enumerate(step.frames):
            for field in frame.fields:
                in_frames.setdefault(field.name, []).append((number, field))
        for name, fields in in_frames.items():
            self._field(file, item.create_group("fields/" + link(name)), fields, is_indexed)

    def _field(self, file, item, fields, is_indexed):
        item["frames"] = integers([number for number, _ in fields])
        forms = {}
        for number, field in fields:
            forms.setdefault(self.form(field), []).append(number)
        own = self.form(fields[0][1])
        self._describe(item, own)
        for i, form in enumerate(form for form in forms if form != own):
            group = item.create_group(f"forms/{i}")
            self._describe(group, form)
            group["frames"] = integers(forms[form])
        for k, (key, blocks) in enumerate(self._series(fields)):
            rows = np.stack([block.rows for _, block in blocks])
            group = item.create_group(f"blocks/{k}")
            group["frames"] = integers([number for number, _ in blocks])
            self._differences(group, blocks[0][1], len(forms) > 1)
            index = self._index(rows) if is_indexed else None
            group.attrs["location"] = text(self._location(file, key[0], blocks[0][1], index))
            if index is not None:
                stored = np.empty((rows.shape[0], max(index, default=-1) + 1, rows.shape[2]), rows.dtype)
                stored[:, index] = rows
                rows = stored
            group["data"] = rows

    @staticmethod
    def _series(fields):
        """The blocks of the frames as series of those that have all but their numbers in common, in their order."""
        series = []
        for number, field in fields:
            at = 0
            for block in field.blocks:
                place = (block.instance, block.position, *(tuple(labels or ()) for labels in (block.nodes, block.elements, block.points)))
                key = (place, block.type, tuple(block.labels), block.is_double, block.rows.shape)
                at = next((i for i in range(at, len(series)) if series[i][0] == key), len(series))
                if at == len(series):
                    series.append((key, []))
                series[at][1].append((number, block))
                at += 1
        return series

    @staticmethod
    def _index(rows):
        """For each row which of the distinct ones it is, numbered in the order of their first use."""
        known = {}
        return [known.setdefault(rows[:, i].tobytes(), len(known)) for i in range(rows.shape[1])]

    def _location(self, file, place, block, index):
        key = (place, tuple(index) if index is not None else None)
        if key not in self.locations:
            self.locations[key] = str(len(self.locations))
            group = file.create_group("locations/" + self.locations[key])
            self._place(group, block)
            if index is not None:
                group["rowOf"] = integers(index)
                group.attrs["storedRows"] = np.int64(max(index, default=-1) + 1)
        return self.locations[key]

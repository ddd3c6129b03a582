#!/usr/bin/python3
"""The extraction once more: reads a database and a configuration and writes what params.txt should hold.

Usage: reference.py -odb model.odb -config config.txt [-o params.txt]
"""
import argparse
import re
import sys

import numpy as np

from database import PLACES, Database, is_tensor
from reductions import HIGHEST, LOWEST, Extremes, PrecisionError, Process, ValueReduction, invariants, reduce_block

INVARIANTS = [(5, "__tresca"), (6, "__press"), (7, "__inv3"), (1, "__maxprincipal"), (2, "__midprincipal"),
              (3, "__minprincipal"), (9, "__maxinplaneprincipal"), (10, "__mininplane_principal"),
              (11, "__outofplane_principal")]
KEYWORDS = {"EXTRACT_MASS": "mass", "EXTRACT_HISTORY": "history", "EXTRACT_FIELD": "field",
            "MINMAX_HISTORY": "history_extremes", "EXTRACT_ALL": "all", "EXTRACT_STRESS": "stress",
            "EXTRACT_SPATIAL": "spatial", "EXTRACT_ELEMENT": "element", "EXTRACT_FIELD_SETS": "sets",
            "EXTRACT_FIELD_COMPONENTS": "components", "DO_NOT_COMPUTE_VALUES": "names_only",
            "ENGINEERING_MIN": "engineering_min", "ENGINEERING_MAX": "engineering_max",
            "TENSOR_INVARIANTS": "invariants"}


class Switches:
    def __init__(self, text):
        for name in KEYWORDS.values():
            setattr(self, name, False)
        self.percentage = 0.0
        active = False
        for line in text.split("\n"):
            active = active or "ODB EXTRACTIONS" in line
            if not active:
                continue
            for keyword, name in KEYWORDS.items():
                if keyword in line:
                    setattr(self, name, True)
            if "PERCENTAGE" in line:
                self.percentage = leading_number(line[line.index("=") + 1:])


def leading_number(text):
    found = re.match(r"[ \t\n\v\f\r]*([+-]?(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?)", text, re.ASCII)
    return float(found.group(1)) if found else 0.0


def number(value):
    """%g with at least three digits of exponent."""
    if isinstance(value, int):
        return str(value)
    if value != value:
        return "nan"
    text = format(float(value), ".6g")
    return re.sub(r"e([+-])(\d\d)$", r"e\g<1>0\2", text)


def clean(name):
    return name.replace("-", "_").replace(" ", "_")


class Extraction:
    def __init__(self, database, switches):
        self.database, self.switches, self.process = database, switches, Process()
        self.lines = []
        self.rough = set()  # lines whose value rests on eigenvalues or a cube root
        self.largest = 0.0

    def run(self):
        for step in self.database.steps:
            if self.switches.mass:
                self.mass(step)
            if self.switches.history or self.switches.history_extremes:
                for region in step.regions:
                    for name, samples in region.outputs:
                        self.history(step, region.label, name, samples)
            if self.switches.field:
                for frame in step.frames:
                    self.frame(step, frame)

    def write(self, name, value):
        self.lines.append(f"{name}\t{value if isinstance(value, str) else number(value)}")

    def shown(self, value):
        return 0 if self.switches.names_only else value

    def mass(self, step):
        if step.mass == -1.0:
            return
        prefix = step.name.replace("-", "_")
        self.write(prefix + "__Mass", self.shown(step.mass))
        for token, numbers in (("__MassCenter", step.mass_center), ("__InertiaCenter", step.inertia_center),
                               ("__InertiaOrigin", step.inertia_origin)):
            if numbers:
                self.write(prefix + token, "(" + ", ".join(number(self.shown(v)) for v in numbers) + ")")

    def history(self, step, label, name, samples):
        prefix, tail = clean(step.name), clean(name) + ("_" + label if label else "")
        if self.switches.history:
            if len(samples) == 0:
                self.write(f"{prefix}__History__{tail}", "None")
            else:
                texts = ["(" + ", ".join(number(self.shown(float(v))) for v in sample) + ")" for sample in samples]
                self.write(f"{prefix}__History__{tail}", "(" + ", ".join(texts) + ")")
        if len(samples) and self.switches.history_extremes:
            extremes = Extremes(float(np.finfo("f4").min), float(np.finfo("f4").max))
            extremes.take([float(sample[-1]) for sample in samples if len(sample)])
            self.write(f"{prefix}__History_Max__{tail}", self.shown(extremes.max))
            self.write(f"{prefix}__History_Min__{tail}", self.shown(extremes.min))

    def frame(self, step, frame):
        for field in frame.fields:
            self.dispatch(step, frame, field, "ALL", "")
            if self.switches.sets or self.switches.invariants:
                for kind, tag, labels in self.database.regions:
                    self.dispatch(step, frame, field.subset(labels, kind), kind, tag)

    def dispatch(self, step, frame, field, kind, tag):
        s = self.switches
        if "Warn" in tag or "Info" in tag:
            return
        wanted = s.all or s.invariants or (s.stress and "Stress" in field.description) or \
            (s.spatial and "Spatial" in field.description) or (s.element and "Element" in field.description)
        if not wanted:
            return
        head = f"{clean(step.name)}__Frame_{frame.increment}{clean(tag)}__{clean(field.name)}"
        if s.names_only:
            self.list_names(head, field, kind)
        elif kind == "ALL":
            self.whole_model(head, field)
        else:
            self.region(head, field)

    def four(self, head, quantity, extremes, engineering_min="__enggmin"):
        self.write(head + quantity + "__max", extremes.max)
        self.write(head + quantity + "__min", extremes.min)
        if self.switches.engineering_max:
            self.write(head + quantity + "__enggmax", extremes.engineering_max)
        if self.switches.engineering_min:
            self.write(head + quantity + engineering_min, extremes.engineering_min)

    def vector_components(self, head, components):
        for place, component in enumerate(components, 1):
            self.write(f"{head}__{place}__max", component.max)
            self.write(f"{head}__{place}__min", component.min)
        for wanted, token, member in ((self.switches.engineering_max, "enggmax", "engineering_max"),
                                      (self.switches.engineering_min, "enggmin", "engineering_min")):
            for place, component in enumerate(components, 1):
                if wanted:
                    self.write(f"{head}__{place}__{token}", getattr(component, member))

    def list_names(self, head, field, kind):
        if not field.blocks:
            return
        zero = Extremes(0, 0, 0, 0)
        if self.switches.invariants and field.name == "S" and kind != "ALL":
            for code, stem in INVARIANTS:
                if code in field.invariants:
                    self.four(head, stem, zero)
        first = field.blocks[0].type
        if is_tensor(first):
            self.four(head, "__mises", zero)
            endings = {label[-2:] for label in field.labels}
            for place in PLACES:
                if self.switches.components and place in endings:
                    self.four(head, "__" + place, zero)
        elif first == 3:
            self.four(head, "__mag", zero)
            if self.switches.components:
                self.vector_components(head, [zero] * 3)
        else:
            self.four(head, "", zero)

    def whole_model(self, head, field):
        process, total, kind, present = self.process, Extremes.starting(), 0, set()
        if field.blocks and self.switches.components:
            for component in process.vector:
                component.reset_plain()
        for block in field.blocks:
            kind = block.type
            reduce_block(process, self.switches, block)
            total.max = process.block.max if process.block.max > total.max else total.max
            total.min = process.block.min if process.block.min < total.min else total.min
            if process.block.engineering_max > total.engineering_max:
                total.engineering_max = process.block.engineering_max
            if process.block.engineering_min < total.engineering_min:
                total.engineering_min = process.block.engineering_min
            if is_tensor(kind):
                present |= set(block.labels)
        if is_tensor(kind):
            self.four(head, "__mises", total)
            for place, name in enumerate(PLACES):
                if self.switches.components and name in present:
                    self.four(head, "__" + name, process.tensor[place])
        elif kind == 3:
            self.four(head, "__mag", total)
            if self.switches.components:
                self.vector_components(head, process.vector)
        else:
            self.four(head, "", total)

    def region(self, head, field):
        endings = {label[-2:] for label in field.labels}
        present = [place in endings for place in PLACES]
        found = ValueReduction(self.process, self.switches, field, present)
        if found.main.max != LOWEST:
            if found.type == 2:
                self.four(head, "", found.main)
            elif found.type == 3:
                self.four(head, "__mag", found.main)
                if self.switches.components:
                    self.vector_components(head, found.vector)
            elif is_tensor(found.type):
                self.four(head, "__mises", found.main, "__min" if found.type == 9 else "__enggmin")
                for place, name in enumerate(PLACES):
                    if self.switches.components and present[place]:
                        self.four(head, "__" + name, found.tensor[place])
        if self.switches.invariants and clean(field.name) == "S":
            self.region_invariants(head, field)

    def region_invariants(self, head, field):
        by_block = [invariants(block) for block in field.blocks]
        for block in field.blocks:
            numbers = np.abs(block.tensors()) if is_tensor(block.type) else np.zeros(1)
            self.largest = max(self.largest, float(np.max(numbers[np.isfinite(numbers)], initial=0.0)))
        for code, stem in INVARIANTS:
            if code not in field.invariants:
                continue
            values = [value for found in by_block for value in found[code]]
            extremes = Extremes.starting()
            extremes.take(values)
            self.engineer(extremes, values)
            for wanted, token, value, start in (
                    (True, "max", extremes.max, LOWEST), (True, "min", extremes.min, HIGHEST),
                    (self.switches.engineering_max, "enggmax", extremes.engineering_max, LOWEST),
                    (self.switches.engineering_min, "enggmin", extremes.engineering_min, HIGHEST)):
                if wanted and value != start:
                    if code not in (6, 11):
                        self.rough.add(len(self.lines))
                    self.write(f"{head}{stem}__{token}", value)

    def engineer(self, extremes, values):
        """An extreme that was not found is not selected either."""
        chosen = Switches("")
        chosen.percentage = self.switches.percentage
        chosen.engineering_min = self.switches.engineering_min and extremes.min != HIGHEST
        chosen.engineering_max = self.switches.engineering_max and extremes.max != LOWEST
        extremes.select(chosen, values)


def extract(database, configuration):
    """The finished or interrupted extraction, and the message of the exception that ended it, None for none."""
    extraction = Extraction(Database(database), Switches(configuration))
    try:
        extraction.run()
    except PrecisionError as error:
        return extraction, str(error)
    return extraction, None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("-odb", required=True)
    parser.add_argument("-config", required=True)
    parser.add_argument("-o", default="params.txt")
    options = parser.parse_args()
    with open(options.config, encoding="utf-8", newline="") as file:
        extraction, error = extract(options.odb, file.read())
    with open(options.o, "w", encoding="utf-8") as out:
        out.write("".join(line + "\n" for line in extraction.lines))
    if error is not None:
        sys.exit(error)


if __name__ == "__main__":
    main()

"""Reduces blocks and values to extremes, as plain loops over lists."""
import numpy as np

from database import PLACES, is_tensor
from selection import ascending, descending, engineering_extreme

LOWEST, HIGHEST = -1.7976931348623157e308, 1.7976931348623157e308
LOWEST_FLOAT, HIGHEST_FLOAT = float(np.finfo("f4").min), float(np.finfo("f4").max)


class Extremes:
    def __init__(self, max_=0.0, min_=0.0, engineering_max=0.0, engineering_min=0.0):
        self.max, self.min, self.engineering_max, self.engineering_min = max_, min_, engineering_max, engineering_min

    @classmethod
    def starting(cls):
        return cls(LOWEST, HIGHEST, LOWEST, HIGHEST)

    def take(self, values):
        for value in values:
            if value > self.max:
                self.max = value
            if value < self.min:
                self.min = value

    def reset_plain(self):
        self.max, self.min = LOWEST, HIGHEST

    def reset_engineering(self):
        self.engineering_max, self.engineering_min = LOWEST, HIGHEST

    def select(self, switches, values, max_order=descending):
        """Minimum first, then the maximum over the values as they have been moved."""
        if not values:
            return
        if switches.engineering_min:
            self.engineering_min = engineering_extreme(values, switches.percentage, ascending)
        if switches.engineering_max:
            self.engineering_max = engineering_extreme(values, switches.percentage, max_order)


class PrecisionError(Exception):
    pass


class Process:
    """What lives as long as the process: results of blocks, and the vector slots of values."""

    def __init__(self):
        self.block = Extremes()
        self.vector = [Extremes() for _ in range(3)]
        self.tensor = [Extremes() for _ in range(6)]
        self.slots = [0.0, 0.0, 0.0]


def listed(column):
    return [float(v) for v in column]


def mises(block):
    s = block.tensors()
    with np.errstate(all="ignore"):
        d1, d2, d3 = s[:, 0] - s[:, 1], s[:, 1] - s[:, 2], s[:, 2] - s[:, 0]
        square = 0.5 * (d1 * d1 + d2 * d2 + d3 * d3) + 3.0 * (s[:, 3] * s[:, 3] + s[:, 4] * s[:, 4] + s[:, 5] * s[:, 5])
        return listed(np.sqrt(square).astype("f4"))


def row_lengths(rows):
    """In the rows' own precision."""
    with np.errstate(all="ignore"):
        total = np.zeros(len(rows), rows.dtype)
        for column in rows.T:
            total = total + column * column
        return listed(np.sqrt(total))


def reduce_block(process, switches, block):
    """Leaves its results in the process."""
    start = Extremes(LOWEST, HIGHEST, LOWEST, HIGHEST) if block.is_double else \
        Extremes(LOWEST_FLOAT, HIGHEST_FLOAT, LOWEST_FLOAT, HIGHEST_FLOAT)
    if block.is_element_based():
        _reduce_elements(process, switches, block, start)
    else:
        _reduce_nodes(process, switches, block, start)
    process.block = start


def _take_vector(process, rows):
    for place in range(min(3, rows.shape[1])):
        process.vector[place].take(listed(rows[:, place]))


def _reduce_nodes(process, switches, block, result):
    rows = block.rows
    if switches.components:
        for component in process.vector:
            component.reset_engineering()
    if block.type == 3:
        values = row_lengths(rows)
        result.take(values)
        result.select(switches, values)
        if switches.components:
            _take_vector(process, rows)
            for place in range(min(3, rows.shape[1])):
                process.vector[place].select(switches, listed(rows[:, place]))
    else:
        result.take(listed(rows.ravel()))
        result.select(switches, listed(rows[:, -1]), descending if block.is_double else ascending)


def _reduce_elements(process, switches, block, result):
    if switches.components:
        for component in process.vector + process.tensor:
            component.reset_plain()
    if is_tensor(block.type):
        values = mises(block)
        result.take(values)
        result.select(switches, values)
        if switches.components:
            for place, column in enumerate(block.component_columns()):
                _reduce_component(process.tensor[place], switches, block, place, column)
    elif block.type == 3:
        result.take(row_lengths(block.rows))
        if switches.components:
            _take_vector(process, block.rows)
    else:
        result.take(listed(block.rows.ravel()))
        result.select(switches, listed(block.rows[:, -1]))


def _reduce_component(component, switches, block, place, column):
    if PLACES[place] not in block.labels:
        return
    # The columns of a block on elements end with the last component that it stores; one in between is 0.
    last = max(p for p, c in enumerate(block.component_columns()) if c is not None)
    if place > last:
        return
    values = [0.0] * len(block.rows) if column is None else listed(block.rows[:, column])
    component.reset_engineering()
    component.take(values)
    component.select(switches, values)


def invariants(block):
    """By code, a list of values each; 0 for anything but a tensor."""
    count = len(block.rows)
    if not is_tensor(block.type):
        return {code: [0.0] * count for code in (5, 6, 7, 1, 2, 3, 9, 10, 11)}
    s = block.tensors()
    with np.errstate(all="ignore"):
        finite = np.isfinite(s).all(axis=1)
        matrices = np.zeros((count, 3, 3))
        for (i, j), place in {(0, 0): 0, (1, 1): 1, (2, 2): 2, (0, 1): 3, (0, 2): 4, (1, 2): 5}.items():
            matrices[:, i, j] = matrices[:, j, i] = np.where(finite, s[:, place], 0.0)
        # Scaled by a power of two, so that nothing overflows on the way.
        size = np.abs(matrices).max(axis=(1, 2), initial=0.0)
        scale = np.exp2(np.floor(np.log2(np.where(size > 0, size, 1.0))))
        principal = np.linalg.eigvalsh(matrices / scale[:, None, None])[:, ::-1] * scale[:, None]
        principal[~finite] = np.nan
        deviator = matrices - (np.trace(matrices, axis1=1, axis2=2) / 3.0)[:, None, None] * np.eye(3)
        third = np.cbrt(13.5 * np.linalg.det(deviator / scale[:, None, None])) * scale
        third[~finite] = np.nan
        center, half = (s[:, 0] + s[:, 1]) / 2.0, (s[:, 0] - s[:, 1]) / 2.0
        radius = np.sqrt(half * half + s[:, 3] * s[:, 3])
        found = {5: principal[:, 0] - principal[:, 2], 6: -(s[:, 0] + s[:, 1] + s[:, 2]) / 3.0, 7: third,
                 1: principal[:, 0], 2: principal[:, 1], 3: principal[:, 2], 9: center + radius, 10: center - radius,
                 11: s[:, 2]}
        return {code: listed(np.asarray(values).astype("f4")) for code, values in found.items()}


class ValueReduction:
    """The value pass over a region."""

    def __init__(self, process, switches, field, present):
        self.type = 2
        self.main = Extremes.starting()
        self.vector = [Extremes.starting() for _ in range(3)]
        self.tensor = [Extremes.starting() for _ in range(6)]
        self.values = []
        self.vectors = [[], [], []]
        self.tensors = [[] for _ in range(6)]
        for block in field.blocks:
            self._read(process, switches, block, present)
        self._select(switches, present)

    def _read(self, process, switches, block, present):
        if len(block.rows) == 0:
            return
        self.type = block.type
        data = block.data()

        def element(index):
            if block.is_double:
                raise PrecisionError("Data is double precision.  Use dataDouble()")
            return listed(data[:, index]) if index < data.shape[1] else [0.0] * len(data)

        components = {}
        if block.type == 2:
            values = listed(data[:, 0])
        elif block.type == 3:
            with np.errstate(all="ignore"):
                wide = block.rows.astype("f8")
                total = np.zeros(len(wide))
                for column in wide.T:
                    total = total + column * column
                values = listed(np.sqrt(total).astype("f4"))
        elif not is_tensor(block.type):
            values = [0.0] * len(data)
        else:
            values = mises(block)
            if block.type != 5 or switches.components:
                met = [place for place in range(6) if present[place]]
                components = {place: element(index) for index, place in enumerate(met)}
        self.main.take(values)
        self.values += values
        if not switches.components:
            return
        for place in range(3):
            column = element(place) if block.type == 3 else [process.slots[place]] * len(values)
            self.vector[place].take(column)
            self.vectors[place] += column
        if block.type == 3:
            process.slots = [column[-1] for column in self.vectors]
        for place in range(6):
            if present[place]:
                column = components.get(place, [0.0] * len(values))
                self.tensors[place] += column
                if is_tensor(block.type):
                    self.tensor[place].take(column)

    def _select(self, switches, present):
        for extremes, values in [(self.main, self.values)] + (
                list(zip(self.vector, self.vectors)) if switches.components else []):
            extremes.select(switches, values)
        # Components of tensors go the other way round: the maximum first.
        for place in range(6):
            values = self.tensors[place]
            if not (switches.components and is_tensor(self.type) and present[place] and values):
                continue
            if switches.engineering_max:
                self.tensor[place].engineering_max = engineering_extreme(values, switches.percentage, descending)
            if switches.engineering_min:
                self.tensor[place].engineering_min = engineering_extreme(values, switches.percentage, ascending)

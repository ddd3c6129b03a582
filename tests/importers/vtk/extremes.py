"""What the records of a grid have to say, by numpy: extremes over all points and cells, and over sets."""
import numpy as np

QUANTITIES = ("11", "22", "33", "12", "13", "23")
# Names under which the import knows fields beyond doubt.
STANDARD = {"stress": "S", "strain": "E", "displacement": "U"}


def tensor(array):
    """Columns 11 22 33 12 13 23 of VTK's XX YY ZZ XY YZ XZ, or of nine."""
    return array[:, [0, 1, 2, 3, 5, 4]] if array.shape[1] == 6 else array[:, [0, 4, 8, 1, 2, 5]]


def mises(t):
    a, b, c, d, e, f = t.astype("f8").T
    return np.sqrt(0.5 * ((a - b) ** 2 + (b - c) ** 2 + (c - a) ** 2) + 3 * (d * d + e * e + f * f))


def quantities(array):
    """{ending of the records: values}."""
    array = np.asarray(array)
    width = 1 if array.ndim == 1 else array.shape[1]
    if width == 1:
        return {"": array.reshape(-1).astype("f8")}
    array = array.astype("f4")
    if width in (2, 3):
        found = {"mag": np.sqrt((array.astype("f8") ** 2).sum(axis=1))}
        found.update({str(i + 1): array[:, i] for i in range(width)})
        return found if width == 3 else {**found, "3": np.zeros(len(array))}
    t = tensor(array)
    return {"mises": mises(t), **{name: t[:, i] for i, name in enumerate(QUANTITIES)}}


def add(records, head, array, rows):
    for ending, values in quantities(array).items():
        if len(rows):
            between = f"__{ending}" if ending else ""
            records[f"{head}{between}__max"] = float(np.max(values[rows]))
            records[f"{head}{between}__min"] = float(np.min(values[rows]))


def is_tensor(array):
    return array.ndim == 2 and array.shape[1] in (6, 9)


def expected(grid, frame=1, step=1, sets=None, names=None):
    """{record: number} of one frame; `sets` are {tag in records: places of cells}."""
    records = {}
    names = {**STANDARD, **(names or {})}
    regions = {"": np.arange(len(grid.cells)), **(sets or {})}
    for tag, cells in regions.items():
        head = f"Step_{step}__Frame_{frame}__" + (f"{tag}__" if tag else "")
        used = sorted({int(node) for cell in cells for node in grid.cells[cell][1]})
        for name, array in grid.point_data.items():
            if tag == "" and not is_tensor(array):
                add(records, head + names.get(name, name), array, np.arange(len(array)))
            elif is_tensor(array):
                add(records, head + names.get(name, name), array, used)
        for name, array in grid.cell_data.items():
            own = names.get(name, name)
            add(records, head + (own + "_ELEM" if name in grid.point_data else own), array, cells)
    return records

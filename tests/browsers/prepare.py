"""Makes the pages of the browser tests, and what numpy finds in the same databases: prepare.py BIN LUG DIRECTORY.

LUG is the directory where the example has been run."""
import json
import pathlib
import subprocess
import sys

import h5py
import numpy as np

sys.path[:0] = [str(pathlib.Path(__file__).resolve().parents[1] / folder) for folder in ("endtoend", "report")]


def mises(rows):
    s = rows.astype("f8")
    d = np.stack([s[:, 0] - s[:, 1], s[:, 1] - s[:, 2], s[:, 2] - s[:, 0]])
    return np.sqrt(0.5 * (d * d).sum(0) + 3 * (s[:, 3:] ** 2).sum(1))


def number(value):
    """As the page writes numbers: six digits as JavaScript has them."""
    short = float(f"{value:.6g}")
    return str(int(short)) if short == int(short) and abs(short) < 1e21 else repr(short)


def nodes_of_stored_rows(odb, location):
    group = odb[f"locations/{location}"]
    labels = group["nodeLabels"][()]
    if "rowOf" not in group:
        return labels
    nodes = np.zeros(group.attrs["storedRows"], "i4")
    nodes[group["rowOf"][()][::-1]] = labels[::-1]
    return nodes


def extremes_of(odb):
    """Frames of Step-1 are the first of the slider."""
    found = []
    for field, quantity in (("S", "mises"), ("S", "22"), ("U", "mag"), ("U", "2"), ("E", "mises")):
        block = odb[f"steps/Step-1/fields/{field}/blocks/0"]
        nodes = nodes_of_stored_rows(odb, block.attrs["location"].decode())
        for frame in (0, 3):
            rows = block["data"][frame]
            numbers = {"mises": mises, "mag": lambda r: np.linalg.norm(r.astype("f8"), axis=1), "22": lambda r: r[:, 1],
                       "2": lambda r: r[:, 1]}[quantity](rows)
            place = {"max": int(numbers.argmax()), "min": int(numbers.argmin())}
            found.append({"field": field, "quantity": quantity, "slider": frame,
                          **{k: {"node": int(nodes[i]), "text": number(numbers[i])} for k, i in place.items()}})
    return found


def records_of(odb, records):
    """Where whole-model extremes of Step-1's last frame are, and one over a set of nodes' elements."""
    wanted = []
    rows = odb["steps/Step-1/fields/S/blocks/0/data"][3]
    location = odb["locations/" + odb["steps/Step-1/fields/S/blocks/0"].attrs["location"].decode()]
    row_of, nodes, owners = location["rowOf"][()], location["nodeLabels"][()], location["elementLabels"][()]
    numbers = mises(rows)[row_of]
    title = "S, Mises, Step-1, " + odb["steps/Step-1/frames/description"][3].decode()
    i = int(numbers.argmax())
    wanted.append({"record": "Step_1__Frame_4__S__mises__max", "title": title, "chosen": f"node {nodes[i]}, element {owners[i]}"})
    sets = odb["assembly/packedElementSets"]
    at = [n.decode() for n in sets["names"]].index("RIM")
    members = sets["labels"][sets["first"][at]:sets["first"][at + 1]]
    among = np.flatnonzero(np.isin(owners, members))
    i = int(among[numbers[among].argmax()])
    wanted.append({"record": "Step_1__Frame_4__RIM__S__mises__max", "title": title, "chosen": f"node {nodes[i]}, element {owners[i]}"})
    return [w for w in wanted if w["record"] in records]


def main():
    programs, lug, directory = map(pathlib.Path, sys.argv[1:])
    directory.mkdir(parents=True, exist_ok=True)

    def report(*arguments):
        subprocess.run([programs / "report", *arguments], check=True)

    report(lug / "lug.odb", "--params", lug / "params.txt", "--config", lug / "extract.cfg", "-o", directory / "lug.html")
    import os
    os.environ.setdefault("KOLVEX_BIN", str(programs))
    import test_page
    case = test_page.NamesTest("test_names_of_strangers_are_never_markup")
    case.setUp()
    try:
        case.test_names_of_strangers_are_never_markup()
        (directory / "nasty.html").write_bytes(case.path("job.html").read_bytes())
    finally:
        case.doCleanups()
    names = [line.split("\t")[0] for line in (lug / "params.txt").read_text().splitlines()]
    with h5py.File(lug / "lug.odb") as odb:
        block = odb["steps/Step-1/fields/S/blocks/0"]
        of_nodes = dict(zip(nodes_of_stored_rows(odb, block.attrs["location"].decode()).tolist(), mises(block["data"][3]).tolist()))
        expected = {"names": names, "extremes": extremes_of(odb), "records": records_of(odb, set(names)), "nodes": of_nodes,
                    "nasty": test_page.NASTY}
    (directory / "expected.json").write_text(json.dumps(expected))


main()

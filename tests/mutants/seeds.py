"""Whole files that mutants are made of: small, and with every kind of object in them."""
import os
import pathlib
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
for folder in ("endtoend", "importers", "importers/vtk", "oracle"):
    sys.path.insert(0, str(HERE.parent / folder))

import by_hand  # noqa: E402
import exodus_files as exodus  # noqa: E402
import numpy as np  # noqa: E402
import test_import_program as texts  # noqa: E402
from generate import Generator  # noqa: E402
from test_upgrade import old_database  # noqa: E402

BIN = pathlib.Path(os.environ["KOLVEX_BIN"])
FRAME = texts.RESULTS.replace("           1          \n", "           2          \n")


def job_files():
    """The files of a run by their names: text results, and binary ones under the name of their kind."""
    more = texts.RESULTS.replace("  101 1.000000000", "  102 2.000000000").replace("  101", "  102").replace(
        "           1           1          \n", "           2           1          \n")
    text = texts.HEADING + texts.NODES + texts.ELEMENTS + texts.RESULTS + more + " 9999\n"
    return {"frd": text.encode(), "binary": texts.BINARY, "dat": texts.PRINTED.encode(), "inp": DECK.encode()}


def vtk_files():
    """Grids with arrays of every shape, in every encoding."""
    forms = {"text": {"form": "ascii"}, "base64": {"form": "binary"}, "packed64": {"form": "binary", "packed": True, "header": "UInt64"},
             "raw": {"form": "appended-raw"}, "big": {"form": "appended-raw", "order": ">", "header": "UInt64"},
             "packed": {"form": "appended-raw", "packed": True}, "appended": {"form": "appended-base64"}}
    grid = by_hand.sample(1, points=12, cells=6)
    grid.field_data = {"TIME": by_hand.np.array([0.5]), "energy": by_hand.np.array([2.5])}
    files = {name + ".vtu": by_hand.vtu(grid, **options) for name, options in forms.items()}
    files.update({f"{'binary' if is_binary else 'ascii'}_{version}.vtk": by_hand.legacy(grid, is_binary, version=version)
                  for is_binary in (False, True) for version in ("3.0", "5.1")})
    return files


def exodus_files(directory):
    """Exodus files by the kind of mutants that are made of them: of netCDF's own formats, and of HDF5."""
    found = {}
    for kind, form in (("exodus", "NETCDF3_64BIT_OFFSET"), ("exodus4", "NETCDF4")):
        path = directory / (kind + ".e")
        with exodus.Exodus(path, form) as file:
            file.mesh(exodus.CUBES, exodus.BLOCKS)
            file.ids("eb", "num_el_blk", [1, 2], ["left", ""])
            file.integers("node_num_map", ("num_nodes",), np.arange(16) + 3)
            file.node_sets([[1, 5], [4, 8]], [3, 4], ["clamp", "tip"])
            file.side_sets([([1, 2, 2], [4, 2, 3])], None, ["clamp"])
            file.times([0, 1, 0.5])
            wave = np.sin(np.arange(4 * 3 * 16.0)).reshape(4, 3, 16)
            file.nodal(["disp_x", "disp_y", "disp_z", "temp"], wave)
            file.elemental([f"stress_{c}_{p}" for c in ("xx", "yy", "zz", "xy", "yz", "zx") for p in (1, 2)],
                           {(v, b): np.cos(np.full((3, 3 - b), v * b)) for v in range(1, 13) for b in (1, 2)})
            file.of_side_sets(["flux"], {(1, 1): wave[0, :, :3]})
            file.global_values(["energy"], [[1], [2], [3]])
        found[kind] = path.read_bytes()
        path.unlink()
    return found


DECK = (texts.DECK + "*NODE\n1,0.,0.,0.\n2,1.,0.,0.\n3,2.,0.,0.\n*ELEMENT,TYPE=T3D2,ELSET=Eall\n1,1,2\n2,2,3\n"
        "*SURFACE,NAME=Side,TYPE=NODE\nEnds\n*MATERIAL,NAME=Steel\n*DENSITY\n7.8e-9\n"
        "*SOLID SECTION,ELSET=Eall,MATERIAL=Steel\n0.5\n*STEP\nsecond\n*STATIC\n0.5,1.\n*END STEP\n")


def imported(directory, *options):
    """The database that the import makes of these files."""
    files = job_files()
    for name in ("frd", "dat", "inp"):
        (directory / f"seed.{name}").write_bytes(files[name])
    subprocess.run([BIN / "import", "seed", "-o", "seed.odb", *options], cwd=directory, check=True, capture_output=True)
    return (directory / "seed.odb").read_bytes()


def generated(directory, layout, count):
    """Databases of the generator of the second implementation, small ones."""
    found, seed = [], 0
    while len(found) < count:
        generator = Generator(seed)
        seed += 1
        path = directory / "generated.odb"
        path.unlink(missing_ok=True)
        generator.make(path)
        if generator.layout == layout and path.stat().st_size < 60_000:
            found.append(path.read_bytes())
    return found


def rewritten(directory, count, *wishes):
    """Such databases as our own writer writes them."""
    found = []
    for data in generated(directory, 2, count):
        (directory / "from.odb").write_bytes(data)
        subprocess.run([BIN / "rewrite", "from.odb", "to.odb", *wishes], cwd=directory, check=True)
        found.append((directory / "to.odb").read_bytes())
    return found


def catalogued(directory):
    """Databases that end with a catalog, with and without indices, packed numbers and all that the import knows."""
    return [imported(directory), imported(directory, "--compress", "--checksum"), *rewritten(directory, 2, "index"),
            *rewritten(directory, 1, "index", "compress")]


def layout2(directory):
    """Pairs of bytes and whether checksums protect them."""
    return ([(imported(directory), True), (imported(directory, "--compress", "--checksum"), True)] +
            [(data, False) for data in generated(directory, 2, 3)])


def layout1(directory):
    path = directory / "old.odb"
    old_database(path, 2)
    return [(path.read_bytes(), False)] + [(data, False) for data in generated(directory, 1, 3)]

#!/usr/bin/python3
"""Writes the first inputs of the fuzzers under seeds/, out of the small files of the other tests. KOLVEX_BIN names the
directory of the programs, which write the databases."""
import pathlib
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "mutants"))
import catalogs  # noqa: E402
import seeds  # noqa: E402

sys.path.insert(0, str(HERE.parent / "importers" / "vtk"))
import by_hand  # noqa: E402

CONFIGURATION = """remarks
ODB EXTRACTIONS
EXTRACT_MASS EXTRACT_HISTORY MINMAX_HISTORY
EXTRACT_FIELD EXTRACT_ALL EXTRACT_FIELD_SETS EXTRACT_FIELD_COMPONENTS
ABSOLUTE_MAX ENGINEERING_MIN ENGINEERING_MAX TENSOR_INVARIANTS
PERCENTAGE = 12.5e0
"""
STATUS = """SUMMARY OF JOB INFORMATION
  STEP      INC     ATT  ITRS     TOT TIME     STEP TIME      INC TIME
     1          1     1     2  0.500000E+00  0.500000E+00  0.500000E+00
     1          2     1U    2  0.500000E+00  0.500000E+00  0.500000E+00
     2          1     1     1  0.100000E+01  0.100000E+01  0.100000E+01
"""
TEXTS = ["-1.23456E+07", "5.717277-124", "INF", "1e400", "1-3", "last", "a/b%.", " stresses (elem) for set A and time  0.1E+01",
         "E I G E N V A L U E   N U M B E R  3", "caf\u00e9"]


def write(target, name, content):
    directory = HERE / "seeds" / target
    directory.mkdir(parents=True, exist_ok=True)
    (directory / name).write_bytes(content if isinstance(content, bytes) else content.encode())


def main():
    files = seeds.job_files()
    write("frd", "text", files["frd"])
    write("frd", "binary", files["binary"])
    write("dat", "tables", files["dat"])
    write("deck", "deck", files["inp"])
    write("status", "status", STATUS)
    write("configuration", "everything", CONFIGURATION)
    for name, content in seeds.vtk_files().items():
        write("vtk", name, content)
    write("vtk", "collection.pvd", by_hand.collection([(0.5, "none.vtu", 'part="0"'), (1, "none.vtu", 'part="1"')]))
    write("vtk", "pieces.pvtu", by_hand.pieces("none.vtu", "none.vtu"))
    with tempfile.TemporaryDirectory() as directory:
        for number, database in enumerate(seeds.catalogued(pathlib.Path(directory))):
            write("catalog", str(number), catalogs.split(database)[1])
    for number, text in enumerate(TEXTS):
        write("texts", str(number), text)


if __name__ == "__main__":
    main()

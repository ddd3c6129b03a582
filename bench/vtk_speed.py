#!/usr/bin/python3
"""Measures `kolvex import` on files of VTK against a copy of the same bytes that is brought to the disk (dd conv=fsync).

Usage: vtk_speed.py [--bin DIRECTORY] [--size MEGABYTES] [--runs 5] [--directory DIR]

A block of bricks with displacements, temperatures and stresses, in a collection in time of raw appended files whose size
is that asked for, and in single files: raw, raw and packed, base64 and text. The programs take turns, with the files in the page cache; medians.
"""
import argparse
import base64
import pathlib
import struct
import sys
import tempfile
import zlib

import numpy as np

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
from import_speed import bricks  # noqa: E402
from results_to_records import Bench, peak_memory  # noqa: E402

TYPES = {"f4": "Float32", "f8": "Float64", "i8": "Int64", "u1": "UInt8"}
BLOCK = 1 << 20


def encoded(array, form):
    data = array.tobytes()
    if form == "packed":
        blocks = [data[at:at + BLOCK] for at in range(0, len(data), BLOCK)]
        packed = [zlib.compress(block, 1) for block in blocks]
        last = len(blocks[-1]) % BLOCK
        return struct.pack(f"<{3 + len(packed)}Q", len(packed), BLOCK, last, *map(len, packed)) + b"".join(packed)
    return struct.pack("<Q", len(data)) + data


def write_file(path, points, nodes, fields, form):
    """A .vtu of hexahedra; returns its bytes."""
    count = len(nodes)
    cells = {"connectivity": nodes.astype("i8").ravel(), "offsets": np.arange(8, 8 * count + 1, 8, dtype="i8"), "types": np.full(count, 12, "u1")}
    packer = ' compressor="vtkZLibDataCompressor"' if form == "packed" else ""
    appended = []
    with open(path, "wb") as file:
        def write(text):
            file.write(text.encode())

        def array(name, values):
            components = 1 if values.ndim == 1 else values.shape[1]
            head = f'<DataArray type="{TYPES[values.dtype.str[1:]]}" Name="{name}" NumberOfComponents="{components}" '
            if form == "text":
                write(head + 'format="ascii">\n')
                np.savetxt(file, values.reshape(len(values), -1), fmt="%.9g" if values.dtype.kind == "f" else "%d")
                write("</DataArray>\n")
            elif form == "base64":
                write(head + 'format="binary">\n' + base64.b64encode(encoded(values, form)).decode() + "\n</DataArray>\n")
            else:
                appended.append(encoded(values, form))
                write(head + f'format="appended" offset="{sum(map(len, appended[:-1]))}"/>\n')

        write(f'<VTKFile type="UnstructuredGrid" version="1.0" byte_order="LittleEndian" header_type="UInt64"{packer}>\n<UnstructuredGrid>\n'
              f'<Piece NumberOfPoints="{len(points)}" NumberOfCells="{count}">\n<PointData>\n')
        for name, values in fields.items():
            array(name, values)
        write("</PointData>\n<Points>\n")
        array("Points", points)
        write("</Points>\n<Cells>\n")
        for name, values in cells.items():
            array(name, values)
        write("</Cells>\n</Piece>\n</UnstructuredGrid>\n")
        if appended:
            write('<AppendedData encoding="raw">\n_')
            file.writelines(appended)
            write("\n</AppendedData>\n")
        write("</VTKFile>\n")
    return path.stat().st_size


def fields_of(random, count):
    return {"displacement": random.standard_normal((count, 3), dtype="f4"), "T": random.standard_normal(count), "stress": random.standard_normal((count, 6), dtype="f4")}


def compare(bench, name, files, results):
    """Files that are copied as one, and the import of `results`, in turn."""
    size = sum(path.stat().st_size for path in files)
    with open(bench.directory / "all", "wb") as whole:
        for path in files:
            whole.write(path.read_bytes())
    importing = [bench.bin / "import", results, "-o", "job.odb"]
    found = bench.medians(copy=["dd", "if=all", "of=copy", "bs=1M", "conv=fsync", "status=none"], importing=importing)
    memory = peak_memory(importing, bench.directory)
    database = (bench.directory / "job.odb").stat().st_size
    (cpu, clock, _), (copy_cpu, copy_clock, _) = found["importing"], found["copy"]
    print(f"| {name}, {size / 1e6:.0f} MB | {database / size:.2f} | {cpu:.2f} s | {clock:.2f} s | {cpu / copy_cpu:.2f} | {clock / copy_clock:.2f} | "
          f"{size / 1e6 / cpu:.0f} MB/s | {memory:.0f} MB |", flush=True)
    (bench.directory / "all").unlink()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--bin", type=pathlib.Path, default=pathlib.Path("build/release/bin"))
    parser.add_argument("--size", type=int, default=500)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--directory", type=pathlib.Path)
    options = parser.parse_args()
    random = np.random.default_rng(1)
    with tempfile.TemporaryDirectory(prefix="kolvex-bench.", dir=options.directory) as directory:
        bench = Bench(options, pathlib.Path(directory))
        points, nodes = bricks(50)
        nodes = nodes - 1
        print("| files | database / files | processor | clock | processor / copy | clock / copy | of one core | memory |\n| --- " + "| --- " * 7 + "|")
        files = []
        while sum(path.stat().st_size for path in files) < bench.size:
            files.append(bench.directory / f"s{len(files)}.vtu")
            write_file(files[-1], points, nodes, fields_of(random, len(points)), "raw")
        (bench.directory / "job.pvd").write_text('<VTKFile type="Collection"><Collection>' + "".join(
            f'<DataSet timestep="{i}" file="{path.name}"/>\n' for i, path in enumerate(files)) + "</Collection></VTKFile>\n")
        compare(bench, f"{len(files)} raw files in time", files, "job.pvd")
        for path in files:
            path.unlink()
        count = max(2, round((bench.size / 200) ** (1 / 3)))
        points, nodes = bricks(count)
        nodes = nodes - 1
        for form in ("raw", "packed", "base64", "text"):
            if form == "text":
                points, nodes = bricks(count // 2)
                nodes = nodes - 1
            one = bench.directory / f"{form}.vtu"
            write_file(one, points, nodes, fields_of(random, len(points)), form)
            compare(bench, f"one {form} file", [one], one.name)
            one.unlink()


if __name__ == "__main__":
    main()

"""Keeps the checksums of a database as its format page has them, with nothing of ours."""
import pathlib

import h5py
import numpy as np

BLOCK = 4096


def make_table():
    table = []
    for i in range(256):
        for _ in range(8):
            i = (i >> 1) ^ (0x82F63B78 if i & 1 else 0)
        table.append(i)
    return table


TABLE = make_table()


def crc32c(data):
    total = 0xFFFFFFFF
    for byte in data:
        total = (total >> 8) ^ TABLE[(total ^ byte) & 0xFF]
    return total ^ 0xFFFFFFFF


def sums_of(content, offset, count, block=BLOCK):
    """The data set /checksums of `count` numbers at `offset` of a file."""
    blank = bytearray(content)
    blank[offset:offset + 4 * count] = bytes(4 * count)
    sums = np.array([crc32c(blank[i * block:(i + 1) * block]) for i in range(count - 1)], "<u4").tobytes()
    return sums + np.array([crc32c(sums)], "<u4").tobytes()


def place_of_sums(path):
    with h5py.File(path) as odb:
        sums = odb["checksums"]
        return sums.id.get_offset(), sums.shape[0], int(sums.attrs["blockSize"])


def add_checksums(path):
    """To a finished file that has none."""
    with h5py.File(path, "r+", libver=("v110", "v110")) as odb:
        count = pathlib.Path(path).stat().st_size // BLOCK + 4
        creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
        creation.set_alloc_time(h5py.h5d.ALLOC_TIME_EARLY)
        creation.set_fill_time(h5py.h5d.FILL_TIME_NEVER)
        space = h5py.h5s.create_simple((count,))
        h5py.h5d.create(odb.id, b"checksums", h5py.h5t.STD_U32LE, space, creation)
        odb["checksums"].attrs["blockSize"] = BLOCK
        odb["checksums"].attrs["algorithm"] = np.array(b"crc32c", dtype=h5py.string_dtype("utf-8", 6))
    offset, count, _ = place_of_sums(path)
    with open(path, "r+b") as file:
        content = file.read()
        file.seek(offset)
        file.write(sums_of(content, offset, count))

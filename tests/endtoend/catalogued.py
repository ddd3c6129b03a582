"""The sums of a catalogued database, made after the format page with nothing of ours."""
import functools
import struct

import h5py

TRAILER = 32
# What the catalog points to; every other data set is repeated in it.
POINTED_TO = ("data", "nodeLabels", "elementLabels", "integrationPoints", "rowOf", "labels", "coordinates", "connectivity",
              "samples")


@functools.cache
def table():
    entries = []
    for i in range(256):
        for _ in range(8):
            i = i >> 1 ^ (0x82F63B78 if i & 1 else 0)
        entries.append(i)
    return entries


def crc32c(data, crc=0):
    entries = table()
    crc ^= 0xFFFFFFFF
    for byte in data:
        crc = crc >> 8 ^ entries[(crc ^ byte) & 0xFF]
    return crc ^ 0xFFFFFFFF


def trailer_of(content):
    """The length of /catalog and its two sums, None where the file does not end with a catalog."""
    magic, length, catalog, structure, zeros = struct.unpack("<8sqIIq", content[-TRAILER:])
    return (length, catalog, structure) if magic == b"KLVXCAT3" and zeros == 0 else None


def extents_of(path):
    """The bytes of all arrays that the catalog of a database points to, in their order."""
    extents = []

    def visit(name, item):
        words = name.split("/")
        is_set = len(words) > 1 and words[-2] in ("elementSets", "nodeSets") or len(words) > 2 and words[-3] in ("elementSets", "nodeSets")
        is_output = len(words) > 1 and words[-2] == "outputs"
        if not isinstance(item, h5py.Dataset) or item.size == 0 or not (words[-1] in POINTED_TO or is_set or is_output):
            return
        if item.chunks:
            chunks = [item.id.get_chunk_info(i) for i in range(item.id.get_num_chunks())]
            extents.extend((chunk.byte_offset, chunk.byte_offset + chunk.size) for chunk in chunks)
        else:
            extents.append((item.id.get_offset(), item.id.get_offset() + item.id.get_storage_size()))

    with h5py.File(path) as odb:
        odb.visititems(visit)
    return sorted(extents)


def sums_of(content, extents):
    """The two sums of a file whose catalog points to these bytes."""
    begin = len(content) - trailer_of(content)[0]
    structure, at = 0, 0
    for first, end in [*extents, (begin, begin)]:
        structure = crc32c(content[at:first], structure)
        at = end
    return crc32c(content[begin:-TRAILER]), structure


def sealed(content, extents):
    """The same bytes with sums that agree."""
    return content[:-16] + struct.pack("<II", *sums_of(content, extents)) + content[-8:]

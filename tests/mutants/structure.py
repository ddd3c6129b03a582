"""Changes of a database through HDF5's own interface: files in perfect order that say what nobody should say."""
import random

import h5py
import numpy as np

NAMES = ["X", "Step-1", "0", "1", "4294967296", "-1", "data", "frames", "layout", "a b", "x" * 300, "n\nStep_1__Frame_1__NT__max\t0",
         "e\x1b[2J", "c\u009b", "\u00e4", "%2F", "%", ".", " "]
NUMBERS = [0, 1, -1, 2, 7, 127, 255, 65536, 2**31 - 1, -2**31, 2**31, 2**32, 2**63 - 1, -2**63]
TYPES = ["i1", "u1", "i2", ">i4", "i4", "u4", "i8", ">u8", "f2", "f4", ">f4", "f8", ">f8", "S3", "V4", "?"]
PLACES = ["pipe.odb", "/dev/zero", "other.odb", "m.odb", "/proc/self/mem"]


def members(file):
    """The paths of all groups and of all data sets; links in circles are passed once."""
    groups, datasets = ["/"], []
    file.visititems(lambda name, item: (datasets if isinstance(item, h5py.Dataset) else groups).append("/" + name))
    return groups, datasets


def values(chance, shape, kind):
    count = int(np.prod(shape)) if shape else 1
    if kind.startswith(("S", "V", "?")):
        return np.zeros(shape, kind)
    with np.errstate(all="ignore"):
        chosen = np.array([chance.choice(NUMBERS) % 2**64 for _ in range(min(count, 64))], "u8")
        return np.resize(chosen, count).astype(kind).reshape(shape)


def delete(file, chance):
    groups, datasets = members(file)
    path = chance.choice(groups[1:] + datasets)
    del file[path]


def rename(file, chance):
    groups, datasets = members(file)
    path = chance.choice(groups[1:] + datasets)
    file.move(path, path.rsplit("/", 1)[0] + "/" + chance.choice(NAMES))


def link(file, chance):
    groups, datasets = members(file)
    path = chance.choice(groups) + "/" + chance.choice(NAMES)
    target = chance.choice(groups + datasets)
    how = chance.randrange(4)
    for i in range(chance.choice([1, 1, 100])):
        where = path if i == 0 else f"{path}{i}"
        file[where] = (file[target] if how < 2 else h5py.SoftLink(target) if how == 2 else
                       h5py.ExternalLink(chance.choice(PLACES), target))


def replace(file, chance):
    """A data set with another type, shape, storage or packing."""
    path = chance.choice(members(file)[1])
    old = file[path].shape or (1,)
    shape = chance.choice([old, old, old[::-1], (), (0,), (1,), (*old, 1), old[:-1], tuple(n + 1 for n in old), (1,) * 9])
    kind = chance.choice(TYPES + [file[path].dtype.str] * 8)
    del file[path]
    options = {}
    if shape and 0 not in shape and chance.random() < 0.5:
        options["chunks"] = chance.choice([(1, *shape[1:]), shape, (1,) * len(shape)])
        options.update(chance.choice([{}, {"compression": "gzip"}, {"fletcher32": True}, {"compression": "lzf"}, {"shuffle": True},
                                      {"compression": "gzip", "fletcher32": True}]))
    file.create_dataset(path, data=values(chance, shape, kind), **options)


def unwritten(file, chance):
    """A data set of any size that takes no room."""
    path = chance.choice(members(file)[1])
    kind = file[path].dtype.str
    del file[path]
    shape = tuple(chance.choice([1, 3, 2**20, 2**31, 2**40]) for _ in range(chance.choice([1, 2, 3])))
    file.create_dataset(path, shape, kind, chunks=tuple(min(n, 1000) for n in shape) if chance.random() < 0.7 else None)


def elsewhere(file, chance):
    path = chance.choice(members(file)[1])
    shape, kind = file[path].shape or (1,), file[path].dtype.str
    del file[path]
    if chance.random() < 0.5:
        file.create_dataset(path, shape, kind, external=[(chance.choice(PLACES), 0, h5py.h5f.UNLIMITED)])
        return
    virtual = h5py.VirtualLayout(shape, kind)
    virtual[...] = h5py.VirtualSource(chance.choice(PLACES), chance.choice(members(file)[1]), shape)
    file.create_virtual_dataset(path, virtual)


def chunk(file, chance):
    """Packed chunks by hand."""
    path = chance.choice(members(file)[1])
    old = file[path][...]
    if old.ndim == 0 or old.size == 0:
        return
    del file[path]
    made = file.create_dataset(path, old.shape, old.dtype, chunks=(1, *old.shape[1:]),
                               **chance.choice([{"compression": "gzip"}, {"fletcher32": True}, {"compression": "gzip", "fletcher32": True}]))
    made[...] = old
    start = (chance.randrange(old.shape[0]), *[0] * (old.ndim - 1))
    mask, stored = made.id.read_direct_chunk(start)
    stored = bytearray(stored)
    if stored and chance.random() < 0.5:
        stored[chance.randrange(len(stored))] ^= 1 << chance.randrange(8)
    stored = chance.choice([stored, stored[:chance.randrange(4)], stored[:-1], stored * 2, stored + b"\0"])
    made.id.write_direct_chunk(start, bytes(stored), chance.choice([mask, mask, 1, 2, 3, 2**32 - 1]))


def attribute(file, chance):
    groups, datasets = members(file)
    with_some = [path for path in groups + datasets if len(file[path].attrs)]
    path = chance.choice(with_some)
    name = chance.choice(sorted(file[path].attrs))
    how = chance.randrange(5)
    if how == 0:
        del file[path].attrs[name]
    elif how == 1:
        file[path].attrs.create(name, chance.choice(NAMES + ["elementNodal", "centroid", "nodal"]), dtype=h5py.string_dtype("utf-8", 400))
    elif how == 2:
        file[path].attrs.create(name, chance.choice(NAMES), dtype=h5py.string_dtype())
    else:
        shape = chance.choice([(), (1,), (3,), (0,), (2, 3), (1000,)])
        file[path].attrs.create(name, values(chance, shape, chance.choice(TYPES)))


def numbers(file, chance):
    """Numbers in a list of frames, labels, offsets."""
    path = chance.choice(members(file)[1])
    item = file[path]
    if item.size == 0 or item.dtype.kind not in "iuf" or item.ndim == 0:
        return
    at = tuple(chance.randrange(n) for n in item.shape)
    with np.errstate(all="ignore"):
        item[at] = np.array(chance.choice(NUMBERS) % 2**64, "u8").astype(item.dtype)


CHANGES = [delete, rename, link, replace, replace, unwritten, elsewhere, chunk, chunk, attribute, attribute, numbers, numbers]


def changed(whole, seed, path):
    """A changed copy of a database, made at `path`. What HDF5 itself refuses to do is left out."""
    chance = random.Random(seed)
    while True:
        path.write_bytes(whole)
        with h5py.File(path, "r+", libver=("v110", "v110")) as file:
            for _ in range(chance.choice([1, 1, 1, 2, 3])):
                try:
                    chance.choice(CHANGES)(file, chance)
                except (OSError, ValueError, TypeError, RuntimeError, KeyError, IndexError):
                    pass
        data = path.read_bytes()
        if data != whole:
            return data

"""A database as it would be without what layout 3 packs together, for tests that look into one by paths."""
import itertools

import h5py
import numpy as np

# Files in memory need names of their own.
NAMES = (f"expanded {number}" for number in itertools.count())


def text(value):
    return value.decode() if isinstance(value, bytes) else str(value)


def link_of(name):
    name = name.replace("%", "%25").replace("/", "%2F")
    return "%2E" if name == "." else name


def expanded(path):
    """The database in memory: sets and histories one by one, a row for each place, no catalog. To be closed."""
    with h5py.File(path) as odb:
        copy = h5py.File(next(NAMES), "w", driver="core", backing_store=False, libver=("v110", "v110"))
        copy.attrs.update(odb.attrs)
        for name in odb:
            if name == "steps":
                steps = copy.create_group("steps", track_order=True)
                steps.attrs.update(odb["steps"].attrs)
                for step in odb["steps"]:
                    odb.copy(odb["steps"][step], steps, step)
            elif name != "catalog":
                odb.copy(name, copy)
    for owner in [copy.get("assembly"), *copy.get("assembly/instances", {}).values(), *copy.get("parts", {}).values()]:
        for kind in ("element", "node"):
            unpack_sets(owner, f"packed{kind.capitalize()}Sets", f"{kind}Sets")
    for step in copy.get("steps", {}).values():
        unpack_histories(step)
        for field in step.get("fields", {}).values():
            for block in field.get("blocks", {}).values():
                expand_rows(copy["locations"][text(block.attrs["location"])], block)
    for location in copy.get("locations", {}).values():
        if "rowOf" in location:
            del location["rowOf"]
            del location.attrs["storedRows"]
    return copy


def unpack_sets(owner, packed, plain):
    if owner is None or packed not in owner:
        return
    group = owner[packed]
    first = group["first"][...]
    for i, name in enumerate(group["names"][...]):
        path = f"{plain}/{link_of(text(name))}"
        labels = group["labels"][first[i]:first[i + 1]]
        if "instances" not in group:
            owner[path] = labels
        elif text(group["instances"][i]):
            owner[f"{path}/{link_of(text(group['instances'][i]))}"] = labels
        else:
            owner.require_group(path)
    del owner[packed]


def unpack_histories(step):
    if "packedHistory" not in step:
        return
    group = step["packedHistory"]
    regions = [text(name) for name in group["regions"][...]]
    for i, name in enumerate(regions):
        region = step.create_group(f"history/{link_of(name)}")
        for column in ("node", "element", "integrationPoint", "sectionPoint"):
            region.attrs[column] = group[column][i]
        for column in ("description", "sectionPointDescription", "set"):
            region.attrs[column] = group[column][i]
        region.create_group("outputs")
    first = group["first"][...]
    for i, name in enumerate(group["names"][...]):
        samples = group["samples"][first[i]:first[i + 1]].reshape(-1, group["width"][i])
        step[f"history/{link_of(regions[group['region'][i]])}/outputs/{link_of(text(name))}"] = samples
    del step["packedHistory"]


def expand_rows(location, block):
    if "rowOf" not in location:
        return
    rows = block["data"][...]
    del block["data"]
    block["data"] = rows[:, location["rowOf"][...].astype(np.int64)]

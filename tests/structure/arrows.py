"""Who includes whom, by the sources, and who links whom, by CMake: both have to say the same."""
import json
import os
import pathlib
import re
import subprocess

# Libraries of others, by the headers that belong to them.
FOREIGN = {"CLI/": "CLI11::CLI11", "fmt/": "kolvex_fmt", "hdf5.h": "kolvex_hdf5", "nlohmann/": "nlohmann_json::nlohmann_json", "expat.h": "kolvex_expat",
           "netcdf.h": "kolvex_netcdf", "netcdf_mem.h": "kolvex_netcdf",
           "sqlite3.h": "kolvex_sqlite", "zlib.h": "kolvex_zlib", "catalog_columns.h": "catalog_schema"}
# Linked for its flags: it has no headers.
UNTOLD = {"kolvex_build"}


class Target:
    """One of CMake's: the files of a folder that it compiles, with the headers beside them, and what it links."""

    def __init__(self, name, kind, files):
        self.name, self.kind, self.files = name, kind, files
        self.links = {}  # name of the target: whether those who link this one get it too


def targets_of(root, build):
    """Configures the tree without its tests: its targets by name, the links as they are written."""
    query = build / ".cmake/api/v1/query"
    query.mkdir(parents=True)
    (query / "codemodel-v2").touch()
    subprocess.run([os.environ["KOLVEX_CMAKE"], "-G", "Ninja", "-S", root, "-B", build, "-DBUILD_TESTING=OFF", f"--graphviz={build}/links.dot"],
                   check=True, stdout=subprocess.DEVNULL, timeout=120)
    targets = {}
    for reply in (build / ".cmake/api/v1/reply").glob("target-*.json"):
        model = json.loads(reply.read_text())
        files = {pathlib.PurePath(s["path"]) for s in model.get("sources", []) if "compileGroupIndex" in s or "backtrace" in s}
        files = {f for f in files if f.parts[0] == "src"}
        if any(f.suffix == ".cpp" for f in files):
            targets[model["name"]] = Target(model["name"], model["type"], files)
    add_headers(root, targets)
    add_links((build / "links.dot").read_text(), targets)
    return targets


def add_headers(root, targets):
    """A header belongs to the target of the source of its name, else to the library of its folder."""
    owner_of = {f.with_suffix(""): t for t in targets.values() for f in t.files if f.suffix == ".cpp"}
    library_of = {f.parent: t for t in targets.values() if t.kind != "EXECUTABLE" for f in t.files}
    for path in sorted((root / "src").rglob("*")):
        if path.suffix not in (".h", ".inc"):
            continue
        header = pathlib.PurePath(path.relative_to(root))
        owner = owner_of.get(header.with_suffix("")) or next(
            library_of[folder] for folder in header.parents if folder in library_of)
        owner.files.add(header)


def add_links(dot, targets):
    for style, user, used in re.findall(r'"node\d+" -> "node\d+"\s+(?:\[ style = (\w+) \]\s+)?// (\S+) -> (\S+)', dot):
        if user in targets:
            targets[user].links[used] = style != "dotted"


def included_by(path):
    """Names in include lines, with whether they stand in quotes."""
    return re.findall(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', path.read_text(), re.MULTILINE)


def owner_of(root, file, name, owners):
    """The target of the header that `file` includes as `name`; None for one of the system."""
    own = owners.get(pathlib.PurePath("src") / name) or owners.get(file.parent / name)
    if own:
        return own
    if "/" in name and (root / "src" / name.split("/")[0]).is_dir():
        raise AssertionError(f"{file} includes {name}, which is not there or belongs to no target")
    return next((library for start, library in FOREIGN.items()
                 if name == start or start.endswith("/") and name.startswith(start)), None)


def includes_of(root, targets):
    """{name of a target: {name of one that it includes: a file that does}}, and the same of what others see of it.

    Others see the headers that they include, and what those include of the same target."""
    owners = {f: t.name for t in targets.values() for f in t.files}
    lines = [(file, name, owner_of(root, file, name, owners)) for file in sorted(owners) for name in included_by(root / file)]
    path_of = {(file, name): next((p for p in (pathlib.PurePath("src") / name, file.parent / name) if p in owners), None)
               for file, name, _ in lines}
    seen = {path_of[file, name] for file, name, used in lines if used in targets and used != owners[file]}
    while more := {path_of[file, name] for file, name, used in lines if file in seen and used == owners[file]} - seen:
        seen |= more
    includes, visible = {t: {} for t in targets}, {t: {} for t in targets}
    for file, name, used in lines:
        if used is None or used == owners[file]:
            continue
        includes[owners[file]].setdefault(used, f"{file} includes {name}")
        if file in seen:
            visible[owners[file]].setdefault(used, f"{file} includes {name}")
    return includes, visible


def disagreements(root, targets):
    """What is included and not linked, linked and not included, handed on or not against what others see; in words."""
    problems = []
    all_includes, all_visible = includes_of(root, targets)
    for name, target in sorted(targets.items()):
        includes, visible = all_includes[name], all_visible[name]
        for used in sorted(includes):
            if used not in target.links and used not in UNTOLD:
                problems.append(f"{includes[used]}, but {name} does not link {used}")
        for used, is_public in sorted(target.links.items()):
            if used in UNTOLD or used not in targets and used not in FOREIGN.values():
                continue
            if used not in includes:
                problems.append(f"{name} links {used}, which none of its files includes")
            elif used in visible and not is_public:
                problems.append(f"{visible[used]}, which others see, but {name} links {used} privately")
            elif is_public and used not in visible:
                problems.append(f"{name} links {used} publicly, but no header that others see includes it")
    return problems


def linked_from(targets, name):
    """Names of all that a target is linked from, directly and by others."""
    reached, due = set(), [name]
    while due:
        target = targets.get(due.pop())
        new = set(target.links if target else ()) - reached
        reached |= new
        due += new
    return reached


def circle(arrows):
    """Names of a circle in {name: names}, None where there is none."""
    done, path = set(), []

    def visit(name):
        if name in path:
            return path[path.index(name):] + [name]
        if name in done:
            return None
        path.append(name)
        for other in sorted(arrows.get(name, ())):
            if found := visit(other):
                return found
        done.add(path.pop())
        return None

    return next((found for name in sorted(arrows) if (found := visit(name))), None)


def folder_arrows(root):
    """{folder: those of src whose headers its files include}."""
    arrows = {}
    for path in sorted((root / "src").rglob("*")):
        if path.suffix not in (".h", ".inc", ".cpp"):
            continue
        folder = str(path.parent.relative_to(root / "src"))
        for name in included_by(path):
            other = str(pathlib.PurePath(name).parent)
            if (root / "src" / name).exists() and other != folder:
                arrows.setdefault(folder, set()).add(other)
    return arrows

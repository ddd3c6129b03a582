"""Names that sources keep to themselves, by folder.

The release preset compiles the sources of a folder together, so that what two of them call alike in their unnamed
namespaces collides there. Development builds compile them one by one and would not show it.
"""
import collections
import re

TYPE = re.compile(r"(?:(?:class|struct|enum class|enum) (\w+)|using (\w+) =)")
VARIABLE = re.compile(r"[^(={]*?\b(\w+)\s*(?:=|;|\{|\[)")
FUNCTION = re.compile(r"[^(={]*?\b(\w+)\(")


def own_names(text):
    """What a source declares at the left margin of its unnamed namespaces; functions with their parameters."""
    names = set()
    is_inside = False
    statements = re.sub(r",\n\s+", ", ", text)  # parameters on several lines
    for line in statements.split("\n"):
        if line.startswith("namespace {"):
            is_inside = True
        elif line.startswith("}  // namespace"):
            is_inside = False
        elif is_inside and re.match(r"[A-Za-z\[]", line) and not re.match(r"template|namespace|using [\w:]+;", line):
            function = FUNCTION.match(line)
            if function and not TYPE.match(line):
                parameters = re.sub(r" \w+(?=[,)])", "", line[function.end():])
                names.add(f"{function.group(1)}({parameters.split(') ')[0].rstrip(' {')}")
            else:
                name = TYPE.match(line) or VARIABLE.match(line)
                if name:
                    names.add(next(filter(None, name.groups())))
    return names


def collisions(root, leave_out=()):
    """["folder: name in a.cpp, b.cpp"] for each name that two sources of a folder declare for themselves."""
    found = []
    for folder in sorted({path.parent for path in (root / "src").rglob("*.cpp")}):
        where = collections.defaultdict(list)
        for source in sorted(folder.glob("*.cpp")):
            if source.relative_to(root).as_posix() in leave_out:
                continue
            for name in own_names(source.read_text()):
                where[name].append(source.name)
        found += [f"{folder.relative_to(root)}: {name} in {', '.join(files)}"
                  for name, files in sorted(where.items()) if len(files) > 1]
    return found

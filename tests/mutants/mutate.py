"""Damage: what accidents and enemies do to files, the same for the same seed."""
import random
import struct

PAGES = [16, 64, 512, 4096]
INTEGERS = [0, 1, -1, 2**31 - 1, -2**31, 2**32 - 1, 2**63 - 1, -2**63, 2**40, 65535]
NUMBERS = ["99999999999", "2147483647", "-1", "0", "1E999", "-1E-999", "nan", "inf", "1.0E+308", "*" * 12, ""]
TEXT_BYTES = b"\n\r\0 -*,.=+0159EXx\t\"\xff"


def flip_bits(data, chance):
    for _ in range(chance.choice([1, 1, 1, 2, 4, 16])):
        data[chance.randrange(len(data))] ^= 1 << chance.randrange(8)


def set_bytes(data, chance):
    for _ in range(chance.choice([1, 1, 2, 8])):
        data[chance.randrange(len(data))] = chance.choice([0, 1, 127, 128, 255, chance.randrange(256)])


def cut(data, chance):
    del data[chance.randrange(len(data)):]


def append(data, chance):
    data += bytes(chance.randrange(256) for _ in range(chance.choice([1, 7, 4096])))


def zero_page(data, chance):
    size = chance.choice(PAGES)
    at = chance.randrange(0, len(data), size)
    data[at:at + size] = bytes(len(data[at:at + size]))


def double_page(data, chance):
    size = chance.choice(PAGES)
    at = chance.randrange(0, len(data), size)
    data[at:at] = data[at:at + size]


def copy_page(data, chance):
    """A page in the place of another one, as a file system mixes them up."""
    size = chance.choice(PAGES)
    to, source = chance.randrange(0, len(data), size), chance.randrange(0, len(data), size)
    page = data[source:source + size]
    data[to:to + len(page)] = page


def drop_page(data, chance):
    size = chance.choice(PAGES)
    at = chance.randrange(0, len(data), size)
    del data[at:at + size]


def extreme_integer(data, chance):
    number = chance.choice(INTEGERS)
    size = 4 if -2**31 <= number < 2**32 and chance.random() < 0.5 else 8
    at = chance.randrange(max(1, len(data) - size))
    data[at:at + size] = struct.pack("<Q", number % 2**64)[:size]


def extreme_count(data, chance):
    """An integer as netCDF's classic files have them, the most significant byte first, at a place of four bytes."""
    at = chance.randrange(0, max(1, min(len(data), 4096) - 8), 4)
    data[at:at + 4] = struct.pack(">I", chance.choice(INTEGERS) % 2**32)


def text_bytes(data, chance):
    for _ in range(chance.choice([1, 1, 2, 4])):
        data[chance.randrange(len(data))] = chance.choice(TEXT_BYTES)


def lines_of(data):
    return bytes(data).split(b"\n")


def drop_line(data, chance):
    lines = lines_of(data)
    del lines[chance.randrange(len(lines))]
    data[:] = b"\n".join(lines)


def double_line(data, chance):
    lines = lines_of(data)
    at = chance.randrange(len(lines))
    lines[at:at] = [lines[at]] * chance.choice([1, 1, 100])
    data[:] = b"\n".join(lines)


def move_line(data, chance):
    lines = lines_of(data)
    lines.insert(chance.randrange(len(lines)), lines.pop(chance.randrange(len(lines))))
    data[:] = b"\n".join(lines)


def long_line(data, chance):
    lines = lines_of(data)
    lines[chance.randrange(len(lines))] += chance.choice([b" ", b"1", b"1 ", b"x,"]) * chance.choice([100, 5000, 700_000])
    data[:] = b"\n".join(lines)


def change_number(data, chance):
    """A word with a digit becomes a number that nobody expects there."""
    lines = lines_of(data)
    with_digits = [i for i, line in enumerate(lines) if any(48 <= byte <= 57 for byte in line)]
    if not with_digits:
        return
    at = chance.choice(with_digits)
    line = lines[at]
    digits = [i for i, byte in enumerate(line) if 48 <= byte <= 57]
    begin = end = chance.choice(digits)
    while begin > 0 and line[begin - 1:begin].strip() and line[begin - 1:begin] not in b",=":
        begin -= 1
    while end < len(line) and line[end:end + 1].strip() and line[end:end + 1] not in b",=":
        end += 1
    number = chance.choice(NUMBERS).encode()
    # Columns are fixed in some files: keep them, or not.
    width = end - begin
    lines[at] = line[:begin] + (number.rjust(width)[:width] if chance.random() < 0.5 else number) + line[end:]
    data[:] = b"\n".join(lines)


BINARY = [flip_bits, flip_bits, set_bytes, set_bytes, cut, append, zero_page, double_page, copy_page, drop_page,
          extreme_integer, extreme_integer]
NETCDF = BINARY + [extreme_count] * 4
TEXT = [text_bytes, text_bytes, flip_bits, cut, zero_page, double_page, copy_page, drop_page, drop_line, double_line,
        move_line, long_line, change_number, change_number, change_number]


def mutant(whole, seed, kinds):
    """A damaged copy of some bytes; never the same bytes."""
    chance = random.Random(seed)
    while True:
        data = bytearray(whole)
        for _ in range(chance.choice([1, 1, 1, 2, 3])):
            if data:
                chance.choice(kinds)(data, chance)
        if data != whole:
            return bytes(data)


def lookup3(data):
    """The checksum of HDF5's metadata: hashlittle of Bob Jenkins' lookup3.c (public domain, 2006), from 0."""
    mask = 2**32 - 1

    def rotate(x, k):
        return ((x << k) | (x >> (32 - k))) & mask

    a = b = c = (0xdeadbeef + len(data)) & mask
    if not data:
        return c
    while len(data) > 12:
        x, y, z = struct.unpack("<3I", data[:12])
        a, b, c = (a + x) & mask, (b + y) & mask, (c + z) & mask
        a = ((a - c) & mask) ^ rotate(c, 4)
        c = (c + b) & mask
        b = ((b - a) & mask) ^ rotate(a, 6)
        a = (a + c) & mask
        c = ((c - b) & mask) ^ rotate(b, 8)
        b = (b + a) & mask
        a = ((a - c) & mask) ^ rotate(c, 16)
        c = (c + b) & mask
        b = ((b - a) & mask) ^ rotate(a, 19)
        a = (a + c) & mask
        c = ((c - b) & mask) ^ rotate(b, 4)
        b = (b + a) & mask
        data = data[12:]
    x, y, z = struct.unpack("<3I", data.ljust(12, b"\0"))
    a, b, c = (a + x) & mask, (b + y) & mask, (c + z) & mask
    for first, second, k in (("c", "b", 14), ("a", "c", 11), ("b", "a", 25), ("c", "b", 16), ("a", "c", 4), ("b", "a", 14),
                             ("c", "b", 24)):
        values = {"a": a, "b": b, "c": c}
        values[first] = ((values[first] ^ values[second]) - rotate(values[second], k)) & mask
        a, b, c = values["a"], values["b"], values["c"]
    return c


def object_headers(data):
    """Where object headers of version 2 begin, and where their checksums are (HDF5 File Format 3.0, IV.A.1.b)."""
    at = data.find(b"OHDR")
    while at >= 0:
        flags = data[at + 5]
        behind = at + 6 + (16 if flags & 0x20 else 0) + (4 if flags & 0x10 else 0)
        size = 1 << (flags & 3)
        end = behind + size + int.from_bytes(data[behind:behind + size], "little")
        if end + 4 <= len(data):
            yield at, end
        at = data.find(b"OHDR", at + 4)


def forged(whole, seed):
    """A change inside one object header whose checksum is made again: what only an enemy does."""
    chance = random.Random(seed)
    data = bytearray(whole)
    begin, end = chance.choice(list(object_headers(whole)))
    for _ in range(chance.choice([1, 1, 2, 4])):
        at = chance.randrange(begin + 6, end)
        data[at] = chance.choice([0, 1, 127, 128, 255, chance.randrange(256)])
    data[end:end + 4] = lookup3(bytes(data[begin:end])).to_bytes(4, "little")
    return bytes(data)

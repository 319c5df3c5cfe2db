"""The second opinion on property lists: Python's own reader and writers.

make FOLDER SEED COUNT   writes COUNT random trees as N.xml, N.bplist and, one line each, N.dump
dump FILE...             prints each file's tree, one line each, as dump() of the tests does
"""

import datetime
import math
import pathlib
import plistlib
import random
import struct
import sys

EPOCH = datetime.datetime(1970, 1, 1)


def dump_text(text):
    plain = set(range(0x20, 0x7F)) - {ord('"'), ord("\\")}
    return '"' + "".join(chr(b) if b in plain else f"\\x{b:02x}" for b in text.encode()) + '"'


def dump(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, int):
        return f"i{value}"
    if isinstance(value, float):
        return "rnan" if math.isnan(value) else "r" + struct.pack(">d", value).hex()
    if isinstance(value, datetime.datetime):
        return f"d{(value - EPOCH) // datetime.timedelta(microseconds=1)}"
    if isinstance(value, str):
        return "s" + dump_text(value)
    if isinstance(value, bytes):
        return "x" + value.hex()
    if isinstance(value, list):
        return "[" + ",".join(map(dump, value)) + "]"
    return "{" + ",".join(dump_text(k) + ":" + dump(v) for k, v in value.items()) + "}"


def text(rng):
    # No CR: plistlib turns it into a line feed when it writes XML.
    alphabet = "abcdefgh \t\n&<>\"'\u00e4\u20ac\U0001f600"
    return "".join(rng.choice(alphabet) for _ in range(rng.randrange(24)))


def leaf(rng):
    return rng.choice([
        lambda: rng.random() < 0.5,
        lambda: rng.randrange(-(2 ** rng.randrange(1, 64)), 2 ** rng.randrange(1, 65)),
        lambda: rng.choice([0.1, -0.0, 1e22, math.inf, -math.inf, math.nan, rng.uniform(-9, 9)]),
        lambda: datetime.datetime(rng.randrange(1, 10000), rng.randrange(1, 13),
                                  rng.randrange(1, 29), rng.randrange(24), rng.randrange(60)),
        lambda: text(rng),
        lambda: rng.randbytes(rng.randrange(100)),
    ])()


def tree(rng, depth=4):
    kind = rng.randrange(4 if depth else 2)
    size = rng.randrange(30 if rng.random() < 0.1 else 5)
    if kind < 2:
        return leaf(rng)
    if kind == 2:
        return [tree(rng, depth - 1) for _ in range(size)]
    return {text(rng): tree(rng, depth - 1) for _ in range(size)}


def main():
    command, *arguments = sys.argv[1:]
    if command == "make":
        folder, seed, count = pathlib.Path(arguments[0]), int(arguments[1]), int(arguments[2])
        rng = random.Random(seed)
        for i in range(count):
            made = [tree(rng) for _ in range(4)]
            (folder / f"{i}.xml").write_bytes(plistlib.dumps(made, sort_keys=False))
            (folder / f"{i}.bplist").write_bytes(
                plistlib.dumps(made, fmt=plistlib.FMT_BINARY, sort_keys=False))
            (folder / f"{i}.dump").write_text(dump(made))
    else:
        for name in arguments:
            with open(name, "rb") as file:
                print(dump(plistlib.load(file)))


main()

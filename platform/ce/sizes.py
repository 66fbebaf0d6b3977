"""Prints the size of the parts of a panel executable, read from its link map, as a Markdown table.

usage: sizes.py EXECUTABLE.map EXECUTABLE.exe
"""
import collections
import os
import re
import sys

PARTS = [ # the first match of an object's path counts
    (r"libstdc\+\+\.a|libsupc\+\+\.a", "C++ library, compiled parts: exceptions, strings, containers"),
    (r"libgcc\.a", "compiler's library: unwinding, division, floating point"),
    (r"libm\.a", "mathematics"),
    (r"libc\.a", "C library: formatted text, memory, streams"),
    (r"libtinyxml2\.a", "XML"),
    (r"libhelper\.a", "the helper"),
    (r"runtime\.dir/Header", "header of the file"),
    (r"runtime\.dir/Imports", "imports: table and thunks"),
    (r"runtime\.dir", "C run time of `platform/ce` and `platform/crt`"),
]
LOADED = re.compile(r"\.(header|text|rdata|rdata_end|ARM\.extab|ARM\.exidx|data)$")
PLACED = re.compile(r"^ (?:\S+)?\s+0x([0-9a-f]+)\s+0x([0-9a-f]+) (\S.*)$")


def part_of(path):
    return next((name for pattern, name in PARTS if re.search(pattern, path)), "the program's own objects")


def sizes(link_map):
    """Returns the bytes of each part in the file. The map lists input sections below their output section."""
    with open(link_map, encoding="utf-8") as file:
        placed = file.read().split("Linker script and memory map")[1]
    placed = re.sub(r"\n (\.\S+)\n +0x", r"\n \1 0x", placed)  # joins a long name with its next line
    total = collections.Counter()
    loaded = False
    for line in placed.splitlines():
        if line and not line[0].isspace():
            loaded = bool(LOADED.match(line.split()[0]))
        found = PLACED.match(line)
        if loaded and found and not re.search(r"\*fill\*|BYTE", line):
            total[part_of(found[3])] += int(found[2], 16)
    return total


def main(link_map, executable):
    parts = sizes(link_map)
    whole = os.path.getsize(executable)
    parts["padding to whole pages"] = whole - sum(parts.values())
    print("| part | bytes |\n|---|---:|")
    for name, size in (+parts).most_common():  # without empty parts
        print(f"| {name} | {size:,} |")
    print(f"| **in all** | **{whole:,}** |")


if __name__ == "__main__":
    main(*sys.argv[1:])

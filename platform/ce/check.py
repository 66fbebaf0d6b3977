"""Holds a linked panel executable against the one list of functions, and looks for what must not be linked.

usage: check.py NM EXECUTABLE.elf EXECUTABLE.map COREDLL.INC

A function that is used and not on the list does not link; here one that is on the list as imported, and not used, is
found: the linker has left its thunk out.
"""
import re
import subprocess
import sys

# Parts of the ready-made library that take a wide character for 32 bits.
WIDE = re.compile(r"\((?:cow-)?(?:wstring|wlocale|ext-inst|wio|istream-wide|ostream-wide)[\w-]*\.o\)")


def main(nm, executable, link_map, inc):
    symbols = {line.split()[-1] for line in subprocess.check_output([nm, executable], text=True).splitlines()}
    with open(inc, encoding="utf-8") as file:
        text = file.read()
    wanted = re.findall(r"^COREDLL(?:_SURE)?\((\w+), IMPORTED\b", text, re.MULTILINE)
    wanted += ["runtime_" + name for name in re.findall(r"^COREDLL_RUN_TIME\((\w+)\)$", text, re.MULTILINE)]
    faults = [f"coredll.inc imports {name}, and nothing uses it" for name in wanted if name not in symbols]
    with open(link_map, encoding="utf-8") as file:
        archived = file.read().split("Discarded input sections")[0]
    faults += [f"linked: {member}, which is for 32-bit wide text" for member in sorted(set(WIDE.findall(archived)))]
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

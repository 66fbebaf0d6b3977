"""Holds a linked panel executable against the one list of functions, and looks for what must not be linked.

usage: check.py imports NM EXECUTABLE.elf INCLUDE-FOLDER
       check.py wide EXECUTABLE.map

imports: a function that is used and not on the list does not link; here one that is on the list as imported, and not
used, is found (the linker has left its thunk out), and one that a header declares and the list lacks.
"""
import glob
import re
import subprocess
import sys

# Parts of the ready-made libraries that take a wide character for 32 bits. (Of the C library mbtowc_r and wctomb_r are no
# such: by them it reads its own patterns, a character at a time.)
WIDE = re.compile(r"libstdc\+\+\.a\((?:cow-)?(?:wstring|wlocale|ext-inst|wio|istream-wide|ostream-wide)[\w-]*\.o\)|"
                  r"libc\.a\(lib_a-(?:\w*wcs\w*|wmem\w+|[fgp]\w*wc|fputws\w*|fgetws\w*|[sv]?\w*wprintf|\w*wscanf|"
                  r"mbr\w+|wcr\w+|isw\w+|tow\w+)\.o\)")
# Declared, and no function of coredll.dll: read from the kernel's data page; the program's own.
NOT_COREDLL = {"GetCurrentThreadId", "WinMain"}
OTHER_LIBRARY = "tagUserAPI.h"


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def imports(nm, executable, include):
    symbols = {line.split()[-1] for line in subprocess.check_output([nm, executable], text=True).splitlines()}
    listing = read(include + "/coredll.inc")
    program = re.findall(r"^COREDLL(?:_SURE)?\((\w+), (\w+)", listing, re.MULTILINE)
    wanted = [name for name, how in program if how == "IMPORTED"]
    wanted += ["runtime_" + name for name in re.findall(r"^COREDLL_RUN_TIME\((\w+)\)$", listing, re.MULTILINE)]
    faults = [f"coredll.inc imports {name}, and nothing uses it" for name in wanted if name not in symbols]
    headers = [path for path in glob.glob(include + "/*.h") if not path.endswith("/" + OTHER_LIBRARY)]
    declared = set(re.findall(r"^[\w ]+\*? WINAPI (\w+)\(", "".join(map(read, headers)), re.MULTILINE))
    listed = {name for name, _ in program}
    faults += [f"the headers declare {name}, and coredll.inc lacks it" for name in declared - listed - NOT_COREDLL]
    faults += [f"coredll.inc lists {name}, and no header declares it" for name in listed - declared]
    return faults


def wide(link_map):
    archived = read(link_map).split("Discarded input sections")[0]
    return [f"linked: {member}, which is for 32-bit wide text" for member in sorted(set(WIDE.findall(archived)))]


if __name__ == "__main__":
    found = {"imports": imports, "wide": wide}[sys.argv[1]](*sys.argv[2:])
    for fault in sorted(found):
        print(fault, file=sys.stderr)
    sys.exit(1 if found else 0)

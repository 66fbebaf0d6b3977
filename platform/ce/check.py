"""Holds a linked panel executable against the one list of functions, and looks for what must not be linked.

usage: check.py imports NM EXECUTABLE.elf INCLUDE-FOLDER
       check.py wide EXECUTABLE.map
       check.py numbers NM EXECUTABLE.elf

imports: a function that is used and not on the list does not link; here one that is on the list as imported, and not
used, is found (the linker has left its thunk out), one that a header declares and the list lacks, and one that takes a
function of the program without a wrapper for it.
numbers: what of the XML library formats or reads floating point, which FormattedText.cpp leaves out.
"""
import glob
import re
import subprocess
import sys

# Parts of the ready-made libraries that take a wide character for 32 bits, by their members' names. Of the C++ library
# that is whatever streams and locales consist of. Of the C library two are no such: with them it reads its own patterns,
# a character at a time.
WIDE = {
    "c": re.compile(r"wc|wmem|^mb|^isw|^tow|fwide|^f[gp]\w*ws|w(printf|scanf)"),
    "stdc++": re.compile(r"locale|codecvt|ctype|wstring|ext-inst|stream|ios|globals_io"),
}
NOT_WIDE = {"mbtowc_r", "wctomb_r"}
FLOATING = re.compile(r"8tinyxml27XMLUtil\d+To\w+E([df]|PKcP[df])")
# Declared, and no function of coredll.dll: read from the kernel's data page; the program's own.
NOT_COREDLL = {"GetCurrentThreadId", "WinMain"}
OTHER_LIBRARY = "tagUserAPI.h"
# Parameters that hand a function of the program to the platform: such a call must go through Callbacks.cpp.
CALLBACK = re.compile(r"\b(?:LPTHREAD_START_ROUTINE|WNDPROC|HOOKPROC|WNDCLASSW)\b")


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def symbols_of(nm, executable):
    return {line.split()[-1] for line in subprocess.check_output([nm, executable], text=True).splitlines()}


def imports(nm, executable, include):
    symbols = symbols_of(nm, executable)
    listing = read(include + "/coredll.inc")
    program = re.findall(r"^COREDLL(?:_SURE)?\((\w+), (\w+)", listing, re.MULTILINE)
    wanted = [name for name, how in program if how == "IMPORTED"]
    wanted += ["runtime_" + name for name in re.findall(r"^COREDLL_RUN_TIME\((\w+)\)$", listing, re.MULTILINE)]
    faults = [f"coredll.inc imports {name}, and nothing uses it" for name in wanted if name not in symbols]
    headers = [path for path in glob.glob(include + "/*.h") if not path.endswith("/" + OTHER_LIBRARY)]
    declarations = dict(re.findall(r"^[\w ]+\*? WINAPI (\w+)\(([^;]*);", "".join(map(read, headers)), re.MULTILINE))
    declared = set(declarations)
    listed = {name for name, _ in program}
    faults += [f"the headers declare {name}, and coredll.inc lacks it" for name in declared - listed - NOT_COREDLL]
    faults += [f"coredll.inc lists {name}, and no header declares it" for name in listed - declared]
    faults += [f"{name} takes a function of the program: it wants a --wrap and a wrapper in Callbacks.cpp"
               for name in wanted if CALLBACK.search(declarations.get(name, "")) and "__wrap_" + name not in symbols]
    return faults


def wide(link_map):
    archived = read(link_map).split("Discarded input sections")[0]
    members = set(re.findall(r"\blib(c|stdc\+\+)\.a\((?:lib_a-)?([\w+-]+)\.o\)", archived))
    return [f"linked: {member} of lib{library}.a, which is for 32-bit wide text"
            for library, member in members if WIDE[library].search(member) and member not in NOT_WIDE]


def numbers(nm, executable):
    return [f"linked: {name}, which wants floating point in formatted text"
            for name in symbols_of(nm, executable) if FLOATING.search(name)]


if __name__ == "__main__":
    found = {"imports": imports, "wide": wide, "numbers": numbers}[sys.argv[1]](*sys.argv[2:])
    for fault in sorted(found):
        print(fault, file=sys.stderr)
    sys.exit(1 if found else 0)

"""Compares a linked panel executable with the list of functions, and looks for code that must not be linked.

usage: check.py imports NM EXECUTABLE.elf INCLUDE-FOLDER
       check.py wide EXECUTABLE.map
       check.py numbers NM EXECUTABLE.elf

imports: finds a function that the list calls imported and no code uses (the linker has dropped its thunk), a function that a
header declares and the list lacks, and a function with a callback but without a wrapper. A used function that the list lacks
already fails to link.
wide: finds parts of the ready-made libraries that expect 32-bit wide characters.
numbers: finds parts of the XML library that format or read floating point, which FormattedText.cpp does not support.
"""
import glob
import re
import subprocess
import sys

# Members of the ready-made libraries that expect 32-bit wide characters. In the C++ library these are the parts of streams and
# locales. NOT_WIDE lists two members of the C library that are harmless: the library reads its own format strings with them.
WIDE = {
    "c": re.compile(r"wc|wmem|^mb|^isw|^tow|fwide|^f[gp]\w*ws|w(printf|scanf)"),
    "stdc++": re.compile(r"locale|codecvt|ctype|wstring|ext-inst|stream|ios|globals_io"),
}
NOT_WIDE = {"mbtowc_r", "wctomb_r"}
FLOATING = re.compile(r"8tinyxml27XMLUtil\d+To\w+E([df]|PKcP[df])")
# Declared functions that coredll.dll does not export: GetCurrentThreadId reads the kernel's data page, WinMain is the program's.
NOT_COREDLL = {"GetCurrentThreadId", "WinMain"}
OTHER_LIBRARY = "tagUserAPI.h"
# Parameter types of callbacks. A function with one of them must go through Callbacks.cpp.
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

"""Holds the panel executable against what a panel expects, with a reader that knows nothing of how it was made.

usage: read_image.py EXECUTABLE COREDLL.INC
"""
import re
import sys

import pefile

MACHINE_ARM = 0x01C0
SUBSYSTEM_CE = 9
MAXIMUM_SIZE = 400 * 1024
PAGE = 0x1000


def listed(path):
    """What the one list says is imported: the helper's functions, and its C run time's."""
    with open(path, encoding="utf-8") as file:
        text = file.read()
    program = re.findall(r"^COREDLL(?:_SURE)?\((\w+), IMPORTED\b", text, re.MULTILINE)
    run_time = re.findall(r"^COREDLL_RUN_TIME\((\w+)\)$", text, re.MULTILINE)
    return [program, run_time]


def main(executable, inc):
    faults = []

    def expect(what, found, wanted):
        if found != wanted:
            faults.append(f"{what}: {found!r}, not {wanted!r}")

    image = pefile.PE(executable)
    faults += image.get_warnings()
    header = image.OPTIONAL_HEADER
    expect("machine", image.FILE_HEADER.Machine, MACHINE_ARM)
    expect("subsystem", header.Subsystem, SUBSYSTEM_CE)
    expect("subsystem version", (header.MajorSubsystemVersion, header.MinorSubsystemVersion), (5, 0))
    expect("base", header.ImageBase, 0x10000)
    expect("alignments", (header.SectionAlignment, header.FileAlignment), (PAGE, PAGE))
    expect("time", image.FILE_HEADER.TimeDateStamp, 0)
    expect("sections", [s.Name.rstrip(b"\0") for s in image.sections], [b".text", b".rdata", b".data"])
    code = image.sections[0]
    if not code.VirtualAddress <= header.AddressOfEntryPoint < code.VirtualAddress + code.Misc_VirtualSize:
        faults.append("the entry lies outside of the code")
    end = max(s.VirtualAddress + s.Misc_VirtualSize for s in image.sections)
    expect("size of the image", header.SizeOfImage, (end + PAGE - 1) // PAGE * PAGE)
    blocks = image.DIRECTORY_ENTRY_IMPORT
    expect("libraries", {b.dll.lower() for b in blocks}, {b"coredll.dll"})
    expect("imports", [[i.name.decode() for i in b.imports] for b in blocks], listed(inc))
    size = len(image.__data__)
    if size > MAXIMUM_SIZE:
        faults.append(f"{size} bytes, more than {MAXIMUM_SIZE}")
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))

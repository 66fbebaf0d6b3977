"""Holds the panel executable against what a panel expects, with a reader that knows nothing of how it was made.

usage: read_image.py EXECUTABLE COREDLL.INC
"""
import re
import sys

import pefile

MACHINE_ARM = 0x01C0
SUBSYSTEM_CE = 9
MAXIMUM_SIZE = 200_000
PAGE = 0x1000
# Fixed address, executable, no line numbers, no symbols, 32 bits.
CHARACTERISTICS = 0x010F
SECTIONS = [
    (b".text", 0x60000020), # code, executable, readable
    (b".rdata", 0x40000040), # initialised, readable
    (b".data", 0xC0000040), # initialised, readable, writable
]


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
    expect("characteristics", image.FILE_HEADER.Characteristics, CHARACTERISTICS)
    expect("kind of header", header.Magic, 0x010B)
    expect("subsystem", header.Subsystem, SUBSYSTEM_CE)
    expect("subsystem version", (header.MajorSubsystemVersion, header.MinorSubsystemVersion), (5, 0))
    expect("base", header.ImageBase, 0x10000)
    expect("alignments", (header.SectionAlignment, header.FileAlignment), (PAGE, PAGE))
    expect("time", image.FILE_HEADER.TimeDateStamp, 0)
    expect("sections", [(s.Name.rstrip(b"\0"), s.Characteristics) for s in image.sections], SECTIONS)
    next_address = header.SizeOfHeaders
    for section in image.sections:
        # What lies at an offset of the file lies at that offset of the image.
        expect(f"{section.Name} in the file", section.PointerToRawData, section.VirtualAddress)
        expect(f"{section.Name} in memory", section.VirtualAddress, next_address)
        expect(f"{section.Name} beyond whole pages", section.SizeOfRawData % PAGE, 0)
        next_address = (section.VirtualAddress + section.Misc_VirtualSize + PAGE - 1) // PAGE * PAGE
    expect("relocations", image.OPTIONAL_HEADER.DATA_DIRECTORY[5].Size, 0)
    code = image.sections[0]
    if not code.VirtualAddress <= header.AddressOfEntryPoint < code.VirtualAddress + code.Misc_VirtualSize:
        faults.append("the entry lies outside of the code")
    end = max(s.VirtualAddress + s.Misc_VirtualSize for s in image.sections)
    expect("size of the image", header.SizeOfImage, (end + PAGE - 1) // PAGE * PAGE)
    blocks = image.DIRECTORY_ENTRY_IMPORT
    expect("libraries", {b.dll.lower() for b in blocks}, {b"coredll.dll"})
    expect("imports", [[i.name.decode() for i in b.imports] for b in blocks], listed(inc))
    data = image.sections[2]
    slots = header.DATA_DIRECTORY[12] # the import address table, which the platform writes to
    if not data.VirtualAddress <= slots.VirtualAddress <= data.VirtualAddress + data.SizeOfRawData - slots.Size:
        faults.append("the addresses of the imports lie outside of the writable section")
    size = len(image.__data__)
    if size > MAXIMUM_SIZE:
        faults.append(f"{size} bytes, more than {MAXIMUM_SIZE}")
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))

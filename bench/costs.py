"""What the panel executable's operations cost: instructions of its own, of all threads, and platform calls by name, as a
table in Markdown; beside each the least that the operation can take (bench/least).

usage: costs.py PANEL-COMMAND FOLDER-OF-EXECUTABLES [DOCUMENT]

Each program leads the same life twice, on a simulated panel in stepped time. The emulator writes a line for each
instruction of the image; an operation has cost what was added from one rest, when all threads wait, to the next, or
what its function has executed from its entry to its return. What the platform executes is not counted. Fails if the two
lives differ in a figure, or if the least makes a platform call that the helper does not make or writes other bytes.

With DOCUMENT, which holds the table: fails, too, if a figure has grown by more than a tenth above it.
"""
import collections
import glob
import os
import re
import subprocess
import sys
import tempfile

COMMANDS = "".join(f'        <Command Type="RunProcess" FilePath="\\Hard Disk\\Step{n:02}.exe" Arguments="-quiet -log {n:02}"'
                   ' WaitCompletion="1"/>\n' for n in range(20))
CONFIGURATION = f'<?xml version="1.0" encoding="UTF-8"?>\n<Tarvex>\n    <Commands>\n{COMMANDS}    </Commands>\n</Tarvex>\n'
SETTINGS = {
    "ScreenSaver": {"Enabled": 1, "UserInactivityTimeout": 300000, "MinLuminosityLevel": 32},
    "TouchBuzzer": {"Enabled": 1, "Frequency": 3400},
}
PLACE = "\\MMCMemory\\Tarvex\\TarvexHelper.exe"
ON_DISK = "\\Hard Disk\\Tarvex\\TarvexHelper.exe"
PLUG_CONFIGURATION = [["plug", "{configuration}", "--as", "Hard Disk"], ["advance", "5s"]]

# An operation: what the table calls it, what is done to the panel, and, if not all until the next rest counts, the
# function that does. Of the latter two the second one is the least's, where it differs.
Operation = collections.namedtuple("Operation", "name steps function least_steps least_function", defaults=(None,) * 4)
# A life: the program that leads it, and the least's argument. Of each operation but the start the second one counts.
Life = collections.namedtuple("Life", "program argument place settings operations")
LIVES = [
    Life("TarvexHelper", "", PLACE, False, [Operation("start")]),
    Life("TarvexHelper", "touches", PLACE, True, [
        Operation("log line", [["send", "ORVATarvexHelper", "ORVATarvexMsg", "99"]],
                  "_ZN10CommandLog8receivedE", None, "leastLine"),
        Operation("unknown command", [["send", "ORVATarvexHelper", "ORVATarvexMsg", "99"]]),
        Operation("touch", [["touch", "--press"]]),
        Operation("screen saver's settings", [["send", "ORVATarvexHelper", "ORVATarvexScreenSaverMsg", "1"]]),
        Operation("Tarvex.xml, 20 commands", PLUG_CONFIGURATION + [["unplug", "Hard Disk"], ["advance", "5s"]],
                  "_ZN13ConfigurationC1E",
                  PLUG_CONFIGURATION + [["send", "ORVATarvexHelper", "ORVATarvexMsg", "2"], ["unplug", "Hard Disk"]],
                  "leastDocument"),
    ]),
    Life("Statistics", "statistics", PLACE, False, [Operation("eMMC statistics", [["advance", "5min"]])]),
    Life("TarvexHelper", "copy", ON_DISK, False, [
        Operation("copying 100 files", [], "_ZN9OrvaUtils2IO11IFileSystem13copyDirectoryE", None, "leastCopy")]),
]


def fail(message):
    sys.exit(f"costs.py: {message}")


class Program:
    """An executable and its symbols."""

    def __init__(self, folder, name):
        self.name = name
        self.file = f"{folder}/{name}.exe"
        listing = subprocess.check_output(["arm-none-eabi-nm", f"{folder}/{name}.elf"], text=True)
        self.symbols = {symbol: int(address, 16) for address, symbol in re.findall(r"^(\w+) \w (.+)$", listing, re.M)}
        with open("platform/include/coredll.inc", encoding="utf-8") as file:
            list_of_calls = file.read()
        names = re.findall(r"^COREDLL(?:_SURE)?\((\w+)", list_of_calls, re.M)
        self.calls = {self.symbols[name]: name for name in names if name in self.symbols}
        self.calls |= {self.symbols[name]: name[8:] + " of the run time" for name in self.symbols if name.startswith("runtime_")}

    def address(self, function):
        found = {address for symbol, address in self.symbols.items() if symbol.startswith(function)}
        if len(found) != 1:
            fail(f"{self.name} has {len(found)} functions {function}")
        return found.pop()


class Run:
    """A program on a panel of its own, which is switched off in the end."""

    def __enter__(self):
        return self

    def __exit__(self, *failure):
        self.do("off")

    def __init__(self, panel_command, program, life, folder):
        self.command, self.program, self.folder, self.read = panel_command, program, folder, {}
        self.panel = f"{folder}/panel"
        subprocess.check_output([panel_command, "create", self.panel, "--date", "2024-03-07", "--version", "2.14"])
        self.do("boot", "--stepped")
        self.installed = f"{self.panel}/fs/MMCMemory/Tarvex"
        os.makedirs(self.installed)
        os.makedirs(f"{folder}/configuration")
        write(f"{folder}/configuration/Tarvex.xml", CONFIGURATION)
        if life.settings:
            for root, values in SETTINGS.items():
                elements = "".join(f"        <{name}>{value}</{name}>\n" for name, value in values.items())
                write(f"{self.installed}/{root}Config.xml", '<?xml version="1.0" encoding="UTF-8"?>\n'
                      f"<{root}>\n    <Settings>\n{elements}    </Settings>\n</{root}>\n")
        with open(program.file, "rb") as file:
            executable = file.read()
        if life.place == PLACE:
            write(f"{self.installed}/TarvexHelper.exe", executable)
        else:
            os.makedirs(f"{folder}/disk/Tarvex")
            write(f"{folder}/disk/Tarvex/TarvexHelper.exe", executable)
            for name in ["Tarvex.exe"] + [f"File {n}.txt" for n in range(98)]:
                write(f"{folder}/disk/Tarvex/{name}", "small")
            self.do("plug", f"{folder}/disk", "--as", "Hard Disk")
        os.environ.update(QEMU_SINGLESTEP="1", QEMU_LOG="exec,nochain", QEMU_LOG_FILENAME=f"{folder}/trace-%d",
                          QEMU_DFILTER=f"0x10000+{program.symbols['image_size']:#x}")
        self.do("start", life.place, life.argument)
        self.do("advance", "5s" if life.place == ON_DISK else "0ms")

    def do(self, *words):
        words = [word.format(configuration=f"{self.folder}/configuration") for word in words if word]
        done = subprocess.run([self.command, "-C", self.panel, *words], capture_output=True, text=True)
        if done.returncode not in (0, 1, 2):
            fail(f"{self.program.name}: panel {' '.join(words)}: {done.stderr}")

    def executed(self):
        """Thread and address of each instruction since the last call."""
        instructions = []
        for name in sorted(glob.glob(f"{self.folder}/trace-*")):
            with open(name, "rb") as file:
                file.seek(self.read.get(name, 0))
                text = file.read()
                self.read[name] = file.tell()
            instructions += [(name + thread.decode(), int(address, 16)) for thread, address in
                             re.findall(rb"^Trace (\d+): \w+ \[\w+/(\w+)/", text, re.M)]
        return instructions

    def written(self):
        """What lies in the installation directory, but for the programs."""
        return {name: read(f"{self.installed}/{name}") for name in os.listdir(self.installed)
                if not name.endswith(".exe")}


def write(path, content):
    with open(path, "wb") as file:
        file.write(content if isinstance(content, bytes) else content.encode())


def read(path):
    with open(path, "rb") as file:
        return file.read()


def within(instructions, entry):
    """Those of the first call of the function at this address: from its entry to where its caller goes on."""
    first = next((index for index, (_, address) in enumerate(instructions) if address == entry), None)
    if first is None:
        return []
    thread = instructions[first][0]
    of_thread = [address for who, address in instructions[:first] if who == thread]
    returned = of_thread[-1] + 4
    inside = []
    for who, address in instructions[first:]:
        if who == thread and address == returned:
            break
        if who == thread:
            inside.append((who, address))
    return inside


def lead(panel_command, program, life, is_least):
    """Figures of each operation, and what was written meanwhile."""
    figures = {}
    with tempfile.TemporaryDirectory() as folder, Run(panel_command, program, life, folder) as run:
        instructions = run.executed()
        before = run.written() if life.argument else {}
        for operation in life.operations:
            function = operation.least_function if is_least else operation.function
            steps = operation.least_steps if is_least and operation.least_steps else operation.steps
            for _ in range(2 if steps else 0):
                for step in steps:
                    run.do(*step)
                run.do("advance", "0ms")
                instructions = run.executed()
            counted = within(instructions, program.address(function)) if function else instructions
            calls = collections.Counter(program.calls[address] for _, address in counted if address in program.calls)
            figures[operation.name] = (len(counted), calls)
        written = {name: content[len(before.get(name, b"")):] if name.startswith("helper_log") else content
                   for name, content in run.written().items()}
    return figures, written


def lead_twice(panel_command, program, life, is_least):
    first = lead(panel_command, program, life, is_least)
    second = lead(panel_command, program, life, is_least)
    for name, figure in first[0].items():
        if figure != second[0][name]:
            fail(f"{program.name}, {name}: once {figure}, another time {second[0][name]}")
    return first


def listed(calls):
    return ", ".join(name if count == 1 else f"{count} {name}" for name, count in sorted(calls.items()))


def table_in(document):
    """Of each operation of the document's table: the figures by their names."""
    rows = {}
    for line in read(document).decode().splitlines():
        cells = [cell.strip() for cell in line.split("|")[1:-1]]
        if len(cells) == 6 and re.fullmatch("[0-9,]+", cells[1]):
            figures = collections.Counter({"instructions": int(cells[1].replace(",", "")),
                                           "the least's instructions": int(cells[2].replace(",", ""))})
            for count, call in re.findall(r"(?:(\d+) )?([A-Z]\w+(?: of the run time)?)", ", ".join(cells[4:])):
                figures[call] += int(count or 1)
            rows[cells[0]] = figures
    return rows


def compare(measured, document):
    """Fails for what has grown by more than a tenth."""
    held = table_in(document)
    grown = [f"{name}, {figure}: {count:,}, above {held[name][figure]:,} in {document} by more than a tenth"
             for name, figures in measured.items() if name in held
             for figure, count in figures.items() if count > 1.1 * held[name][figure]]
    grown += [f"{name}: not in {document}" for name in measured if name not in held]
    if grown:
        fail("\n".join(grown))


def main(panel_command, folder, document=None):
    least = Program(folder, "Least")
    measured = {}
    print("| operation | instructions | the least | ratio | platform calls of both | additional calls of the helper |\n"
          "|---|---:|---:|---:|---|---|")
    for life in LIVES:
        costs, written = lead_twice(panel_command, Program(folder, life.program), life, False)
        leasts, least_written = lead_twice(panel_command, least, life, True)
        different = [name for name, content in least_written.items() if written.get(name) != content]
        if different:
            fail(f"the least writes other bytes: {', '.join(different)}")
        for name, (count, calls) in costs.items():
            least_count, least_calls = leasts[name]
            if least_calls - calls:
                fail(f"{name}: the least makes more calls: {listed(least_calls - calls)}")
            print(f"| {name} | {count:,} | {least_count:,} | {count / least_count:.2f} |"
                  f" {listed(least_calls)} | {listed(calls - least_calls)} |")
            measured[name] = calls + collections.Counter({"instructions": count, "the least's instructions": least_count})
    if document:
        compare(measured, document)


if __name__ == "__main__":
    main(*sys.argv[1:])

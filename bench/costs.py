"""What the panel executable's operations cost: instructions of its own, of all threads, and platform calls by name, as a
table in Markdown; beside each the least that the operation can take (bench/least).

usage: costs.py PANEL-COMMAND FOLDER-OF-EXECUTABLES [DOCUMENT]

Each program leads the same life twice, on a simulated panel in stepped time. The emulator writes a line for each
instruction of the image; an operation has cost what was added from one rest, when all threads wait, to the next, or
what its function has executed from its entry to its return. What the platform executes is not counted. Fails if the two
lives differ in a figure, if a ratio is above its limit, if the least makes a platform call that the helper does not
make, or if one of them writes files, registry values or requests of a driver that the other one does not write.

With DOCUMENT, which holds the table: fails, too, if the helper makes other platform calls than the table says, or if a
number of instructions, or of calls by the C run time, has grown by more than a tenth above it.
"""
import collections
import concurrent.futures
import glob
import os
import re
import signal
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

# An operation: what the table calls it, the ratio to the least that it may have, what is done to the panel, and, if not
# all until the next rest counts, the function that does. Of the latter two the second one is the least's, where it
# differs. The thread that calls `until` counts only up to this call.
Operation = collections.namedtuple("Operation", "name limit steps function least_steps least_function until",
                                   defaults=(None,) * 5)
# A life: the program that leads it, and the least's argument. Of each operation but the start the second one counts.
# With settings the start itself is not compared, and on the disk only the copies are.
Life = collections.namedtuple("Life", "program argument place settings operations")
LIVES = [
    Life("TarvexHelper", "", PLACE, False, [Operation("start", 5.2)]),
    Life("TarvexHelper", "touches", PLACE, True, [
        Operation("log line", 1.5, [["send", "ORVATarvexHelper", "ORVATarvexMsg", "99"]],
                  "_ZN10CommandLog8receivedE", None, "leastLine"),
        Operation("unknown command", 1.5, [["send", "ORVATarvexHelper", "ORVATarvexMsg", "99"]]),
        Operation("touch", 2.2, [["touch", "--press"]], until="DeviceIoControl"),
        Operation("screen saver's settings", 1.25, [["send", "ORVATarvexHelper", "ORVATarvexScreenSaverMsg", "1"]]),
        Operation("Tarvex.xml, 20 commands", 1.25, PLUG_CONFIGURATION + [["unplug", "Hard Disk"], ["advance", "5s"]],
                  "_ZN13ConfigurationC1E",
                  PLUG_CONFIGURATION + [["send", "ORVATarvexHelper", "ORVATarvexMsg", "2"], ["unplug", "Hard Disk"]],
                  "leastDocument"),
    ]),
    Life("Statistics", "statistics", PLACE, False, [Operation("eMMC statistics", 1.45, [["advance", "5min"]])]),
    Life("TarvexHelper", "copy", ON_DISK, False, [
        Operation("copying 100 files", 3.1, [], "_ZN9OrvaUtils2IO11IFileSystem13copyDirectoryE", None, "leastCopy")]),
]
DRIVERS = ["BKL1", "BZR1", "SHC1", "NANDFlash"]


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
        try:
            self.start(life)
        except BaseException:
            self.do("off")
            raise

    def start(self, life):
        program, folder = self.program, self.folder
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
        # One instruction a block: the second name is that of later emulators.
        os.environ.update(QEMU_SINGLESTEP="1", QEMU_ONE_INSN_PER_TB="1", QEMU_LOG="exec,nochain",
                          QEMU_LOG_FILENAME=f"{folder}/trace-%d",
                          QEMU_DFILTER=f"0x10000+{program.symbols['image_size']:#x}")
        self.before = self.state(life)
        self.do("start", life.place, life.argument)
        self.do("advance", "5s" if life.place == ON_DISK else "0ms")
        if life.settings:
            self.before = self.state(life)

    def do(self, *words):
        words = [word.format(configuration=f"{self.folder}/configuration") for word in words if word]
        done = subprocess.run([self.command, "-C", self.panel, *words], capture_output=True, text=True)
        if done.returncode not in ((0, 1) if words[0] == "send" else (0,)):
            fail(f"{self.program.name}: panel {' '.join(words)}: {done.stderr}")
        return done.stdout

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

    def state(self, life):
        """Content by name: the files but for programs, the registry's keys, the drivers."""
        if life.place == ON_DISK:
            return {name: read(f"{self.installed}/{name}") for name in os.listdir(self.installed) if " " in name}
        files = [name for name in glob.glob(f"{self.panel}/fs/**", recursive=True)
                 if os.path.isfile(name) and not name.endswith(".exe")]
        state = {name[len(self.panel):]: read(name) for name in files}
        for key in re.split("^(?=HKEY)", self.do("registry", "list"), flags=re.M)[1:]:
            name, values = key.split("\n", 1)
            state[name] = values.encode()
        requests = {driver: self.do("device", driver, "show") for driver in DRIVERS}
        return state | {driver: re.sub(r" thread \d+", "", text).encode() for driver, text in requests.items()}

    def written(self, life):
        """What has changed, or was added at the end of, by name; of what was deleted the name alone."""
        after = self.state(life)
        return {name: after[name].removeprefix(self.before.get(name, b"")) if name in after else None
                for name in self.before.keys() | after.keys() if self.before.get(name) != after.get(name)}


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


def up_to(instructions, call):
    """Without those that follow this call in the thread that makes it: the other threads run meanwhile."""
    last = next((index for index, (_, address) in enumerate(instructions) if address == call), len(instructions))
    return instructions[:last + 1] + [entry for entry in instructions[last + 1:] if entry[0] != instructions[last][0]]


def lead(panel_command, program, life, is_least):
    """Figures of each operation, and what was written meanwhile."""
    figures = {}
    with tempfile.TemporaryDirectory() as folder, Run(panel_command, program, life, folder) as run:
        instructions = run.executed()
        for operation in life.operations:
            function = operation.least_function if is_least else operation.function
            steps = operation.least_steps if is_least and operation.least_steps else operation.steps
            for _ in range(2 if steps else 0):
                for step in steps:
                    run.do(*step)
                run.do("advance", "0ms")
                instructions = run.executed()
            counted = within(instructions, program.address(function)) if function else instructions
            if operation.until:
                counted = up_to(counted, program.symbols[operation.until])
            calls = collections.Counter(program.calls[address] for _, address in counted if address in program.calls)
            figures[operation.name] = (len(counted), calls)
        return figures, run.written(life)


def same(program, first, second):
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
        if len(cells) == 7 and re.fullmatch("[0-9,]+", cells[1]):
            figures = collections.Counter({"instructions": int(cells[1].replace(",", "")),
                                           "the least's instructions": int(cells[2].replace(",", ""))})
            for count, call in re.findall(r"(?:(\d+) )?([A-Z]\w+(?: of the run time)?)", ", ".join(cells[5:])):
                figures[call] += int(count or 1)
            rows[cells[0]] = figures
    return rows


def differences(measured, document):
    """What is not as the document's table says."""
    held = table_in(document)
    for name, figures in measured.items():
        if name not in held:
            yield f"{name}: not in {document}"
            continue
        for figure in sorted(figures.keys() | held[name].keys()):
            count, stated = figures[figure], held[name][figure]
            exact = not figure.endswith((" of the run time", "instructions"))
            if count != stated if exact else count > 1.1 * stated:
                yield f"{name}, {figure}: {count:,}, in {document} {stated:,}"


def main(panel_command, folder, document=None):
    least = Program(folder, "Least")
    measured, failures = {}, []
    print("| operation | instructions | the least | ratio | at most | platform calls of both | additional calls of the helper"
          " |\n|---|---:|---:|---:|---:|---|---|")
    with concurrent.futures.ProcessPoolExecutor() as pool:
        led = [(life, [(program, [pool.submit(lead, panel_command, program, life, program is least) for _ in range(2)])
                       for program in (Program(folder, life.program), least)]) for life in LIVES]
        for life, programs in led:
            (costs, written), (leasts, least_written) = (
                same(program, *(run.result() for run in runs)) for program, runs in programs)
            different = [name for name in written.keys() | least_written.keys()
                         if name not in written or name not in least_written or written[name] != least_written[name]]
            if different:
                failures.append(f"the least writes other bytes: {', '.join(sorted(different))}")
            for operation in life.operations:
                name = operation.name
                (count, calls), (least_count, least_calls) = costs[name], leasts[name]
                if least_calls - calls:
                    failures.append(f"{name}: the least makes more calls: {listed(least_calls - calls)}")
                if count > operation.limit * least_count:
                    failures.append(f"{name}: the ratio is above {operation.limit}")
                print(f"| {name} | {count:,} | {least_count:,} | {count / least_count:.2f} | {operation.limit} |"
                      f" {listed(least_calls)} | {listed(calls - least_calls)} |")
                measured[name] = calls + collections.Counter({"instructions": count,
                                                              "the least's instructions": least_count})
    if document:
        failures += differences(measured, document)
    if failures:
        fail("\n".join(failures))


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))  # so that the panels are switched off
    main(*sys.argv[1:])

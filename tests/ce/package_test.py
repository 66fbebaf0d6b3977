"""Makes the package in a copy of the sources, elsewhere, and looks at what came out.

usage: package_test.py SOURCES COPY EXECUTABLE

The copy stays from run to run, so that only what has changed is compiled again.
"""
import filecmp
import os
import shutil
import subprocess
import sys
import xml.etree.ElementTree

SETTINGS = { # file: root element, and the range of each number that switches the module on
    "ScreenSaverConfig.xml": ("ScreenSaver", {"Enabled": (1, 1), "UserInactivityTimeout": (60000, 3600000),
                                              "MinLuminosityLevel": (0, 255)}),
    "TouchBuzzerConfig.xml": ("TouchBuzzer", {"Enabled": (1, 1), "Frequency": (-1, 20000)}),
}


def copy_sources(sources, copy):
    names = subprocess.check_output(["git", "-C", sources, "ls-files", "-co", "--exclude-standard"], text=True)
    for name in os.listdir(copy) if os.path.isdir(copy) else []:
        if name != "build":
            path = os.path.join(copy, name)
            shutil.rmtree(path) if os.path.isdir(path) else os.remove(path)
    for name in names.splitlines():
        if os.path.isfile(os.path.join(sources, name)):
            os.makedirs(os.path.dirname(os.path.join(copy, name)), exist_ok=True)
            shutil.copy2(os.path.join(sources, name), os.path.join(copy, name))
    shutil.copytree(os.path.join(sources, "build/sources"), os.path.join(copy, "build/sources"), dirs_exist_ok=True)


def files_below(folder):
    return {os.path.relpath(os.path.join(where, name), folder)
            for where, _, names in os.walk(folder) for name in names}


def check_settings(folder, expect):
    for name, (root, numbers) in SETTINGS.items():
        document = xml.etree.ElementTree.parse(os.path.join(folder, name)).getroot()
        expect(document.tag == root, f"{name} begins with {document.tag}")
        settings = {element.tag: element.text for element in document.find("Settings")}
        expect(set(settings) == set(numbers), f"{name} sets {sorted(settings)}")
        for setting, (least, most) in numbers.items():
            expect(least <= int(settings.get(setting, "-2")) <= most, f"{name}: {setting} is {settings.get(setting)}")


def main(sources, copy, executable):
    faults = []

    def expect(condition, fault):
        if not condition:
            faults.append(fault)

    copy_sources(sources, copy)
    # A tree that somebody has used, and an environment, that would make another executable of the same sources.
    with_options = dict(os.environ, CXXFLAGS="-O0", CPATH=copy)
    subprocess.check_call(["cmake", "--preset", "ce"], cwd=copy, env=with_options, stdout=subprocess.DEVNULL)
    subprocess.check_call([os.path.join(copy, "script/package")], env=with_options)
    dist = os.path.join(copy, "dist")
    wanted = {"TarvexHelper.exe", "SHA256SUMS", "Tarvex/TarvexHelper.exe"} | {"Tarvex/" + name for name in SETTINGS}
    expect(files_below(dist) == wanted, f"dist/ holds {sorted(files_below(dist))}")
    for name in ("TarvexHelper.exe", "Tarvex/TarvexHelper.exe"):
        expect(filecmp.cmp(os.path.join(dist, name), executable, shallow=False), f"{name} differs from {executable}")
    sums = subprocess.run(["sha256sum", "--check", "--strict", "--quiet", "SHA256SUMS"], cwd=dist, check=False)
    expect(sums.returncode == 0, "the checksums do not fit")
    with open(os.path.join(dist, "SHA256SUMS"), encoding="utf-8") as file:
        summed = {line.split("  ", 1)[1].rstrip("\n") for line in file}
    expect(summed == wanted - {"SHA256SUMS"}, f"checksums of {sorted(summed)}")
    check_settings(os.path.join(dist, "Tarvex"), expect)
    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

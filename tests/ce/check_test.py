"""Checks the build's own checks: each must find its fault in what passes it unchanged.

usage: check_test.py CHECK.PY NM EXECUTABLE.elf EXECUTABLE.map INCLUDE-FOLDER SCRATCH-FOLDER
"""
import os
import shutil
import subprocess
import sys


def main(check, nm, executable, link_map, include, scratch):
    faults = []

    def expect(finds, *arguments):
        done = subprocess.run([sys.executable, check, *arguments], stderr=subprocess.PIPE, text=True, check=False)
        lines = done.stderr.splitlines()
        if (done.returncode != 0) != bool(finds) or len(lines) != len(finds) or \
                any(text not in line for text, line in zip(sorted(finds), sorted(lines))):
            faults.append(f"{finds} expected, found ({done.returncode}): {done.stderr}")

    def changed(name, old, new):
        """The include folder with one text replaced in one of its files."""
        shutil.rmtree(scratch, ignore_errors=True)
        shutil.copytree(include, scratch)
        path = os.path.join(scratch, name)
        with open(path, encoding="utf-8") as file:
            text = file.read()
        if text.count(old) != 1:
            faults.append(f"{name} has {text.count(old)} times: {old}")
        with open(path, "w", encoding="utf-8") as file:
            file.write(text.replace(old, new))
        return ["imports", nm, executable, scratch]

    expect([], "imports", nm, executable, include)
    expect(["coredll.inc imports FormatStore, and nothing uses it"],
           *changed("coredll.inc", "(FormatStore, BY_NAME", "(FormatStore, IMPORTED"))
    expect(["coredll.inc imports runtime_Beep, and nothing uses it"],
           *changed("coredll.inc", "COREDLL_RUN_TIME(Sleep)\n", "COREDLL_RUN_TIME(Sleep)\nCOREDLL_RUN_TIME(Beep)\n"))
    expect(["the headers declare ReleaseMutex, and coredll.inc lacks it"],
           *changed("coredll.inc", "COREDLL(ReleaseMutex, IMPORTED, 0, 288)\n", ""))
    expect(["coredll.inc lists Elsewhere, and no header declares it"],
           *changed("coredll.inc", "COREDLL_SURE(GetTickCount, IMPORTED)\n",
                    "COREDLL_SURE(GetTickCount, IMPORTED)\nCOREDLL_SURE(Elsewhere, BY_NAME)\n"))
    expect(["CloseHandle takes a function of the program"],
           *changed("windows.h", "WINAPI CloseHandle(", "WINAPI CloseHandle(WNDPROC procedure, "))

    expect([], "wide", link_map)
    with open(link_map, encoding="utf-8") as file:
        text = file.read()
    for member, library in (("lib_a-wcslen", "c"), ("lib_a-vfwprintf", "c"), ("lib_a-mbrtowc", "c"), ("lib_a-fgetws", "c"),
                            ("wstring-inst", "stdc++"), ("locale_init", "stdc++"), ("ostream-inst", "stdc++"),
                            ("ext-inst", "stdc++"), ("cow-wstring-inst", "stdc++")):
        path = scratch + ".map"
        with open(path, "w", encoding="utf-8") as file:
            file.write(f"/usr/lib/lib{library}.a({member}.o)\n" + text)
        expect([f"linked: {member.removeprefix('lib_a-')} of lib{library}.a"], "wide", path)

    expect([], "numbers", nm, executable)
    for name in ("_ZN8tinyxml27XMLUtil5ToStrEdPci", "_ZN8tinyxml27XMLUtil7ToFloatEPKcPf"):
        expect([f"linked: {name}"], "numbers", "echo", name)

    for fault in faults:
        print(fault, file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

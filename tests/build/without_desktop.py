#!/usr/bin/env python3
"""The command line needs none of the libraries of a desktop, and holds nothing of the launcher's flow.

  without_desktop.py TOOL SOURCE_TREE

Neither the program nor a library that it is linked with asks for one of them; and it runs where they
are hidden, in a mount namespace of its own. Ends with 1 if it does not, with 77 if the rest holds and
no such namespace can be made here.
"""
import fnmatch
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

DESKTOP = ("libQt5Widgets*", "libQt5Gui*", "libGL*", "libEGL*", "libOpenGL*", "libX11*", "libxcb*")
OF_THE_FLOW = ("LauncherService", "LauncherWindow")
NAMESPACE = ("unshare", "-Urm")


def output_of(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def is_of_desktop(library):
    return any(fnmatch.fnmatch(library, pattern) for pattern in DESKTOP)


def linked_faults(tool):
    """What the program asks for itself, and what the loader would bring in for it."""
    needed = re.findall(r"\(NEEDED\).*\[(.+)\]", output_of("readelf", "-d", tool))
    if not any(name.startswith("libQt5Core") for name in needed):
        return [f"readelf tells nothing of Qt: {needed}"]
    closure = re.findall(r"^\s*(\S+) =>", output_of("ldd", tool), re.M)
    return [f"is linked with {name}" for name in sorted({*needed, *closure}) if is_of_desktop(name)]


def symbol_faults(tool):
    symbols = output_of("nm", "-C", tool).splitlines()
    if not any("ctl::runCommandLine" in line for line in symbols):
        return ["nm tells no symbol of its own: it is stripped"]
    found = {name: [line for line in symbols if f"{name}::" in line] for name in OF_THE_FLOW}
    return [f"holds {len(lines)} symbols of {name}, such as {lines[0]}"
            for name, lines in found.items() if lines]


def desktop_files(tool):
    """Every such library that the loader could find."""
    listed = re.findall(r"=> (/\S+)", output_of("ldconfig", "-p") + output_of("ldd", tool))
    folders = {pathlib.Path(path).parent for path in listed}
    files = {file.resolve() for folder in folders if folder.is_dir() for file in folder.iterdir()
             if is_of_desktop(file.name)}
    return sorted(str(file) for file in files if file.is_file())


def run_faults(tool, source_tree):
    """Runs two commands where an empty file lies over each of those libraries."""
    demo = source_tree / "examples/projects/demo/demo.yslib"
    library = source_tree / "resources/config/FunctionLib.ini"
    hide = 'empty=$1; shift; for file; do mount --bind "$empty" "$file" && test ! -s "$file" || exit 9; done'
    commands = (("--version",), ("project", "check", demo, "--library", library))
    environment = {name: value for name, value in os.environ.items()
                   if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}
    faults = []
    with tempfile.NamedTemporaryFile() as empty:
        for command in commands:
            words = shlex.join(str(word) for word in (tool, *command))
            done = subprocess.run([*NAMESPACE, "sh", "-c", f"{hide}; exec {words}", "sh", empty.name,
                                   *desktop_files(tool)], env=environment, text=True,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            if done.returncode != 0:
                faults.append(f"{words} without a desktop: {done.returncode}, {done.stdout}")
    return faults


def main():
    tool, source_tree = sys.argv[1], pathlib.Path(sys.argv[2])
    faults = linked_faults(tool) + symbol_faults(tool)
    can_hide = subprocess.run([*NAMESPACE, "true"], stderr=subprocess.DEVNULL).returncode == 0
    if can_hide:
        faults += run_faults(tool, source_tree)
    for fault in faults:
        print(f"{tool}: {fault}")
    if not faults and not can_hide:
        print("no mount namespace can be made here")
    sys.exit(1 if faults else 0 if can_hide else 77)


if __name__ == "__main__":
    main()

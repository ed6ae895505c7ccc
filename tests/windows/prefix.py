#!/usr/bin/env python3
"""A Wine prefix to be copied by each test that needs one of its own: making it takes longer than the copy.

    prefix.py FOLDER
"""
import os
import pathlib
import shutil
import subprocess
import sys

LOADER = "/usr/lib/wine/wine64"
SERVER = "/usr/lib/wine/wineserver64"
FONTS = r"HKEY_CURRENT_USER\Software\Wine\Fonts\Replacements"
# What Windows has for dialogs and for Chinese is not here.
REPLACED = ("MS Shell Dlg", "MS Shell Dlg 2", "Tahoma", "SimSun")


def environment(prefix, given):
    """What is given without what is this machine's own Qt's and Wine's, and with the prefix."""
    values = {name: value for name, value in given.items()
              if not name.startswith(("QT_", "WINE", "XDG_DATA", "LD_"))}
    values.update(WINEPREFIX=str(prefix), WINEDEBUG="-all", WINEARCH="win64",
                  WINEDLLOVERRIDES="winemenubuilder.exe=d;mscoree=d;mshtml=d")
    return values


def link_or_copy(old, new):
    """Wine writes its registry in place, but none of Windows' own files."""
    if "/drive_c/windows/" in old:
        try:
            os.link(old, new)
            return
        except OSError:  # on another disk
            pass
    shutil.copy2(old, new)


def copy_prefix(template, prefix):
    shutil.copytree(template, prefix, symlinks=True, copy_function=link_or_copy,
                    ignore=shutil.ignore_patterns("wineserver"))


def end_server(values):
    subprocess.run([SERVER, "-k"], env=values, check=False)
    subprocess.run([SERVER, "-w"], env=values, check=False)


def make_prefix(prefix):
    """Whole, or not there."""
    part = prefix.with_name(prefix.name + ".part")
    for folder in (prefix, part):
        shutil.rmtree(folder, ignore_errors=True)
    part.mkdir(parents=True)
    values = {**environment(part, os.environ), "DISPLAY": ""}
    fonts = part / "fonts.reg"
    rows = "".join(f'"{name}"="Noto Sans CJK SC"\n' for name in REPLACED)
    fonts.write_text(f"REGEDIT4\n\n[{FONTS}]\n{rows}", encoding="ascii")
    for command in (("wineboot", "-i"), ("regedit", "/S", f"Z:{fonts}")):
        subprocess.run([LOADER, *command], env=values, check=True, timeout=300, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)
    subprocess.run([SERVER, "-w"], env=values, check=True)  # it has written the registry then
    fonts.unlink()
    part.rename(prefix)


if __name__ == "__main__":
    make_prefix(pathlib.Path(sys.argv[1]))

"""A publisher's desk with Windows: the command blocks of a page that are for it, run under Wine as they stand.

Each ```bat block must succeed line by line, and print the ```text block behind it, as run_blocks.py of the
folder docs has it for the others.
"""
import pathlib
import subprocess
import sys
import zipfile

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent / "docs"))
from run_blocks import blocks, is_as_shown  # pylint: disable=wrong-import-position
from prefix import LOADER  # pylint: disable=wrong-import-position

PASSPHRASE = "a long sentence that both people know\n"


class Desk:
    """A folder of a prefix in which commands are typed, with the tool of the portable package on the path."""

    def __init__(self, prefix, environment, package):
        self.folder = prefix / "drive_c/desk"
        self.folder.mkdir()
        with zipfile.ZipFile(package) as archive:
            archive.extractall(prefix / "drive_c/portable")
        (unpacked,) = (prefix / "drive_c/portable").iterdir()
        self.environment = {**environment, "WINEPATH": f"C:\\portable\\{unpacked.name}\\bin"}

    def make_keys(self):
        """The public one."""
        (self.folder / "passphrase").write_text(PASSPHRASE, encoding="utf-8")
        self.run("quorvanectl keys new keys --passphrase-fd 0 <passphrase\n")
        return (self.folder / "keys/update.pub").read_bytes()

    def run(self, commands):
        """What they print; the first that fails ends the test."""
        lines = ["@echo off"]
        for line in commands.splitlines():
            lines += [line, "if errorlevel 1 exit /b 1"]
        (self.folder / "typed.bat").write_text("\r\n".join(lines) + "\r\n", encoding="utf-8")
        # Not through a pipe: what Wine starts beside the commands would hold its end.
        with open(self.folder / "printed", "w+b") as printed:
            status = subprocess.run([LOADER, "cmd", "/c", "typed.bat"], cwd=self.folder, check=False,
                                    env=self.environment, stdin=subprocess.DEVNULL, stdout=printed,
                                    stderr=subprocess.STDOUT, timeout=300).returncode
            printed.seek(0)
            text = printed.read().decode()
        print(f"{commands}{text}", end="", flush=True)
        if status != 0:
            raise AssertionError(f"exit status {status}")
        return text

    def type(self, commands, shown):
        """A block of the page, and what it says of it."""
        printed = self.run(commands)
        if shown is not None and not is_as_shown(printed, shown):
            raise AssertionError(f"the page says:\n{shown}")


def windows_blocks(page):
    return list(blocks(page, "bat"))

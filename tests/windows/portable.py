#!/usr/bin/env python3
"""The portable package, unpacked where a path is at its worst, started under Wine as its user would.

    portable.py --tree TREE --package PACKAGE.zip --prefix PREFIX --pictures FOLDER

Counts down, starts the stand-in runtime, reports its end, closes; then the log, the settings and the
projects are looked at. It has a screen, a window manager and a Wine prefix of its own.
"""
import argparse
import os
import pathlib
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import time
import zipfile

from prefix import LOADER, copy_prefix, end_server, environment

TITLE = "Quorvane Launcher"
REPORT = "The line stopped unexpectedly"
FOLDER = "产线 3 & line's"
# The share of dark dots in a window with text in it. One that is not painted yet is black, or as plain
# as its background.
INK = (0.006, 0.25)


def wait_for(condition, what, seconds=60):
    deadline = time.monotonic() + seconds
    while not (value := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"{seconds} s went by without: {what}")
        time.sleep(0.1)
    return value


def check(condition, what):
    if not condition:
        raise AssertionError(what)
    print("ok:", what)


class Screen:
    """Xvfb with a window manager on it."""

    def __init__(self):
        read, write = os.pipe()
        # Neither holds the output of the test, should it end without them.
        self.quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        self.processes = [subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "720x660x24", "-nolisten", "tcp"],
            pass_fds=(write,), **self.quiet)]
        os.close(write)
        with os.fdopen(read) as answer:
            self.environment = dict(os.environ, DISPLAY=":" + answer.readline().strip())
        try:
            wait_for(self.is_managed, "a window manager")
        except BaseException:
            self.close()
            raise

    def is_managed(self):
        """Starts a window manager, and another one if that gave up on a screen that was not ready."""
        if len(self.processes) == 2 and self.processes[1].poll() is not None:
            del self.processes[1]
        if len(self.processes) == 1:
            self.processes.append(subprocess.Popen(["openbox"], env=self.environment, **self.quiet))
        return "#" in self.output("xprop", "-root", "_NET_SUPPORTING_WM_CHECK")

    def output(self, *command):
        return subprocess.run(command, env=self.environment, stdout=subprocess.PIPE, check=False,
                              stderr=subprocess.DEVNULL, timeout=60).stdout.decode()

    def window(self, title):
        return self.output("xdotool", "search", "--onlyvisible", "--name", f"^{title}$").strip()

    def picture(self, path):
        self.output("import", "-window", "root", "-trim", "+repage", "-strip", str(path))

    def is_written_on(self, title):
        window = self.window(title)
        share = "convert - -colorspace gray -threshold 60% -format '%[fx:1-mean]' info:"
        answer = self.output("sh", "-c", f"import -window {window} png:- | {share}") if window else ""
        return answer and INK[0] < float(answer) < INK[1]

    def fingerprint(self):
        return self.output("sh", "-c", "import -window root rgb:- | sha256sum")

    def settled_picture(self, title, path):
        """The screen with that window wholly painted: with text in it, and as it was a moment before."""
        def settled():
            if not self.is_written_on(title):
                return False
            before = self.fingerprint()
            time.sleep(0.3)
            return before == self.fingerprint()
        wait_for(settled, f"a painted window {title}")
        self.picture(path)

    def close_window(self, title):
        """What the cross in a title bar does."""
        window = wait_for(lambda: self.window(title), title)
        self.output("xdotool", "windowactivate", "--sync", window, "key", "alt+F4")
        wait_for(lambda: not self.window(title), f"the end of {title}")

    def close(self):
        for process in reversed(self.processes):
            process.terminate()
            process.wait(60)


class Installation:
    def __init__(self, root, tree, package):
        with zipfile.ZipFile(package) as archive:
            archive.extractall(root / "unpacked")
        (unpacked,) = (root / "unpacked").iterdir()
        self.root = root / FOLDER
        unpacked.rename(self.root)
        for page in ("README.md", "THIRD-PARTY.md", "licences/Qt.txt"):
            check((self.root / page).is_file(), f"the package brings {page}")
        self.bin = self.root / "bin"
        subprocess.run(["cmake", "--install", tree, "--prefix", self.root, "--component", "demo"],
                       stdout=subprocess.DEVNULL, check=True)
        # Long enough for a picture of the launcher watching it, however busy the machine is.
        (self.bin / "LineRunner.conf").write_text("lifetime_ms = 20000\nexit_code = 7\n")
        self.prefix = root / "wine"

    @property
    def data(self):
        (user,) = [folder for folder in (self.prefix / "drive_c/users").iterdir()
                   if folder.name != "Public"]
        return user / "AppData/Local/Quorvane"

    def log(self):
        path = self.data / "launcher.log"
        return path.read_bytes() if path.exists() else b""

    def has_logged(self, text):
        return text.encode() in self.log()


def look_at_traces(installation):
    lines = installation.log().split(b"\r\n")
    check(lines.pop() == b"" and len(lines) >= 4, "the log ends with a line end")
    check(not any(b"\r" in line or b"\n" in line for line in lines), "each line ends with CR LF")
    check(all(line[:4].isdigit() for line in lines), "each line begins with its time")
    settings = sqlite3.connect(installation.data / "Quorvane.db")
    values = dict(settings.execute("SELECT key, value FROM app_settings"))
    check(values.get("ui/locale") == "en", "the settings hold the language")
    check((installation.root / "USER/projects/demo/demo.yslib").exists(), "the demo was copied")
    check((installation.root / "USER/projects/.demo_seed_done").exists(), "and its marker written")
    nonces = list(installation.data.glob("launch_nonce_*.txt"))
    check(len(nonces) == 1, "one nonce file was written")
    told = (installation.bin / "LineRunner.log").read_text(encoding="utf-8")
    check("nonce accepted" in told, "the runtime accepted the nonce")
    check(f"{FOLDER}/USER/projects/demo/demo.yslib with locale en" in told,
          "the runtime got the project's path whole")
    check(f"{FOLDER}\\bin" in told, "the runtime ran in its own folder")


def look_at_tool(installation, screen):
    answer = subprocess.run([LOADER, "quorvanectl.exe", "--version"], cwd=installation.bin,
                            env=screen.environment, stdout=subprocess.PIPE, check=False, timeout=120)
    check(answer.returncode == 0 and answer.stdout.startswith(b"quorvanectl "),
          "the command line tool answers")


def run(installation, screen, pictures):
    launcher = subprocess.Popen([LOADER, "Quorvaner.exe"], cwd=installation.bin,
                                env=screen.environment)
    wait_for(lambda: screen.window(TITLE), "the launcher's window", 120)
    screen.settled_picture(TITLE, pictures / "windows-countdown.png")
    check(True, "the launcher counts down in a window")
    wait_for(lambda: installation.has_logged("Launching "), "the start of the runtime")
    screen.settled_picture(TITLE, pictures / "windows-monitor.png")
    wait_for(lambda: installation.has_logged("Target exited"), "the end of the runtime")
    check(installation.has_logged("Target exited with code 7."), "the runtime's exit code is reported")
    wait_for(lambda: screen.window(REPORT), "the box that tells it")
    screen.settled_picture(REPORT, pictures / "windows-failed.png")
    screen.close_window(REPORT)
    screen.close_window(TITLE)
    check(launcher.wait(60) == 0, "the launcher ends with its window")


def main():
    parser = argparse.ArgumentParser()
    for name in ("--tree", "--package", "--prefix", "--pictures"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    wish = parser.parse_args()
    wish.pictures.mkdir(parents=True, exist_ok=True)
    root = pathlib.Path(tempfile.mkdtemp(prefix="quorvane_portable_"))
    screen = Screen()
    try:
        installation = Installation(root, wish.tree, wish.package)
        copy_prefix(wish.prefix, installation.prefix)
        # Nothing of the build machine's Qt may help: only what the package holds.
        screen.environment = environment(installation.prefix, screen.environment)
        try:
            run(installation, screen, wish.pictures)
            look_at_traces(installation)
            look_at_tool(installation, screen)
        except BaseException:
            print(installation.log().decode(errors="replace"))
            screen.picture(wish.pictures / "windows-broken.png")
            raise
        finally:
            end_server(screen.environment)
    finally:
        screen.close()
        shutil.rmtree(root, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())

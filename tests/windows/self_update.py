#!/usr/bin/env python3
"""The launcher updates itself under Wine, with the installers of two versions.

    self_update.py --tree TREE --package PACKAGE.zip --setup quorvaner-setup-1.0.0.exe
                   --builder build-installer --placer placer.exe --prefix PREFIX --page updates.md
                   --pictures FOLDER

1.0.0 runs, a signed manifest on a stick offers 1.1.0, the operator takes it: the launcher starts the
installer, which puts the new files under it in place. The next start is 1.1.0 and offers nothing. An
installer whose hash does not fit is not started, and one that is killed leaves 1.0.0 with its offer.
What is typed is the page's, word for word.
1.1.0 has the same code; its programs differ in what stands behind their ends, which is no matter to
Windows, and its installer is less compressed, since that takes half a minute. 1.0.0's is as it ships.
"""
import argparse
import json
import os
import pathlib
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import zipfile
from concurrent.futures import ThreadPoolExecutor

from portable import TITLE, Screen, check, wait_for
from prefix import LOADER, copy_prefix, end_server, environment
from windows_desk import Desk, windows_blocks

FOUND = "A genuine update is available"
OFFERED = "Choose what to update"
SIGNATURE = "a-signature-of-the-stand-in"
CHANGED = ("bin/Quorvaner.exe", "bin/Qt5Core.dll", "bin/Qt5Widgets.dll")


def repackaged(package, path, version, key):
    """The package with the test's own key, and with other programs."""
    with zipfile.ZipFile(package) as old, zipfile.ZipFile(path, "w") as new:
        for entry in old.infolist():
            name = entry.filename.partition("/")[2]
            content = old.read(entry)
            if name == "bin/config/update.pub":
                content = key
            elif name in CHANGED:
                content += version.encode()
            new.writestr(entry.filename, content)


class Place:
    """A prefix, an installation in it, and a stick."""

    def __init__(self, root, wish, screen):
        self.root, self.wish = root, wish
        self.prefix = root / "wine"
        copy_prefix(wish.prefix, self.prefix)
        self.environment = {**environment(self.prefix, screen.environment), "LANG": "en_US.UTF-8"}
        self.installation = self.prefix / "drive_c/Line 3"
        self.stick = root / "stick"
        self.stick.mkdir()
        (self.prefix / "dosdevices/e:").symlink_to(self.stick)
        self.desk = Desk(self.prefix, self.environment, wish.package)
        self.public = self.desk.make_keys()
        self.builder = ThreadPoolExecutor(max_workers=1)  # beside the first installation
        self.building = self.builder.submit(self.build, "1.1.0")

    @property
    def next_setup(self):
        return self.building.result()

    def wine(self, *command, cwd=None):
        return subprocess.run([LOADER, *map(str, command)], env=self.environment, cwd=cwd, check=False,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=300).returncode

    def build(self, version):
        """With something to sign with, which puts a signature behind each program as others do."""
        package = self.root / f"{version}.zip"
        repackaged(self.wish.package, package, version, self.public)
        signer = self.root / "sign"
        signer.write_text(f'#!/bin/sh\nprintf {SIGNATURE} >>"$1"\n')
        signer.chmod(0o755)
        subprocess.run([self.wish.builder, "--quickly", "--package", package, "--placer", self.wish.placer, "--version",
                        version, "--out", self.root / "setups"], check=True, stdout=subprocess.DEVNULL,
                       env={**os.environ, "QUORVANE_SIGN_COMMAND": str(signer)})
        return self.root / "setups" / f"quorvaner-setup-{version}.exe"

    def look_at_signatures(self):
        tool = max((self.installation / "setup").glob("*/tool"), key=lambda path: int(path.parent.name))
        for program in (self.next_setup, *sorted(tool.glob("*.exe"))):
            content, signature = program.read_bytes(), SIGNATURE.encode()
            check(content.endswith(signature) and not content.endswith(2 * signature),
                  f"{program.name} is signed, once")

    def install_first(self):
        check(self.wine(self.wish.setup, "/S", "/D=C:\\Line", "3") == 0, "1.0.0 is installed")
        (self.installation / "bin/config/update.pub").write_bytes(self.public)
        subprocess.run(["cmake", "--install", self.wish.tree, "--prefix", self.installation, "--component",
                        "demo"], stdout=subprocess.DEVNULL, check=True)
        (self.installation / "bin/LineRunner.conf").write_text("lifetime_ms = 600000\nexit_code = 0\n")

    def publish(self):
        """The signed manifest on the stick, and what the launcher will say of it."""
        shutil.copy(self.next_setup, self.desk.folder)
        self.blocks = windows_blocks(self.wish.page)
        check(len(self.blocks) == 3, "the page publishes, looks, and looks again after the update")
        for _ in range(2):
            self.desk.type(*self.blocks.pop(0))

    def look_again(self):
        self.desk.type(*self.blocks.pop(0))

    def data(self, name):
        return next((self.prefix / "drive_c/users").glob(f"*/AppData/Local/Quorvane/{name}"), None)

    @property
    def log(self):
        path = self.data("launcher.log")
        return path.read_text(encoding="utf-8", errors="replace") if path else ""

    def settings(self):
        return dict(sqlite3.connect(self.data("Quorvane.db")).execute("SELECT key, value FROM app_settings"))

    def version(self):
        path = self.installation / "bin/config/release_version.json"
        return json.loads(path.read_text()).get("launcherPackageVersion")

    def start(self):
        return subprocess.Popen([LOADER, "Quorvaner.exe"], cwd=self.installation / "bin", env=self.environment,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def close(self):
        end_server(self.environment)


class Operator:
    def __init__(self, place, screen):
        self.place, self.screen = place, screen

    def window(self, title):
        return self.screen.output("xdotool", "search", "--onlyvisible", "--name", title).split()

    def press(self, title, key):
        window = wait_for(lambda: self.window(title), title, 120)[-1]
        self.screen.output("xdotool", "windowactivate", "--sync", window, "key", key)

    def press_until(self, title, key, condition, what):
        """One press, and another one only if nothing came of it: a second would be for what came."""
        for _ in range(6):
            self.press(title, key)
            try:
                return wait_for(condition, what, 20)
            except AssertionError:
                pass
        raise AssertionError(what)

    def picture(self, name):
        self.screen.picture(self.place.wish.pictures / f"windows-{name}.png")

    def start_and_take_offer(self):
        """Opens the choice, with everything ticked that can be had, and takes it."""
        offers = self.place.log.count(FOUND)
        launcher = self.place.start()
        wait_for(lambda: self.place.log.count(FOUND) > offers, "an offer", 120)
        self.screen.settled_picture(TITLE, self.place.wish.pictures / "windows-offer.png")
        # The focus is on "Update now".
        self.press_until(f"^{TITLE}", "space", lambda: self.window(f"^{OFFERED}"), "the choice of updates")
        self.screen.settled_picture(OFFERED, self.place.wish.pictures / "windows-choice.png")
        self.press_until(f"^{OFFERED}", "Return", lambda: not self.window(f"^{OFFERED}"), "the choice taken")
        return launcher

    def install(self):
        wait_for(lambda: self.window("^Quorvaner 1.1.0"), "the installer's page", 180)
        self.picture("installer")
        self.press_until("^Quorvaner 1.1.0", "Return", lambda: self.place.version() == "1.1.0",
                         "the new version")
        self.press_until("^Quorvaner 1.1.0", "Return", lambda: not self.window("^Quorvaner 1.1.0"),
                         "the end of the installer")


def wrong_hash(place, operator):
    """A byte more behind the installer: nothing is started."""
    setup = place.stick / "QuorvanerUpdate/packages/quorvaner-setup-1.1.0.exe"
    whole = setup.read_bytes()
    setup.write_bytes(whole + b"x")
    launcher = operator.start_and_take_offer()
    wait_for(lambda: "did not pass its check" in place.log, "the refusal", 120)
    check(not operator.window("^Quorvaner 1.1.0"), "an installer that was changed is not started")
    check(place.version() == "1.0.0", "and 1.0.0 stays")
    setup.write_bytes(whole)
    launcher.kill()
    place.close()


def killed_half_way(place):
    """The old launcher starts and offers the update still: the next step shows both."""
    process = subprocess.Popen([LOADER, place.next_setup, "/S", "/D=C:\\Line", "3"],
                               env=place.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    wait_for(lambda: list(place.installation.glob("setup/2/new/bin/Quorvaner.exe")), "new files", 120)
    place.close()
    process.wait(60)
    check(place.version() == "1.0.0", "an installer that is killed while it unpacks leaves 1.0.0")


def update(place, operator):
    launcher = operator.start_and_take_offer()
    operator.install()
    check(launcher.poll() is None, "the launcher that found the update goes on")
    for name in CHANGED:
        check((place.installation / name).read_bytes().endswith(b"1.1.0"), f"{name} is the new one")
    place.look_at_signatures()
    operator.picture("under-update")
    starts = place.log.count("Launching ")
    operator.press_until("^Update complete", "Return", lambda: place.log.count("Launching ") > starts,
                         "the line, under the old launcher")
    launcher.kill()
    place.close()


def next_start(place, operator):
    log, settings, starts = place.log, place.settings(), place.log.count("Launching ")
    place.start()
    wait_for(lambda: operator.window(f"^{TITLE}"), "the launcher", 120)
    operator.screen.settled_picture(TITLE, place.wish.pictures / "windows-updated.png")
    wait_for(lambda: place.log.count("Launching ") > starts, "the start of the line without an offer", 120)
    check(not operator.window(f"^{OFFERED}"), "nothing is offered any more")
    check(log and place.log.startswith(log), "the log goes on")
    check(settings and settings.items() <= place.settings().items(), f"so do the settings, {settings}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("--tree", "--package", "--setup", "--builder", "--placer", "--prefix", "--page", "--pictures"):
        parser.add_argument(name, type=pathlib.Path, required=True)
    wish = parser.parse_args()
    wish.pictures.mkdir(parents=True, exist_ok=True)
    root = pathlib.Path(tempfile.mkdtemp(prefix="quorvane_self_update_"))
    screen = Screen()
    place = None
    try:
        place = Place(root, wish, screen)
        operator = Operator(place, screen)
        place.install_first()
        place.publish()
        wrong_hash(place, operator)
        killed_half_way(place)
        update(place, operator)
        place.look_again()
        next_start(place, operator)
    except BaseException:
        if place:
            print(place.log)
        screen.picture(wish.pictures / "windows-self-update-broken.png")
        raise
    finally:
        if place:
            place.close()
        screen.close()
        shutil.rmtree(root, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""The launcher updates itself under Wine, with the installers of two versions as they ship.

    self_update.py --tree TREE --package PACKAGE.zip --builder build-installer --placer placer.exe
                   --pictures FOLDER

1.0.0 runs, a signed manifest on a stick offers 1.1.0, the operator takes it: the launcher starts the
installer, which puts the new files under it in place. The next start is 1.1.0 and offers nothing. An
installer whose hash does not fit is not started, and one that is killed leaves 1.0.0 with its offer.
1.1.0 has the same code; its programs differ in what stands behind their ends, which is no matter to
Windows.
"""
import argparse
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import zipfile

from portable import FONTS, LOADER, SERVER, TITLE, Screen, check, wait_for

FOUND = "A genuine update is available"
OFFERED = "Choose what to update"
VERSIONS = ("1.0.0", "1.1.0")
CHANGED = ("bin/Quorvaner.exe", "bin/Qt5Core.dll", "bin/Qt5Widgets.dll")


def repackaged(package, path, version, key):
    """The package with the test's own key, and with other programs if it is the later version."""
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
        self.root, self.wish, self.screen = root, wish, screen
        self.prefix = root / "wine"
        self.prefix.mkdir()
        self.environment = screen.environment
        for name in [name for name in self.environment if name.startswith(("QT_", "WINE", "XDG_DATA"))]:
            del self.environment[name]
        self.environment.update(WINEPREFIX=str(self.prefix), WINEDEBUG="-all", LANG="en_US.UTF-8",
                                WINEDLLOVERRIDES="winemenubuilder.exe=d;mscoree=d;mshtml=d")
        self.wine("wineboot", "-i")
        for font in ("MS Shell Dlg", "MS Shell Dlg 2", "Tahoma", "SimSun"):
            self.wine("reg", "add", FONTS, "/v", font, "/d", "Noto Sans CJK SC", "/f")
        self.installation = self.prefix / "drive_c/Line 3"
        self.stick = root / "stick"
        self.make_key()
        self.setups = {version: self.build(version) for version in VERSIONS}

    def wine(self, *command, cwd=None):
        return subprocess.run([LOADER, *map(str, command)], env=self.environment, cwd=cwd, check=False,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=300).returncode

    def make_key(self):
        self.key = self.root / "private.pem"
        subprocess.run(["openssl", "genrsa", "-out", self.key, "2048"], check=True, stderr=subprocess.DEVNULL)
        self.public = subprocess.run(["openssl", "pkey", "-in", self.key, "-pubout"], check=True,
                                     stdout=subprocess.PIPE).stdout

    def build(self, version):
        package = self.root / f"{version}.zip"
        repackaged(self.wish.package, package, version, self.public)
        subprocess.run([self.wish.builder, "--package", package, "--placer", self.wish.placer, "--version",
                        version, "--out", self.root / "setups"], check=True, stdout=subprocess.DEVNULL)
        return self.root / "setups" / f"quorvaner-setup-{version}.exe"

    def install_first(self):
        check(self.wine(self.setups["1.0.0"], "/S", "/D=C:\\Line", "3") == 0, "1.0.0 is installed")
        subprocess.run(["cmake", "--install", self.wish.tree, "--prefix", self.installation, "--component",
                        "demo"], stdout=subprocess.DEVNULL, check=True)
        (self.installation / "bin/LineRunner.conf").write_text("lifetime_ms = 600000\nexit_code = 0\n")

    def publish(self):
        """The signed manifest on the stick; openssl signs, as with a key that is never on a network."""
        update = self.stick / "QuorvanerUpdate"
        (update / "packages").mkdir(parents=True)
        shutil.copy(self.setups["1.1.0"], update / "packages")
        tool = self.installation / "bin/quorvanectl.exe"
        (update / "update.pub").write_bytes(self.public)
        for arguments in (
                ("manifest", "--out", "manifest.json", "--launcher", "packages/quorvaner-setup-1.1.0.exe"),
                ("canonical", "manifest.json", "--out", "canonical")):
            check(self.wine(tool, "update", *arguments, cwd=update) == 0, f"update {arguments[0]}")
        subprocess.run(["openssl", "dgst", "-sha256", "-sign", self.key, "-out", update / "signature",
                        update / "canonical"], check=True)
        check(self.wine(tool, "update", "attach", "manifest.json", "signature", "--key", "update.pub", "--out",
                        "manifest.json", "--force", cwd=update) == 0, "update attach")
        (self.prefix / "dosdevices/e:").symlink_to(self.stick)
        self.close()  # Wine looks for drives as it starts

    @property
    def log(self):
        logs = list((self.prefix / "drive_c/users").glob("*/AppData/Local/Quorvane/launcher.log"))
        return logs[0].read_text(encoding="utf-8", errors="replace") if logs else ""

    def version(self):
        path = self.installation / "bin/config/release_version.json"
        return json.loads(path.read_text()).get("launcherPackageVersion")

    def start(self):
        return subprocess.Popen([LOADER, "Quorvaner.exe"], cwd=self.installation / "bin", env=self.environment,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def close(self):
        subprocess.run([SERVER, "-k"], env=self.environment, check=False)
        subprocess.run([SERVER, "-w"], env=self.environment, check=False)


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
    process = subprocess.Popen([LOADER, place.setups["1.1.0"], "/S", "/D=C:\\Line", "3"],
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
    operator.picture("under-update")
    launcher.kill()
    place.close()


def next_start(place, operator):
    starts = place.log.count("Launching ")
    place.start()
    wait_for(lambda: operator.window(f"^{TITLE}"), "the launcher", 120)
    wait_for(lambda: place.log.count("Launching ") > starts, "the start of the line without an offer", 120)
    operator.picture("updated")
    check(not operator.window(f"^{OFFERED}"), "nothing is offered any more")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("--tree", "--package", "--builder", "--placer", "--pictures"):
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

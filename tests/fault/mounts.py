#!/usr/bin/env python3
"""Applies a project update to places that only a mount table of one's own can make.

  mounts.py REFERENCE_APPLY

Ends with 77 where this system allows no private mounts.
"""
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

from run import PROJECT_FILE, is_part_of, read_tree, without_hidden

PROGRAM = pathlib.Path(sys.argv.pop(1)) if len(sys.argv) > 1 else None
MEBIBYTE = 1 << 20


class Mounts(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="mounts"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.place = self.folder / "place"
        self.data = self.folder / "data"
        self.project = self.folder / "projects" / "产线三"
        self.data.mkdir()
        (self.place / "app").mkdir(parents=True)
        self.program = self.place / "app" / "reference_apply"
        shutil.copy2(PROGRAM, self.program)

    def prepare(self, *package):
        subprocess.run([self.program, "prepare", self.place, *package], check=True)
        shutil.copytree(self.place / "old", self.project)

    def apply(self, mount, look):
        """Mounts, applies, and looks, all with DATA and PROJECT set; what was told, and seen."""
        script = f'{mount} && "$1" apply "$2" "$PROJECT/{PROJECT_FILE}" && echo && {look}'
        environment = dict(os.environ, DATA=self.data, PROJECT=self.project,
                           XDG_DATA_HOME=self.data, LC_ALL="C.UTF-8")
        done = subprocess.run(["unshare", "-Urm", "sh", "-c", script, "sh", self.program, self.place],
                              env=environment, stdout=subprocess.PIPE, check=True, timeout=240)
        told, _, seen = done.stdout.decode().partition("\n\n")
        return json.loads(told), seen.splitlines()

    def test_a_bomb_ends_at_the_full_disk_and_leaves_the_project_alone(self):
        package = self.folder / "bomb.zip"
        with zipfile.ZipFile(package, "w", zipfile.ZIP_DEFLATED) as bomb:
            with bomb.open("zeros", "w", force_zip64=True) as zeros:
                for _ in range(1024):
                    zeros.write(bytes(MEBIBYTE))
        self.assertLess(package.stat().st_size, 2 * MEBIBYTE)
        self.prepare(package)
        told, seen = self.apply('mount -t tmpfs -o size=64M none "$DATA"',
                                'ls -A "$DATA/Quorvane/update/temp"')
        self.assertFalse(told["success"])
        self.assertEqual(told["errorClass"], "")
        self.assertRegex(told["message"], "^Extract failed: unable to write file: .*/zeros "
                                          r"\(No space left on device\)$")
        self.assertEqual(seen, [], "staging is left over")
        self.assertEqual(read_tree(self.project), read_tree(self.place / "old"))

    def test_a_disk_that_fills_up_during_the_backup_leaves_what_was_copied(self):
        # There is room for the new project, and not for the old one beside it.
        self.prepare()
        with open(self.project / "数据" / "large.bin", "wb") as large:
            large.write(bytes(8 * MEBIBYTE))
        old = read_tree(self.project)
        told, seen = self.apply('mount -t tmpfs -o size=4M none "$DATA"',
                                'ls -A "$DATA/Quorvane/update/temp" "$DATA/Quorvane/update/backup"')
        self.assertFalse(told["success"])
        self.assertRegex(told["message"],
                         f"^Replace failed, rolled back: unable to [a-z ]+: {self.folder}/")
        left = read_tree(self.project)
        self.assertTrue(is_part_of(left, without_hidden(old)))
        self.assertLess(len(left), len(without_hidden(old)))
        self.assertEqual([line for line in seen if line and not line.endswith(":")], [])

    def test_a_folder_whose_removal_fails_twice_stays_without_a_backup(self):
        # A file that something is mounted on cannot be removed; all around it can.
        self.prepare()
        told, seen = self.apply('mount --bind "$PROJECT/main.ys" "$PROJECT/main.ys"',
                                '(cd "$PROJECT" && find .; ls -A "$DATA/Quorvane/update/backup")')
        self.assertFalse(told["success"])
        self.assertEqual(told["message"], "Replace failed, rolled back: unable to remove directory: "
                                          f"{self.project}")
        self.assertEqual(seen, [".", "./main.ys"])

    def test_a_project_that_cannot_be_taken_apart_is_left_alone(self):
        self.prepare()
        (self.project / "empty").rmdir()  # what is mounted on would look the same
        (self.project / "held").mkdir()
        before = read_tree(self.project)
        for name, mount in {
                "a volume of its own": 'mount --bind "$PROJECT" "$PROJECT"',
                "a volume within": 'mount -t tmpfs none "$PROJECT/held"',
                "a folder of the same volume mounted within":
                    'mount --bind "$PROJECT/数据" "$PROJECT/held"',
                "a volume that may not be written to":
                    'mount --bind "$PROJECT/.." "$PROJECT/.." && '
                    'mount -o remount,bind,ro "$PROJECT/.."'}.items():
            with self.subTest(name):
                told, seen = self.apply(mount, 'ls -A "$DATA/Quorvane/update/"*')
                self.assertEqual(
                    told["message"],
                    f"Replace failed, rolled back: unable to remove directory: {self.project}")
                self.assertEqual([line for line in seen if line and not line.endswith(":")], [],
                                 "something is left over")
                self.assertEqual(read_tree(self.project), before)


if __name__ == "__main__":
    if subprocess.run(["unshare", "-Urm", "true"], check=False).returncode != 0:
        print("no private mounts on this system")
        sys.exit(77)
    unittest.main()

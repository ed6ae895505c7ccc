#!/usr/bin/env python3
"""Where the temporary files of a command lie that scripts/in-memory runs."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

IN_MEMORY = pathlib.Path(__file__).parents[2] / "scripts/in-memory"
MEMORY = "in-memory: temporary files lie in memory\n"
PLACE = "/run/quorvane-tests"
TELL = 'printf "%s\\n" "$TMPDIR"; stat -f -c %T "$TMPDIR"'


def run(*command, by=(), **surroundings):
    environment = {name: value for name, value in os.environ.items() if name != "TMPDIR"}
    return subprocess.run([*by, IN_MEMORY, *command], env={**environment, **surroundings},
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)


def may_mount():
    return os.getuid() == 0 and run("true").stdout == MEMORY


class InMemory(unittest.TestCase):
    @unittest.skipUnless(may_mount(), "only root, with room in memory, and where it may mount")
    def test_a_volume_in_memory_that_the_command_alone_sees(self):
        told = run("sh", "-c", TELL + "; touch $TMPDIR/kept; ls $TMPDIR")
        self.assertEqual(told.stdout, f"{MEMORY}{PLACE}\ntmpfs\nkept\n")
        self.assertNotIn("kept", os.listdir(PLACE))

    @unittest.skipUnless(may_mount(), "only root, with room in memory, and where it may mount")
    def test_each_user_may_write_there(self):
        told = run("setpriv", "--reuid=65534", "--clear-groups", "sh", "-c",
                   "mkdir $TMPDIR/own && stat -c %u $TMPDIR/own")
        self.assertEqual(told.stdout, MEMORY + "65534\n")

    def test_a_place_that_is_told_stays(self):
        told = run("sh", "-c", 'printf "%s\\n" "$TMPDIR"', TMPDIR="/var/tmp")
        self.assertEqual(told.stdout, "in-memory: temporary files lie in /var/tmp\n/var/tmp\n")

    @unittest.skipUnless(os.getuid() == 0, "only root may become somebody else")
    def test_somebody_else_has_the_disk(self):
        with tempfile.TemporaryDirectory() as folder:
            os.chmod(folder, 0o755) # the tree may lie where others do not come
            script = shutil.copy(IN_MEMORY, folder)
            told = subprocess.run(["env", "-u", "TMPDIR", "setpriv", "--reuid=65534", "--clear-groups", script,
                                   "sh", "-c", 'printf "%s\\n" "$TMPDIR"'],
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.assertEqual(told.stdout, "in-memory: temporary files lie on the disk\n/tmp\n")

    @unittest.skipUnless(os.getuid() == 0, "only root loses a right")
    def test_a_root_that_may_not_mount_has_the_disk(self):
        told = run("sh", "-c", 'printf "%s\\n" "$TMPDIR"', by=["setpriv", "--bounding-set=-sys_admin"])
        self.assertEqual(told.stdout, "in-memory: temporary files lie on the disk\n/tmp\n")

    def test_the_command_has_its_words_and_its_status(self):
        told = run("sh", "-c", 'printf "<%s>" "$@"; exit 7', "x", "two words", "", "$HOME *")
        self.assertTrue(told.stdout.endswith("\n<two words><><$HOME *>"), told.stdout)
        self.assertEqual(told.returncode, 7)


unittest.main()

"""A data folder that cannot be written, and files in it that are not what they should be."""
import os
import subprocess
import unittest

from harness.scenario import Scenario

EARLY_END = "目标进程提前退出"


class BadDisk(Scenario):
    def test_a_data_folder_on_a_read_only_mount(self):
        self.mount("-t", "tmpfs", "-o", "ro,size=64k", "none")
        self.check_that_it_runs_on_without_memory()

    def test_a_data_folder_on_a_full_disk(self):
        self.mount("-t", "tmpfs", "-o", "size=64k", "none")
        self.installation.data.mkdir()
        self.fill(self.installation.data_home / "ballast")
        self.check_that_it_runs_on_without_memory()

    @unittest.skipIf(os.environ["QUORVANE_ACCOUNT"] == "root", "root may write everywhere")
    def test_a_data_folder_that_the_user_may_not_write(self):
        self.installation.data_home.chmod(0o555)
        self.check_that_it_runs_on_without_memory()

    def test_a_database_that_is_none(self):
        self.installation.data.mkdir()
        self.installation.database.write_bytes(b"This is not a database.\n" * 100)
        launcher = self.start_launcher()
        launcher.wait_until_logged("Target exited with code 0")
        self.assertTrue(self.installation.database.read_bytes().startswith(b"This is not"))

    def test_a_folder_in_the_place_of_the_log(self):
        self.installation.data.mkdir()
        self.installation.log_file.mkdir()
        self.installation.runtime_ends(lifetime_ms=60_000)
        launcher = self.start_launcher()
        launcher.wait_for_monitor()
        self.assertEqual(list(self.installation.log_file.iterdir()), [])

    def test_a_default_project_that_leads_nowhere_gives_way_to_the_demo(self):
        self.installation.store_setting("default_project_path", "/nowhere/at/all.yslib")
        launcher = self.start_launcher()
        launcher.wait_until_logged("Target exited with code 0")
        self.assertIn(f"argument: --project={self.installation.demo}",
                      self.installation.runtime_log())

    def mount(self, *arguments):
        subprocess.run(["mount", *arguments, str(self.installation.data_home)], check=True)
        self.addCleanup(subprocess.run, ["umount", "--lazy", str(self.installation.data_home)],
                        check=True)

    def fill(self, path):
        try:
            with open(path, "wb", buffering=0) as file:
                while True:
                    file.write(b"x" * 4096)
        except OSError:
            pass  # no space left, as meant

    def check_that_it_runs_on_without_memory(self):
        """No log, no settings, no nonce: the runtime refuses to run and the launcher says so."""
        launcher = self.start_launcher()
        launcher.wait_for_countdown()
        launcher.wait_for_box(EARLY_END)
        launcher.answer_box(EARLY_END)
        told = self.installation.runtime_log()
        self.assertIn("argument: --locale=en", told)
        self.assertTrue(told[-1].startswith("refused: cannot read "), told)
        self.assertEqual(self.installation.log(), [])
        self.assertIsNone(self.installation.setting("ui/locale"))
        self.assertTrue(launcher.control(launcher.say("立即启动")))
        launcher.press("Escape")
        self.assertEqual(launcher.wait_for_end(), 0)


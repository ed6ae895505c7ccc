"""The end of the launcher, which is the end of what it started."""
import os

from harness.scenario import Scenario
from harness.waiting import wait_for


def is_alive(pid):
    return os.path.exists(f"/proc/{pid}")


class Closing(Scenario):
    def test_closing_the_window_ends_a_running_target(self):
        self.installation.runtime_ends(lifetime_ms=600_000)
        launcher = self.start_launcher()
        launcher.wait_for_monitor()
        runtime, = launcher.children_pids()
        nonce_file, = self.installation.nonce_files()
        written = nonce_file.read_text()
        launcher.close()
        self.assertEqual(launcher.wait_for_end(), 0)
        wait_for(lambda: not is_alive(runtime), "the end of the target")
        self.assertEqual(nonce_file.read_text(), written)  # stays behind
        self.assertNotIn("ending with code", "\n".join(self.installation.runtime_log()))

    def test_escape_ends_a_running_target_too(self):
        self.installation.runtime_ends(lifetime_ms=600_000)
        launcher = self.start_launcher()
        launcher.wait_for_monitor()
        runtime, = launcher.children_pids()
        launcher.press("Escape")
        self.assertEqual(launcher.wait_for_end(), 0)
        wait_for(lambda: not is_alive(runtime), "the end of the target")

    def test_closing_in_the_countdown_starts_nothing(self):
        launcher = self.start_launcher()
        launcher.wait_for_countdown()
        launcher.close(again_after=1)  # five would outlast the countdown
        self.assertEqual(launcher.wait_for_end(), 0)
        self.assertEqual(self.installation.runtime_log(), [])

    def test_its_exit_code_is_not_that_of_the_target(self):
        self.installation.runtime_ends(exit_code=7)
        launcher = self.start_launcher()
        launcher.wait_for_box("目标进程提前退出")
        launcher.answer_box("目标进程提前退出")
        launcher.press("Escape")
        self.assertEqual(launcher.wait_for_end(), 0)

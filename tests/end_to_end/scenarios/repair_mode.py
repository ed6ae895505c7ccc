"""F8, and what the user does by hand from there."""
from harness.launcher import STATUS_REPAIR
from harness.scenario import Scenario
from harness.screen_reader import FOCUSED
from harness.waiting import stays_true, wait_for

# The countdown takes five; a start that was not stopped would be seen by then.
LONGER_THAN_THE_COUNTDOWN = 6.5


class RepairMode(Scenario):
    def test_f8_stops_the_countdown_and_a_click_starts_by_hand(self):
        self.installation.runtime_ends(lifetime_ms=60_000)
        launcher = self.start_launcher()
        self.enter_repair_mode(launcher)
        self.picture("repair")
        stays_true(lambda: not self.starts(), "nothing is started in the repair mode",
                   LONGER_THAN_THE_COUNTDOWN)
        launcher.click("立即启动")
        launcher.wait_for_monitor()
        self.assertEqual(len(self.starts()), 1)

    def test_the_keyboard_alone_is_enough(self):
        self.installation.runtime_ends(lifetime_ms=60_000)
        launcher = self.start_launcher()
        self.enter_repair_mode(launcher)
        button = wait_for(lambda: launcher.control(launcher.say("立即启动")), "the start button")
        # The focus is there already; what is pressed within half a second of that counts for nothing.
        wait_for(lambda: button.has(FOCUSED), "the focus on it", told=launcher.situation)
        wait_for(lambda: launcher.press("space") or self.starts(), "a start", told=launcher.situation)
        launcher.wait_for_monitor()
        self.assertEqual(len(self.starts()), 1)

    def test_enter_in_the_path_starts_nothing(self):
        launcher = self.start_launcher()
        self.enter_repair_mode(launcher)
        launcher.tab_to(launcher.path_field())
        launcher.press("Return")
        stays_true(lambda: not self.starts(), "Enter in the path starts nothing", 1)
        self.assertEqual([window.name() for window in launcher.windows()],
                         [launcher.say("Quorvane 启动器")])

    def test_f8_while_the_runtime_runs_and_a_second_start(self):
        self.installation.runtime_ends(lifetime_ms=60_000)
        launcher = self.start_launcher()
        launcher.wait_for_monitor()
        runtime, = launcher.children_pids()
        nonce_file, = self.installation.nonce_files()
        first_nonce = nonce_file.read_text()

        self.enter_repair_mode(launcher)
        self.assertEqual(launcher.children_pids(), [runtime])

        # The running process refuses a second start, and the launcher goes back to watching it.
        launcher.click("立即启动")
        launcher.wait_for_monitor()
        self.assertEqual(launcher.children_pids(), [runtime])
        self.assertEqual(len(self.starts()), 2)
        self.assertNotEqual(nonce_file.read_text(), first_nonce)

    def test_f8_after_an_end_and_once_more(self):
        launcher = self.start_launcher()
        launcher.wait_until_logged("Target exited with code 0")
        self.enter_repair_mode(launcher)
        launcher.press("F8")
        stays_true(lambda: launcher.say(STATUS_REPAIR) in launcher.texts(), "the repair mode", 0.5)

    def enter_repair_mode(self, launcher):
        launcher.enter_repair_mode()

    def starts(self):
        return [line for line in self.installation.log() if line.startswith("Launching ")]

"""Two launchers on one data folder at once."""
from harness.scenario import Scenario

STARTS = 8


class TwoLaunchers(Scenario):
    def test_a_first_start_of_two_makes_one_whole_database(self):
        first, second = self.start_launcher(), self.start_launcher()
        first.wait_for_countdown()
        second.wait_for_countdown()
        self.assertEqual(self.installation.query("SELECT version FROM schema_version"), [(2,)])
        self.assertEqual(self.installation.query("PRAGMA integrity_check"), [("ok",)])
        self.assertEqual(self.installation.setting("ui/locale"), "en")

    def test_no_log_line_is_lost_and_each_is_whole(self):
        launchers = self.two_in_repair_mode()
        for round_number in range(1, STARTS + 1):
            for launcher in launchers:
                launcher.click("立即启动")
            launchers[0].wait_until_logged("Target exited with code 0", 2 * round_number)

        log = self.installation.log()
        ends = f"Target exited with code 0. Log: {self.installation.log_file}"
        self.assertEqual(log.count(ends), 2 * STARTS)
        for launcher in launchers:
            start = (f"Launching {self.installation.runtime} --parent-pid={launcher.pid} --nonce=")
            own = [line for line in log if line.startswith(start)]
            self.assertEqual(len(own), STARTS)
            for line in own:
                self.assertTrue(line.endswith(f" --project={self.installation.demo} --locale=en"),
                                line)
        self.assertEqual(sum(line.startswith("Launching ") for line in log), 2 * STARTS)
        known = ("[task check_", "Online updates are not available (", "Precheck passed for ",
                 "Launching ", "Target exited with code 0.")
        for line in log:
            self.assertTrue(line.startswith(known), line)
        nonces = {file.name for file in self.installation.nonce_files()}
        self.assertEqual(nonces, {f"launch_nonce_{launcher.pid}.txt" for launcher in launchers})

    def test_no_setting_is_lost(self):
        self.installation.store_setting("kept", "by nobody's hand")
        launchers = self.two_in_repair_mode()
        for tip, locale in (("切换到中文", "zh_CN"), ("Switch to English", "en")) * 3:
            for launcher in launchers:
                launcher.click(tip)
            for launcher in launchers:
                launcher.locale = locale
                launcher.wait_for_window()
            self.assertEqual(self.installation.setting("ui/locale"), locale)
        self.assertEqual(self.installation.setting("kept"), "by nobody's hand")
        self.assertEqual(self.installation.query("PRAGMA integrity_check"), [("ok",)])

    def two_in_repair_mode(self):
        """One after the other: a window that opens takes the keys that were meant for the first."""
        launchers = []
        for _ in range(2):
            launchers.append(self.start_launcher())
            launchers[-1].enter_repair_mode()
        return launchers

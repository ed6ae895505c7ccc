"""The language switched in each state in which the launcher waits."""
from harness.launcher import STATUS_REPAIR
from harness.scenario import Scenario

TO_CHINESE = "切换到中文"
TO_ENGLISH = "Switch to English"


class Language(Scenario):
    def test_in_the_countdown(self):
        launcher = self.start_launcher()
        launcher.wait_for_countdown()
        self.switch_both_ways(launcher, launcher.wait_for_countdown)
        launcher.wait_until_logged("Launching ")

    def test_in_the_repair_mode(self):
        launcher = self.start_launcher()
        launcher.enter_repair_mode()
        self.switch_both_ways(launcher, lambda: launcher.wait_for_text(STATUS_REPAIR))

    def test_while_the_runtime_is_watched(self):
        self.installation.runtime_ends(lifetime_ms=60_000)
        launcher = self.start_launcher()
        launcher.wait_for_monitor()
        self.switch_both_ways(launcher, launcher.wait_for_monitor)

    def test_after_the_end(self):
        launcher = self.start_launcher()
        launcher.wait_until_logged("Target exited with code 0")
        # The report keeps the language in which it was made; the buttons follow.
        self.switch_both_ways(launcher, lambda: self.assertTrue(
            launcher.control(launcher.say("打开启动日志"))))

    def test_the_runtime_is_told_the_language_in_force(self):
        launcher = self.start_launcher()
        launcher.enter_repair_mode()
        self.switch(launcher, TO_CHINESE, "zh_CN")
        launcher.click("立即启动")
        launcher.wait_until_logged("Target exited with code 0")
        self.assertIn("argument: --locale=zh_CN", self.installation.runtime_log())

    def switch_both_ways(self, launcher, check):
        self.switch(launcher, TO_CHINESE, "zh_CN")
        check()
        self.picture("chinese")
        self.switch(launcher, TO_ENGLISH, "en")
        check()

    def switch(self, launcher, tip, locale):
        launcher.click(tip)
        launcher.locale = locale
        launcher.wait_for_window()
        self.assertEqual(self.installation.setting("ui/locale"), locale)

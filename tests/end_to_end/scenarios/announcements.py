"""What a screen reader is told without asking."""
from harness.launcher import STATUS_COUNTDOWN, STATUS_REPAIR
from harness.update_scenario import PROMPT_ONLINE, UpdateScenario
from harness.waiting import wait_for


class Announcements(UpdateScenario):
    def test_the_last_three_seconds_are_said(self):
        launcher = self.listened_to()
        for seconds in (3, 2, 1):
            self.wait_until_said(launcher, launcher.say(STATUS_COUNTDOWN, seconds))
        self.assertNotIn(launcher.say(STATUS_COUNTDOWN, 4), self.reader.said())

    def test_the_repair_mode_is_said(self):
        launcher = self.listened_to()
        launcher.enter_repair_mode()
        self.wait_until_said(launcher, launcher.say(STATUS_REPAIR))

    def test_an_end_is_said(self):
        self.installation.runtime_ends(exit_code=0)
        launcher = self.listened_to()
        launcher.wait_until_logged("Target exited with code 0")
        wait_for(lambda: any(str(self.installation.log_file) in text
                             for text in self.reader.said()), "the end said",
                 told=lambda: f"it said {self.reader.said()}")

    def test_an_offer_is_said(self):
        self.start_server(self.runtime_offer("2.0.0"))
        launcher = self.listened_to()
        launcher.wait_for_text(PROMPT_ONLINE)
        self.wait_until_said(launcher, launcher.say(PROMPT_ONLINE))
        self.wait_until_said(launcher, self.online_summary(launcher, "Runtime -> 2.0.0"))

    def listened_to(self):
        self.reader.listen()
        return self.start_launcher()

    def wait_until_said(self, launcher, text):
        wait_for(lambda: text in self.reader.said(), f"{text!r} said",
                 told=lambda: f"it said {self.reader.said()}\n{launcher.situation()}")

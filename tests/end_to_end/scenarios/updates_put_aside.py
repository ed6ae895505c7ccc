"""Online updates that the user does not want now, or never, over several starts."""
import datetime

from harness.launcher import BUTTON_LAUNCH
from harness.network import MANIFEST_URL
from harness.screen_reader import ENABLED
from harness.update_scenario import (BANNER_LATER, BANNER_SKIP, BANNER_UPDATE, DIALOG, FOUND,
                                     MANIFEST_REQUEST, PROMPT_ONLINE, STARTED, UpdateScenario)

BADGE = "有更新"
FINGERPRINT = "update/online_skipped_version_fingerprint"
SKIPPED_AT = "update/online_skipped_at"


class UpdatesPutAside(UpdateScenario):
    def test_a_reminder_for_later_holds_for_this_run_alone(self):
        server = self.start_server(self.runtime_offer("2.0.0"))
        for run in (1, 2):
            launcher = self.start_launcher()
            launcher.wait_for_text(PROMPT_ONLINE)
            launcher.click(BANNER_LATER)
            self.wait_for_exits(launcher, run)  # the seconds that were left have run
            self.assertTrue(launcher.control(launcher.say(BADGE)))
            self.assertFalse(launcher.control(launcher.say(BANNER_UPDATE)))
            self.assertIsNone(self.installation.setting(FINGERPRINT))
            self.picture(f"run_{run}")
            launcher.close()
            self.assertEqual(launcher.wait_for_end(), 0)
        self.assertEqual(self.starts(), 2 * self.launch_lines())
        self.assertEqual(server.requests(), 2 * [f"{MANIFEST_REQUEST} 200"])

    def test_a_version_is_skipped_for_good_until_a_newer_one_comes(self):
        server = self.start_server(self.runtime_offer("2.0.0"))
        self.skip_in_a_run()

        self.assertEqual(self.installation.setting(FINGERPRINT), "runtime:2.0.0")
        skipped_at = datetime.datetime.fromisoformat(self.installation.setting(SKIPPED_AT))
        now = datetime.datetime.now(datetime.timezone.utc)
        self.assertLess(abs(now - skipped_at), datetime.timedelta(minutes=1))

        # The same offer stops the next start no more, but stays within reach.
        launcher = self.start_launcher()
        self.wait_for_exits(launcher, 2)
        self.assertNotIn(launcher.say(PROMPT_ONLINE), launcher.texts())
        launcher.click(BADGE)
        launcher.wait_for_box(DIALOG)
        self.desktop.key("Escape")
        launcher.wait_until_closed(DIALOG)
        launcher.close()
        self.assertEqual(launcher.wait_for_end(), 0)

        server.publish(self.runtime_offer("2.1.0"))
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        self.assertIn(self.online_summary(launcher, "Runtime -> 2.1.0"), launcher.texts())
        self.assertEqual(self.installation.setting(FINGERPRINT), "runtime:2.0.0")
        self.assertEqual(server.requests(), 3 * [f"{MANIFEST_REQUEST} 200"])

    def test_a_skipped_version_on_a_stick_is_offered_all_the_same(self):
        self.start_server(self.runtime_offer("2.0.0"))
        self.skip_in_a_run()
        stick = self.insert_stick()
        self.put_installer(stick.folder)
        stick.publish(self.runtime_offer("2.0.0"))
        launcher = self.start_launcher()
        summary = self.stick_summary(launcher, stick, "Runtime -> 2.0.0")
        launcher.wait_for_text("%1", summary)

    def test_the_repair_mode_holds_the_countdown_after_a_reminder(self):
        self.start_server(self.runtime_offer("2.0.0"))
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        launcher.click(BANNER_LATER)
        launcher.wait_for_countdown()
        launcher.press("F8")
        badge = self.wait_for_badge(launcher)
        self.assertTrue(badge.has(ENABLED))
        launcher.click(BUTTON_LAUNCH)
        self.wait_for_exits(launcher)
        self.assertEqual(self.starts(), self.launch_lines())
        self.assertEqual(self.log().count(STARTED), 1)

    def skip_in_a_run(self):
        """One start in which the offered version is skipped for good."""
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        launcher.click(BANNER_SKIP)
        self.wait_for_exits(launcher)
        told = ("Online update skipped fingerprint=runtime:2.0.0 components=[runtime:2.0.0] "
                f"source={MANIFEST_URL}")
        log = self.log()
        self.assertEqual(log.count(told), 1)
        self.assertLess(log.index(FOUND), log.index(told))
        self.assertEqual(self.starts(), self.launch_lines())
        launcher.close()
        self.assertEqual(launcher.wait_for_end(), 0)

    def wait_for_badge(self, launcher):
        launcher.wait_for_text(BADGE)
        return launcher.control(launcher.say(BADGE))

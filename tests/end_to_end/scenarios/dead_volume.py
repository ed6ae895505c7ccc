"""A start on a PC of which a mounted volume does not answer any more."""
from harness import network
from harness.dead_volume import DeadVolume, NoDeadVolume
from harness.update_scenario import FOUND, PROMPT_ONLINE, STARTED, UpdateScenario

NO_ANSWER = ("No answer from the mounted volumes within 5000 ms: "
             "the check goes on without a stick")
READ_ONLINE = "已读取在线 manifest：%1"


class DeadVolumeScenario(UpdateScenario):
    def setUp(self):
        super().setUp()
        try:
            volume = DeadVolume(self.installation.root / "drive")
        except NoDeadVolume as reason:
            self.skipTest(str(reason))
        self.addCleanup(volume.remove)

    def test_the_check_goes_on_without_a_stick(self):
        self.start_server(self.runtime_offer("2.0.0"))
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        summary = self.online_summary(launcher, "Runtime -> 2.0.0")
        check = [line for line in self.log() if not line.startswith("Precheck passed for ")]
        self.assertEqual(check, [STARTED, NO_ANSWER,
                                 launcher.say(READ_ONLINE, network.MANIFEST_URL),
                                 *summary.split("\n"), FOUND])
        launcher.close()  # while a thread still hangs there
        self.assertEqual(launcher.wait_for_end(), 0)

    def test_the_window_closed_meanwhile(self):
        launcher = self.start_launcher()
        launcher.wait_for_countdown()
        launcher.close()
        self.assertEqual(launcher.wait_for_end(), 0)
        self.assertNotIn("Launching", "\n".join(self.log()))

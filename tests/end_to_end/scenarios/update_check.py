"""The user's hand while the check for updates is under way."""
from harness.launcher import CANCEL_TASK, STATUS_REPAIR
from harness.update_scenario import (BANNER_UPDATE, CANCEL_REQUESTED, FOUND, NONE,
                                     PROMPT_ONLINE, STARTED, UpdateScenario)
from harness.waiting import wait_for

WAITS_FOR_CHECK = "正在检查更新，请稍候…"
F8_REFUSED = "更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。"
THROTTLED = "修复模式下更新检查命中节流窗口（%1 秒），跳过重复请求。"
PANEL_TITLE = "更新任务 [%1]：%2"
FETCHING = "拉取并校验 manifest…"


class SlowServer:
    """Sends each request on to another address, after a while, and so keeps a check going.

    A check gives each address three seconds and follows eight of them, so there is time enough.
    """

    def __init__(self, scenario):
        self.manifest = None
        self.server = scenario.start_odd_server(self._answer)

    def let_go(self, manifest=None):
        """From now on requests are answered at once, by closing if there is no manifest."""
        self.manifest = manifest
        self.server.released.set()

    def wait_until_asked(self):
        wait_for(lambda: self.server.requests, "a request")

    def _answer(self, request):
        if not self.server.released.wait(1.5):
            request.redirect(f"/{len(self.server.requests)}")
        elif self.manifest is not None:
            request.send(self.manifest)


class UpdateCheck(UpdateScenario):
    def setUp(self):
        super().setUp()
        self.server = SlowServer(self)
        self.launcher = self.start_launcher()
        self.server.wait_until_asked()
        self.launcher.wait_for_countdown()

    def test_f8_waits_for_the_end_of_the_check(self):
        launcher = self.launcher
        launcher.press("F8")
        launcher.wait_for_text(WAITS_FOR_CHECK)
        launcher.press("F8")
        launcher.wait_for_text(F8_REFUSED)
        self.picture("refused")
        self.server.let_go()
        self.wait_for_exits(launcher)
        log = self.log()
        self.assertEqual(log[:2], [STARTED, self.launch_lines()[0]])
        self.assertEqual(log[-3:], [NONE, *self.start_lines()])

    def test_a_check_cancelled_in_the_countdown_is_made_anew_at_its_end(self):
        launcher = self.launcher
        launcher.click(CANCEL_TASK)
        launcher.wait_until_logged("[task check_", 2)
        self.server.let_go()
        launcher.wait_until_logged("[task check_", 3)
        self.server.let_go(self.runtime_offer("2.0.0").encode())
        launcher.wait_for_text(PROMPT_ONLINE)
        log = self.log()
        self.assertEqual(log[:2], [STARTED, CANCEL_REQUESTED])
        self.assertEqual(log[3:6], [NONE, self.launch_lines()[0], STARTED])
        self.assertEqual(self.installation.runtime_log(), [])

    def test_a_check_cancelled_after_the_countdown_does_not_hold_up_the_start(self):
        launcher = self.launcher
        launcher.wait_for_text(WAITS_FOR_CHECK)
        launcher.click(CANCEL_TASK)
        launcher.wait_until_logged("[task check_", 2)
        self.server.let_go(self.runtime_offer("2.0.0").encode())
        self.wait_for_exits(launcher)
        log = self.log()
        self.assertEqual(log[:3], [STARTED, self.launch_lines()[0], CANCEL_REQUESTED])
        # What the check came to is told, and not acted on.
        self.assertEqual(log[-3:], [FOUND, *self.start_lines()])
        self.assertFalse(launcher.control(launcher.say(BANNER_UPDATE)))

    def test_in_the_repair_mode_a_cancelled_check_is_not_made_anew_at_once(self):
        launcher = self.launcher
        launcher.click(CANCEL_TASK)
        self.server.let_go()
        wait_for(lambda: NONE in self.log(), "the end of the check")
        launcher.press("F8")
        launcher.wait_for_text(STATUS_REPAIR)
        launcher.wait_for_log(launcher.say(THROTTLED, 30))
        self.assertEqual(self.log().count(STARTED), 1)

    def test_the_panel_of_the_check_follows_the_language(self):
        launcher = self.launcher
        task = self.installation.log()[0].split("]")[0].removeprefix("[task ")
        for tip, locale in (("切换到中文", "zh_CN"), ("Switch to English", "en")):
            launcher.click(tip)
            launcher.locale = locale
            launcher.wait_for_text(PANEL_TITLE, task, launcher.say("检查更新"))
            launcher.wait_for_text(FETCHING)
            self.assertTrue(launcher.control(launcher.say(CANCEL_TASK)))
            self.picture(locale)
        self.server.let_go(self.runtime_offer("2.0.0").encode())
        launcher.wait_for_text(PROMPT_ONLINE)
        self.assertFalse(launcher.control(launcher.say(CANCEL_TASK)))

    def test_the_window_closed_while_the_server_goes_on_and_on(self):
        self.launcher.close()
        # The check has no ear for it and ends by itself, long after the service's wait for it.
        self.assertEqual(self.launcher.wait_for_end(60), 0)
        self.assertEqual(self.installation.runtime_log(), [])
        self.assertEqual(self.log()[0], STARTED)
        self.assertNotIn(NONE, self.log())

"""An update beside a target that runs: their ends cross, and each is reported once."""
import os
import signal

from harness.launcher import BUTTON_LAUNCH, CANCEL_TASK
from harness.network import MANIFEST_PATH
from harness.update_scenario import (APPLY_STARTED, BANNER_LATER, DIALOG, PROMPT_ONLINE,
                                     UpdateScenario)
from harness.waiting import wait_for

BADGE = "有更新"
FINISHED, CANCELLED, EARLY_END = "更新完成", "已取消", "目标进程提前退出"
WRONG_HASH = "校验失败"
APPLY_CANCELLED = "更新任务已取消。"
ENDED = "Target exited with code "


class UpdateCrossings(UpdateScenario):
    def setUp(self):
        super().setUp()
        self.package = self.put_package(self.installation.root / "server")
        self.manifest = self.project_offer(self.package)
        self.server = self.start_odd_server(self.answer)

    def answer(self, request):
        """The manifest at once, the package once it is let go."""
        if MANIFEST_PATH in request.line:
            request.send(self.manifest.encode())
        else:
            request.hold()
            request.send(self.package.read_bytes())

    def test_the_target_crashes_in_a_download_that_is_cancelled_then(self):
        launcher, runtime = self.update_beside_a_target()
        os.kill(runtime, signal.SIGABRT)
        launcher.wait_for_box(EARLY_END)
        launcher.answer_box(EARLY_END)
        launcher.click(CANCEL_TASK)
        self.assertIn(launcher.say(APPLY_CANCELLED), launcher.wait_for_box(CANCELLED))
        launcher.answer_box(CANCELLED)
        self.assertEqual(self.count(ENDED), 1)
        self.assertEqual(self.count(launcher.say(APPLY_CANCELLED)), 1)
        self.assertEqual([window.name() for window in launcher.windows()],
                         [launcher.say("Quorvane 启动器")])
        self.installation.runtime_ends()
        launcher.click(BUTTON_LAUNCH)
        launcher.wait_until_logged(ENDED, 2)

    def test_the_target_crashes_in_a_download_that_is_applied_then(self):
        launcher, runtime = self.update_beside_a_target()
        self.installation.runtime_ends()
        os.kill(runtime, signal.SIGABRT)
        launcher.wait_for_box(EARLY_END)
        self.server.released.set()  # the update goes on under the box
        launcher.wait_for_box(FINISHED)
        launcher.answer_box(FINISHED)
        launcher.answer_box(EARLY_END)
        launcher.wait_until_logged(ENDED, 2)
        self.assertEqual(self.count("[task apply_#] phase=apply "), 1)
        self.assertEqual(self.installation.runtime_log().count("argument: --reload-models"), 1)

    def test_an_update_applied_beside_a_running_target_leaves_it_running(self):
        launcher, runtime = self.update_beside_a_target()
        self.server.released.set()
        launcher.wait_for_box(FINISHED)
        launcher.answer_box(FINISHED)
        launcher.wait_for_monitor()
        self.assertEqual(launcher.children_pids(), [runtime])
        # A second start is told, but there is room for one target only.
        self.assertEqual(self.count("Launching "), 2)
        self.assertEqual(self.installation.runtime_log().count("nonce accepted"), 1)
        version = self.installation.demo.parent / ".quorvane-installed-version"
        self.assertEqual(version.read_text(), "1.1.0\n")

    def test_an_update_that_failed_is_accepted_again_in_the_same_run(self):
        published = self.package.read_bytes()
        self.package.write_bytes(published[:-1])
        self.server.released.set()
        launcher = self.accept_update(PROMPT_ONLINE)
        launcher.wait_for_box(WRONG_HASH)
        launcher.answer_box(WRONG_HASH)
        self.package.write_bytes(published)
        self.accept(launcher)
        launcher.wait_for_box(FINISHED)
        launcher.answer_box(FINISHED)
        self.wait_for_exits(launcher)
        self.assertEqual(self.count(APPLY_STARTED), 2)
        self.assertEqual(self.installation.runtime_log().count("argument: --reload-models"), 1)

    def update_beside_a_target(self):
        """A launcher whose target runs while the package of an update is being fetched."""
        self.installation.runtime_ends(lifetime_ms=600_000)
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        launcher.click(BANNER_LATER)
        launcher.wait_for_monitor()
        wait_for(lambda: "nonce accepted" in self.installation.runtime_log(), "the target")
        runtime, = launcher.children_pids()
        launcher.press("F8")
        launcher.wait_for_text(BADGE)
        launcher.click(BADGE)
        launcher.wait_for_box(DIALOG)
        launcher.answer_box(DIALOG)
        wait_for(lambda: len(self.server.requests) == 2, "the download")
        return launcher, runtime

    def count(self, start):
        return sum(line.startswith(start) for line in self.log())

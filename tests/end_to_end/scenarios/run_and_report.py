"""From the countdown to a started runtime, and the report of each way in which it ends."""
import re

from harness.scenario import Scenario

EXITED = "目标进程已退出，代码 %1%2。\n日志：%3\n%4"
DUMPS = "Dump 目录：%1"
EARLY_END = "目标进程提前退出"
CRASHED = "（进程崩溃）"
ENDED_FROM_OUTSIDE = "（可能被外部终止，如任务管理器）"


class RunAndReport(Scenario):
    def test_the_runtime_gets_its_arguments_and_a_fresh_nonce(self):
        self.installation.runtime_ends(lifetime_ms=60_000)
        launcher = self.start_launcher()
        launcher.wait_for_monitor()
        self.picture("monitor")

        nonce_file, = self.installation.nonce_files()
        self.assertEqual(nonce_file.name, f"launch_nonce_{launcher.pid}.txt")
        nonce, moment, rest = nonce_file.read_text().split("\n")
        self.assertRegex(nonce, re.compile(r"\A[0-9a-f]{32}\Z"))
        self.assertRegex(moment, re.compile(r"\A[0-9]{13}\Z"))
        self.assertEqual(rest, "")

        arguments = [f"--parent-pid={launcher.pid}", f"--nonce={nonce}",
                     f"--project={self.installation.demo}", "--locale=en"]
        runtime, = launcher.children_pids()
        self.assertEqual(self.command_line(runtime), [str(self.installation.runtime), *arguments])
        launcher.wait_for_log(f"Launching {self.installation.runtime} {' '.join(arguments)}")
        self.assertEqual(self.installation.runtime_log(), [
            f"LineRunner stand-in, working folder {self.installation.program_folder}",
            *(f"argument: {argument}" for argument in arguments),
            "nonce accepted",
            f"would run {self.installation.demo} with locale en",
        ])

    def test_an_end_with_0_is_reported_without_a_box(self):
        launcher = self.start_launcher()
        self.check_report(launcher, 0, "")
        self.assertEqual([window.name() for window in launcher.windows()],
                         [launcher.say("Quorvane 启动器")])
        self.assertTrue(launcher.control(launcher.say("立即启动")))
        self.picture("ended")

    def test_an_end_with_1_may_come_from_outside(self):
        self.installation.runtime_ends(exit_code=1)
        launcher = self.start_launcher()
        self.check_report_in_box(launcher, 1, ENDED_FROM_OUTSIDE)

    def test_an_end_with_7_tells_the_code(self):
        self.installation.runtime_ends(exit_code=7)
        launcher = self.start_launcher()
        self.check_report_in_box(launcher, 7, "")

    def test_a_crash_is_called_one(self):
        self.installation.runtime_ends(crash=True)
        launcher = self.start_launcher()
        self.check_report_in_box(launcher, 6, CRASHED)

    def test_after_an_end_the_next_start_has_a_nonce_of_its_own(self):
        launcher = self.start_launcher()
        self.check_report(launcher, 0, "")
        first, = self.installation.nonce_files()
        first_nonce = first.read_text().split("\n")[0]
        launcher.click("立即启动")
        launcher.wait_until_logged("Target exited with code 0", times=2)
        second, = self.installation.nonce_files()
        self.assertEqual(second, first)
        self.assertNotEqual(second.read_text().split("\n")[0], first_nonce)
        self.assertEqual(self.installation.runtime_log().count("nonce accepted"), 2)

    def command_line(self, pid):
        with open(f"/proc/{pid}/cmdline", encoding="utf-8") as file:
            return file.read().rstrip("\0").split("\0")

    def check_report(self, launcher, code, suffix):
        """The log holds the suffix as it is in the source; the status holds it in the locale."""
        log = self.installation.log_file
        launcher.wait_for_log(f"Target exited with code {code}{suffix}. Log: {log}")
        details = self.details(launcher, code, suffix)
        launcher.wait_for_text("%1", details)
        return details

    def check_report_in_box(self, launcher, code, suffix):
        log = self.installation.log_file
        launcher.wait_for_log(f"Target exited with code {code}{suffix}. Log: {log}")
        shown = launcher.wait_for_box(EARLY_END)
        self.picture("box")
        # The folder of the dumps stands in the box twice: once with the details, once behind them.
        details = self.details(launcher, code, suffix)
        dumps = launcher.say(DUMPS, self.installation.data / "dumps")
        self.assertIn(f"{details}\n{dumps}", shown)
        launcher.answer_box(EARLY_END)
        launcher.wait_for_text("%1", details)
        self.assertTrue(launcher.control(launcher.say("立即启动")))

    def details(self, launcher, code, suffix):
        return launcher.say(EXITED, code, launcher.say(suffix) if suffix else "",
                            self.installation.log_file,
                            launcher.say(DUMPS, self.installation.data / "dumps"))

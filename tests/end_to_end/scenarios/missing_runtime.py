"""A runtime that is not there, or cannot be started."""
import shutil

from harness.scenario import Scenario

FAILED = "启动失败"


class MissingRuntime(Scenario):
    def test_no_runtime_then_one_that_was_installed(self):
        aside = self.installation.root / "LineRunner.exe"
        self.installation.runtime.rename(aside)
        launcher = self.start_launcher()
        text = (f"LineRunner.exe not found in {self.installation.program_folder}.\n"
                "Production layout requires Runtime (R2). Install Runtime beside Launcher.")
        self.check_failure(launcher, text)
        self.picture("failed")

        aside.rename(self.installation.runtime)
        launcher.click("立即启动")
        launcher.wait_until_logged("Target exited with code 0")

    def test_a_runtime_that_is_not_executable(self):
        self.installation.runtime.chmod(0o644)
        launcher = self.start_launcher()
        self.check_failure(launcher, f"Failed to start {self.installation.runtime}: "
                                     "execvp: Permission denied")

    def test_a_runtime_that_cannot_start(self):
        self.installation.runtime.write_text("#!/no/such/interpreter\n")
        launcher = self.start_launcher()
        self.check_failure(launcher, f"Failed to start {self.installation.runtime}: "
                                     "execvp: No such file or directory")

    def test_a_folder_in_the_place_of_the_runtime(self):
        self.installation.runtime.unlink()
        self.installation.runtime.mkdir()
        launcher = self.start_launcher()
        self.check_failure(launcher, f"Failed to start {self.installation.runtime}: "
                                     "execvp: Permission denied")

    def test_in_production_the_editor_is_no_substitute(self):
        self.put_editor_in_place_of_the_runtime()
        launcher = self.start_launcher(QUORVANE_DEV="0")
        self.check_failure(launcher, (
            f"LineRunner.exe not found in {self.installation.program_folder}.\n"
            "Production layout requires Runtime (R2). Install Runtime beside Launcher."))

    def test_a_developer_gets_the_editor_instead(self):
        self.put_editor_in_place_of_the_runtime()
        launcher = self.start_launcher(QUORVANE_DEV="TRUE")
        launcher.wait_for_log("R1.5 dev fallback: launching LineStudio.exe (Runtime not present).")
        launcher.wait_until_logged("Target exited with code 0")
        self.assertIn("nonce accepted", self.installation.runtime_log())

    def put_editor_in_place_of_the_runtime(self):
        shutil.move(self.installation.runtime, self.installation.program_folder / "LineStudio.exe")

    def check_failure(self, launcher, text):
        self.assertIn(text, launcher.wait_for_box(FAILED))
        launcher.answer_box(FAILED)
        launcher.wait_for_text("%1", text)
        self.assertIn(text, "\n".join(self.installation.log()))
        self.assertTrue(launcher.control(launcher.say("立即启动")))

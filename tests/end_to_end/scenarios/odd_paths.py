"""Projects at places with names that need care."""
import shutil

from harness.scenario import Scenario


class OddPaths(Scenario):
    def test_blanks_quotes_and_chinese(self):
        self.check_project(self.copy_demo("线体 3 \"北\" it's 100%1 & <b>grün</b>"))

    def test_a_path_of_more_than_300_characters(self):
        project = self.copy_demo("/".join(["产线-with-a-long-name-" + "x" * 60] * 4))
        self.assertGreater(len(str(project)), 300)
        self.check_project(project)

    def check_project(self, project):
        """It is shown as it is, fits the window, and reaches the runtime as one argument."""
        self.installation.store_setting("default_project_path", str(project))
        launcher = self.start_launcher()
        launcher.wait_for_countdown()
        self.picture("countdown")
        self.assertIn(launcher.say("项目：%1", project), launcher.texts())
        launcher.wait_until_logged("Target exited with code 0")
        self.assertIn(f"argument: --project={project}", self.installation.runtime_log())
        self.assertIn(f"would run {project} with locale en", self.installation.runtime_log())

    def copy_demo(self, name):
        folder = self.installation.root / name
        shutil.copytree(self.installation.program_folder / "examples" / "projects" / "demo", folder)
        return folder / "demo.yslib"

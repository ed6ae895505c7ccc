"""The first start on a machine, and the second."""
from harness.scenario import Scenario
from harness.waiting import wait_for

TABLES = {"schema_version", "app_settings", "recent_files", "debug_sessions", "debug_messages",
          "parameter_snapshots", "recent_projects"}


class FirstStart(Scenario):
    def test_everything_is_laid_out_and_the_demo_is_picked(self):
        self.installation.runtime_ends(lifetime_ms=60_000)
        launcher = self.start_launcher()
        launcher.wait_for_countdown()
        self.picture("countdown")

        # The project, copied from the installation, once and for all.
        shipped = self.installation.program_folder / "examples" / "projects" / "demo"
        for path in shipped.rglob("*"):
            copy = self.installation.demo.parent / path.relative_to(shipped)
            self.assertTrue(copy.exists(), copy)
            if path.is_file():
                self.assertEqual(copy.read_bytes(), path.read_bytes())
        marker = self.installation.user / "projects" / ".demo_seed_done"
        self.assertEqual(marker.read_bytes(), b"1")
        self.assertTrue((self.installation.user / "config").is_dir())

        # The data folder.
        for folder in ("dumps", "update/temp", "update/backup", "update/cache"):
            self.assertTrue((self.installation.data / folder).is_dir(), folder)

        # The settings, made and brought to their last version.
        self.assertEqual(self.installation.query("SELECT version FROM schema_version"), [(2,)])
        tables = {name for name, in self.installation.query(
            "SELECT name FROM sqlite_master WHERE type='table' AND name NOT LIKE 'sqlite_%'")}
        self.assertEqual(tables, TABLES)
        self.assertEqual(self.installation.setting("ui/locale"), "en")

        # The demo is what it runs.
        self.assertIn(launcher.say("项目：%1", self.installation.demo), launcher.texts())
        launcher.wait_for_monitor()
        self.assertIn(f"--project={self.installation.demo}", self.installation.log()[-1])

    def test_a_deleted_demo_does_not_come_back(self):
        first = self.start_launcher()
        first.wait_for_countdown()
        first.press("Escape")
        self.assertEqual(first.wait_for_end(), 0)
        self.installation.demo.unlink()

        second = self.start_launcher()
        second.wait_for_countdown()
        self.assertFalse(self.installation.demo.exists())
        self.assertIn(second.say("项目：%1", second.say("（无）")), second.texts())

    def test_without_its_translation_it_speaks_chinese_and_remembers_that(self):
        (self.installation.program_folder / "translations" / "quorvane_en.qm").unlink()
        launcher = self.start_launcher(locale="zh_CN")
        launcher.wait_for_countdown()
        self.assertEqual(self.installation.setting("ui/locale"), "zh_CN")
        self.picture("chinese")

    def test_a_stored_language_is_in_force_at_the_next_start(self):
        self.installation.store_setting("ui/locale", "zh_CN")
        launcher = self.start_launcher(locale="zh_CN")
        launcher.wait_for_countdown()
        self.assertEqual(self.installation.setting("ui/locale"), "zh_CN")

    def test_the_installation_moved_elsewhere_needs_nothing(self):
        moved = self.installation.root / "elsewhere 另一处"
        (self.installation.root / "Quorvaner").rename(moved)
        self.installation.move_to(moved)
        launcher = self.start_launcher()
        launcher.wait_for_countdown()
        wait_for(self.installation.demo.exists, "the demo beside the moved program")

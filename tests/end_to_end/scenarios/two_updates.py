"""Two launchers on one data folder in which the same update is accepted."""
import json

from harness.held_worker import HeldWorker
from harness.update_scenario import APPLY_STARTED, PROMPT_STICK, UpdateScenario
from harness.waiting import wait_for

FINISHED = "更新完成"

# Enough that the first update is still under way when it is seen from outside.
MANY_FILES = {f"models/{number}.json": "{}" for number in range(3000)}


class TwoUpdates(UpdateScenario):
    def test_the_second_waits_as_long_as_the_first_is_at_it(self):
        shipped = self.installation.program_folder / "examples" / "projects" / "demo"
        self.seed_project({**self.files_of(shipped), **MANY_FILES, "logs/old.txt": "old"})
        stick = self.insert_stick()
        stick.publish(self.project_offer(self.put_package(stick.folder, {"models/new.json": "{}"})))
        first, second = self.start_launcher(), self.start_launcher()
        for launcher in (first, second):
            launcher.wait_for_text(PROMPT_STICK)
        self.accept(first)
        with HeldWorker(first, self.in_the_swap, "the project being replaced"):
            backups, unpacked = self.left_in("backup"), self.unpacked()
            self.accept(second)
            wait_for(self.copy_of_the_second, "the second one's copy of the package")
            self.assertEqual((self.left_in("backup"), self.unpacked()), (backups, unpacked))
        for launcher in (first, second):
            launcher.wait_for_box(FINISHED)  # both, so that none takes the keyboard from the other
        for count, launcher in enumerate((first, second), 1):
            launcher.answer_box(FINISHED)
            self.wait_for_exits(launcher, count)
        self.check_new_project()
        self.assertEqual(self.left_in("temp") + self.left_in("backup"), [])
        log = self.log()
        self.assertEqual(log.count(APPLY_STARTED), 2)
        self.assertEqual(sum("phase=apply " in line for line in log), 2)

    def copy_of_the_second(self):
        # The first one's is gone since it was unpacked.
        return any(self.installation.data.glob("update/temp/package_*/*.zip"))

    def unpacked(self):
        return sorted(self.installation.data.glob("update/temp/apply_*"))

    def in_the_swap(self):
        return any(self.installation.data.glob("update/backup/demo_*/models"))

    def check_new_project(self):
        shipped = self.installation.program_folder / "examples" / "projects" / "demo"
        files, expected = self.files_of(self.installation.demo.parent), self.files_of(shipped)
        self.assertEqual(json.loads(files.pop("demo.yslib"))["project"]["version"], "1.1.0")
        expected.pop("demo.yslib")
        self.assertEqual(files, {**expected, "models/new.json": b"{}", "logs/old.txt": b"old",
                                 ".quorvane-installed-version": b"1.1.0\n"})

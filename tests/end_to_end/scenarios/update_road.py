"""The whole road of an update: found, accepted, applied, its installers started, the target run."""
import json
import os

from harness.launcher import BUTTON_LAUNCH
from harness.network import MANIFEST_PATH, UPDATE_HOST
from harness.publisher import component
from harness.update_scenario import (APPLY_STARTED, MANIFEST_REQUEST, PROMPT_ONLINE, PROMPT_STICK,
                                     VERSIONS, UpdateScenario)
from harness.waiting import wait_for

FINISHED = "更新完成"
INSTALLER_STARTED = "%1 安装包已自动启动：%2（组件版本将在安装程序完成后写入本地配置）"
ORDER = {"python-1.1.0.exe": "Python 工具", "runtime-1.1.0.exe": "Runtime",
         "editor-1.1.0.exe": "Editor", "launcher-1.1.0.exe": "Launcher"}


class UpdateRoad(UpdateScenario):
    def setUp(self):
        super().setUp()
        shipped = self.installation.program_folder / "examples" / "projects" / "demo"
        self.seed_project({**self.files_of(shipped), "scripts/gone.ys": "// replaced\n",
                           "logs/both.txt": "old", "logs/2026/old.txt": "old"})

    def test_from_a_stick(self):
        stick = self.insert_stick()
        stick.publish(self.full_offer(stick.folder))
        launcher = self.accept_update(PROMPT_STICK)
        self.check_road(launcher, stick.folder)
        self.assertEqual(self.left_in("cache"), [])

    def test_from_the_server(self):
        server = self.start_server()
        server.publish(self.full_offer(server.beside_manifest))
        launcher = self.accept_update(PROMPT_ONLINE)
        self.check_road(launcher, self.installation.data / "update" / "cache")

        self.assertEqual(self.left_in("cache"), sorted(["demo-1.1.0.zip", *ORDER]))
        beside = MANIFEST_PATH.rpartition("/")[0]
        self.assertEqual(server.requests(), [
            f"{MANIFEST_REQUEST} 200",
            *(f"GET {UPDATE_HOST}{beside}/{name} 200" for name in ["demo-1.1.0.zip", *ORDER])])

        # The next start has nothing newer before it, and nothing is fetched but the manifest.
        launcher.close()
        self.assertEqual(launcher.wait_for_end(), 0)
        versions = self.installation.program_folder / "config" / "release_version.json"
        versions.write_text(versions.read_text().replace("1.0.0", "1.1.0"))
        self.wait_for_exits(self.start_launcher(), 3)
        self.assertEqual(server.requests()[-1], f"{MANIFEST_REQUEST} 200")
        self.assertEqual(len(server.requests()), 7)
        self.assertEqual(self.reloads(), 1)

    def test_installers_alone_leave_the_project_as_it_is(self):
        stick = self.insert_stick()
        runtime = self.put_installer(stick.folder, "runtime-1.1.0.exe")
        stick.publish(self.publisher.sign(runtime=component(runtime)))
        before = self.files_of(self.installation.demo.parent)
        launcher = self.accept_update(PROMPT_STICK)
        details = [launcher.say("已跳过项目更新。"),
                   launcher.say(INSTALLER_STARTED, "Runtime", runtime)]
        self.assertIn("\n".join(details), launcher.wait_for_box(FINISHED))
        launcher.answer_box(FINISHED)
        self.wait_for_exits(launcher)
        self.assertEqual(self.log_from("[task setup_#] started kind=setup"), [
            "[task setup_#] started kind=setup", details[1], *details,
            "[task setup_#] phase=setup elapsedMs=0", *self.start_lines()])
        self.assertEqual(self.files_of(self.installation.demo.parent), before)
        self.assertEqual(self.reloads(), 0)

    def test_a_started_installer_outlives_the_launcher(self):
        pipe = self.installation.root / "pipe"
        os.mkfifo(pipe)
        record = self.installation.root / "installers.log"
        stick = self.insert_stick()
        runtime = self.put_installer(stick.folder, "runtime-1.1.0.exe",
                                     f'read word <"{pipe}"; echo "finished: $word" >>"{record}"')
        stick.publish(self.publisher.sign(runtime=component(runtime)))
        launcher = self.accept_update(PROMPT_STICK)
        launcher.wait_for_box(FINISHED)
        launcher.answer_box(FINISHED)
        self.wait_for_exits(launcher)
        wait_for(self.installers_run, "the installer's start")
        launcher.close()
        self.assertEqual(launcher.wait_for_end(), 0)
        self.assertEqual(self.installers_run(), ["runtime-1.1.0.exe started, 0 arguments"])
        pipe.write_text("go on\n")  # waits for the installer to read
        wait_for(lambda: self.installers_run()[1:] == ["finished: go on"], "the installer's end")

    def full_offer(self, folder):
        package = self.put_package(folder, {"models/新.json": "{}", "logs/both.txt": "new",
                                            "logs/new.txt": "new"})
        python, runtime, editor, own = (self.put_installer(folder, name) for name in ORDER)
        return self.project_offer(package, launcher=component(own), editor=component(editor),
                                  runtime=component(runtime), pythonTools=component(python))

    def check_road(self, launcher, installers):
        started = [launcher.say(INSTALLER_STARTED, launcher.say(label), installers / name)
                   for name, label in ORDER.items()]
        details = [launcher.say("项目更新已完成。"), *started]
        self.assertIn("\n".join(details), launcher.wait_for_box(FINISHED))
        self.picture("finished")
        self.assertEqual(self.installation.runtime_log(), [])
        launcher.answer_box(FINISHED)
        self.wait_for_exits(launcher)
        backup = self.installation.data / "update" / "backup" / "demo_#"
        self.assertEqual(self.log_from(APPLY_STARTED), [
            APPLY_STARTED,
            f"[task apply_#] phase=apply elapsedMs=0 Project updated to 1.1.0 in # ms. "
            f"Backup: {backup}",
            *started, *details, "[task apply_#] phase=setup elapsedMs=0",
            *self.start_lines("en", "--reload-models")])

        wait_for(lambda: len(self.installers_run()) == 4, "the installers' starts")
        self.assertEqual(sorted(self.installers_run()),
                         sorted(f"{name} started, 0 arguments" for name in ORDER))
        self.check_project()
        # Their installers write these, once they have finished; the launcher never does.
        versions = self.installation.program_folder / "config" / "release_version.json"
        self.assertEqual(json.loads(versions.read_text()), VERSIONS)
        self.assertEqual(self.left_in("temp"), [])
        self.assertEqual(self.left_in("backup"), [])
        self.assertEqual(self.installation.setting("default_project_path"),
                         str(self.installation.demo))

        # Models are loaded anew by the first start alone.
        self.assertEqual(self.reloads(), 1)
        launcher.click(BUTTON_LAUNCH)
        self.wait_for_exits(launcher, 2)
        self.assertEqual(self.reloads(), 1)

    def check_project(self):
        """The package's files, the version in them, and the old logs."""
        folder = self.installation.demo.parent
        shipped = self.installation.program_folder / "examples" / "projects" / "demo"
        files, expected = self.files_of(folder), self.files_of(shipped)
        stamped = json.loads(files.pop("demo.yslib"))
        self.assertEqual(stamped["project"].pop("version"), "1.1.0")
        own = json.loads(expected.pop("demo.yslib"))
        own["project"].pop("version")
        self.assertEqual(stamped, own)
        self.assertEqual(files, {
            **expected, ".quorvane-installed-version": b"1.1.0\n", "models/新.json": b"{}",
            "logs/both.txt": b"old", "logs/new.txt": b"new", "logs/2026/old.txt": b"old"})

    def reloads(self):
        return self.installation.runtime_log().count("argument: --reload-models")

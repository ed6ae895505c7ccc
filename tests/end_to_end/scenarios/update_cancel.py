"""An update that is cancelled, or whose launcher is closed, in each of its phases."""
import json
import zipfile

from harness.held_worker import HeldWorker
from harness.launcher import BUTTON_LAUNCH, CANCEL_TASK
from harness.publisher import component
from harness.update_scenario import (APPLY_STARTED, PROMPT_ONLINE, PROMPT_STICK,
                                     UpdateScenario)
from harness.waiting import wait_for

CANCELLED = "已取消"
APPLY_CANCELLED = "更新任务已取消。"
SETUP_CANCELLED = "组件更新任务已取消。"
F8_REFUSED = "更新任务进行中。请先取消任务或等待完成，再进入修复模式（F8）。"
INSTALLER_STARTED = "%1 安装包已自动启动：%2（组件版本将在安装程序完成后写入本地配置）"
DOWNLOAD_FAILED = "%1 安装包下载失败（%2），将继续使用当前版本。"
PANEL_TITLE = "更新任务 [%1]：%2"
MIB = 1024 * 1024

# Enough that a phase is still under way when it is seen from outside.
MANY_FILES = {f"models/{number}.json": "{}" for number in range(3000)}
LAST_FILE = {"zz_last.txt": "last"}


class UpdateCancel(UpdateScenario):
    def test_in_the_download(self):
        server = self.serve_slowly("demo-1.1.0.zip")
        server.publish(self.project_offer(self.put_package(server.beside_manifest)))
        launcher = self.accept_update(PROMPT_ONLINE)
        wait_for(lambda: launcher.connections() == 1, "the download")
        task = self.task_of(launcher)
        launcher.press("F8")
        launcher.wait_for_text(F8_REFUSED)
        for tip, locale in (("切换到中文", "zh_CN"), ("Switch to English", "en")):
            launcher.click(tip)
            launcher.locale = locale
            launcher.wait_for_text(PANEL_TITLE, task, launcher.say("下载"))
            launcher.wait_for_text("下载项目更新包…")
            self.picture(locale)
        launcher.click(CANCEL_TASK)
        self.check_apply_cancelled(launcher)
        self.assertEqual(self.left_in("cache"), [])
        self.check_old_project_runs(launcher)

    def test_in_the_check_of_the_hash(self):
        package = self.stick_with({"models/large.bin": bytes(256 * MIB)}, zipfile.ZIP_STORED)
        launcher = self.accept_update(PROMPT_STICK)
        self.cancel_while(launcher, lambda: launcher.has_open(package), "the package being read")
        self.check_apply_cancelled(launcher)
        self.check_old_project_runs(launcher)

    def test_in_the_unpacking(self):
        self.stick_with({**MANY_FILES, **LAST_FILE})
        launcher = self.accept_update(PROMPT_STICK)
        self.cancel_while(launcher, self.staged("models/0.json"), "the package being unpacked",
                          not_yet=self.staged("zz_last.txt"))
        self.check_apply_cancelled(launcher)
        self.check_old_project_runs(launcher)

    def test_in_the_validation(self):
        self.stick_with({**self.many_scripts(), **LAST_FILE})
        launcher = self.accept_update(PROMPT_STICK)
        self.cancel_while(launcher, self.staged("zz_last.txt"), "the package unpacked",
                          not_yet=self.in_backup("demo.yslib"))
        self.check_apply_cancelled(launcher)
        self.check_old_project_runs(launcher)

    def test_in_the_swap_it_comes_too_late_and_is_told_all_the_same(self):
        self.add_to_project({**MANY_FILES, "logs/old.txt": "old"})
        self.stick_with({"models/new.json": "{}"})
        launcher = self.accept_update(PROMPT_STICK)
        self.cancel_while(launcher, self.in_backup("models"), "the project being replaced")
        self.check_apply_cancelled(launcher)
        self.check_new_project()
        self.run_again(launcher)

    def test_in_the_setup_after_the_project_was_replaced(self):
        server = self.serve_slowly("editor-1.1.0.exe")
        python, editor, own = (self.put_installer(server.beside_manifest, f"{name}-1.1.0.exe")
                               for name in ("python", "editor", "launcher"))
        editor.write_bytes(editor.read_bytes() + bytes(MIB))
        self.add_to_project({"logs/old.txt": "old"})
        package = self.put_package(server.beside_manifest, {"models/new.json": "{}"})
        server.publish(self.project_offer(
            package, pythonTools=component(python), editor=component(editor),
            launcher=component(own)))
        launcher = self.accept_update(PROMPT_ONLINE)
        wait_for(self.installers_run, "the first installer's start")
        wait_for(lambda: launcher.connections() == 1, "the second download")
        launcher.wait_for_text(PANEL_TITLE, self.task_of(launcher), launcher.say("安装组件"))
        launcher.wait_for_text("准备组件安装包…")
        self.picture("setup")
        launcher.click(CANCEL_TASK)

        self.assertIn(launcher.say(SETUP_CANCELLED), launcher.wait_for_box(CANCELLED))
        launcher.answer_box(CANCELLED)
        cache = self.installation.data / "update" / "cache"
        self.assertEqual(self.log_from(APPLY_STARTED)[2:5], [
            launcher.say(INSTALLER_STARTED, launcher.say("Python 工具"), cache / python.name),
            "[task apply_#] cancel requested by user",
            launcher.say(DOWNLOAD_FAILED, "Editor", "cancelled")])
        self.assertEqual(self.installers_run(), ["python-1.1.0.exe started, 0 arguments"])
        self.assertEqual(self.left_in("cache"), [package.name, python.name])
        self.assertIsNone(self.installation.setting("default_project_path"))
        self.check_new_project()
        self.run_again(launcher, "--reload-models")

    # The launcher goes away -----------------------------------------------------------------

    def test_the_window_closed_in_the_download(self):
        server = self.serve_slowly("demo-1.1.0.zip")
        server.publish(self.project_offer(self.put_package(server.beside_manifest)))
        launcher = self.accept_update(PROMPT_ONLINE)
        wait_for(lambda: launcher.connections() == 1, "the download")
        launcher.close()
        self.assertEqual(launcher.wait_for_end(), 0)
        self.check_old_project_runs_in_a_new_launcher()

    def test_the_window_closed_in_the_swap(self):
        self.add_to_project({**MANY_FILES, "logs/old.txt": "old"})
        self.stick_with({"models/new.json": "{}"})
        launcher = self.accept_update(PROMPT_STICK)
        with HeldWorker(launcher, self.in_backup("models"), "the project being replaced"):
            launcher.close()
            wait_for(lambda: not launcher.windows(), "the window closed")
        self.assertEqual(launcher.wait_for_end(), 0)
        self.check_new_project()

    def test_the_power_goes_in_the_swap(self):
        self.add_to_project(MANY_FILES)
        before = self.files_of(self.installation.demo.parent)
        self.stick_with({"models/new.json": "{}"})
        launcher = self.accept_update(PROMPT_STICK)
        with HeldWorker(launcher, self.in_backup("models"), "the project being replaced"):
            launcher.process.kill()
        launcher.wait_for_end()
        self.assertEqual(self.files_of(self.installation.demo.parent), before)
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_STICK)
        self.run_again(launcher)

    # What is prepared -------------------------------------------------------------------------

    def serve_slowly(self, name):
        """A server that takes minutes for this file and answers the rest at once."""
        return self.start_server(rules=f"location ~ /{name}$ {{ limit_rate 100; }}")

    def stick_with(self, more, compression=zipfile.ZIP_DEFLATED):
        stick = self.insert_stick()
        package = self.put_package(stick.folder, more, compression)
        stick.publish(self.project_offer(package))
        return package

    def many_scripts(self):
        """So many that checking them takes a while, in a project that may run."""
        shipped = self.installation.program_folder / "examples" / "projects" / "demo"
        project = json.loads((shipped / "demo.yslib").read_text())
        scripts = {f"scripts/more_{number}.ys": "".join(
            f"function more_{number}_{line}() {{\n    return {line}\n}}\n" for line in range(500))
            for number in range(200)}
        project["scripts"] += [{"id": name, "path": name, "role": "module"} for name in scripts]
        return {"demo.yslib": json.dumps(project, ensure_ascii=False), **scripts}

    def add_to_project(self, files):
        """The project as its people have it: the shipped one, with files of its own."""
        shipped = self.installation.program_folder / "examples" / "projects" / "demo"
        self.seed_project({**self.files_of(shipped), **files})

    # What is watched --------------------------------------------------------------------------

    def staged(self, name):
        return lambda: any(self.installation.data.glob(f"update/temp/apply_*/{name}"))

    def in_backup(self, name):
        return lambda: any(self.installation.data.glob(f"update/backup/demo_*/{name}"))

    def cancel_while(self, launcher, moment, what, not_yet=lambda: False):
        with HeldWorker(launcher, moment, what):
            self.assertFalse(not_yet(), f"too late for {what}")
            launcher.click(CANCEL_TASK)
            launcher.wait_for_text("正在取消更新任务…")

    def task_of(self, launcher):
        line = [line for line in self.installation.log() if line.endswith("started kind=apply")][-1]
        return line.split("]")[0].removeprefix("[task ")

    def check_apply_cancelled(self, launcher):
        text = launcher.say(APPLY_CANCELLED)
        self.assertIn(text, launcher.wait_for_box(CANCELLED))
        launcher.answer_box(CANCELLED)
        requested = "[task apply_#] cancel requested by user"
        log = [line for line in self.log() if line in (APPLY_STARTED, requested, text)]
        self.assertEqual(log, [APPLY_STARTED, requested, text])
        self.assertEqual(self.left_in("temp"), [])
        self.assertEqual(self.left_in("backup"), [])
        self.assertIsNone(self.installation.setting("default_project_path"))

    def check_old_project_runs(self, launcher):
        shipped = self.installation.program_folder / "examples" / "projects" / "demo"
        self.assertEqual(self.files_of(self.installation.demo.parent), self.files_of(shipped))
        self.run_again(launcher)

    def check_old_project_runs_in_a_new_launcher(self):
        self.assertEqual(self.left_in("temp"), [])
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        self.check_old_project_runs(launcher)

    def check_new_project(self):
        folder = self.installation.demo.parent
        files = self.files_of(folder)
        self.assertEqual(files["models/new.json"], b"{}")
        self.assertEqual(files["logs/old.txt"], b"old")
        self.assertNotIn("models/0.json", files)
        self.assertEqual(files[".quorvane-installed-version"], b"1.1.0\n")
        self.assertEqual(json.loads(files["demo.yslib"])["project"]["version"], "1.1.0")

    def run_again(self, launcher, *more):
        before = len(self.starts())
        launcher.click(BUTTON_LAUNCH)
        wait_for(lambda: self.starts()[before:] == self.launch_lines("en", *more), "a start",
                 told=launcher.situation)

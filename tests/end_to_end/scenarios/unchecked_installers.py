"""Installers that are offered without a hash: nothing vouches for them, and they are started."""
from harness.publisher import component, sha256
from harness.update_scenario import MANIFEST_REQUEST, PROMPT_ONLINE, PROMPT_STICK, UpdateScenario
from harness.waiting import wait_for

FINISHED = "更新完成"
STARTED = "%1 安装包已自动启动：%2（组件版本将在安装程序完成后写入本地配置）"
WRONG_HASH = "%1 安装包校验失败（%2），将继续使用当前版本。"
SETUP = "[task setup_#] started kind=setup"


class UncheckedInstallers(UpdateScenario):
    def test_on_a_stick_one_that_was_changed_is_started(self):
        stick = self.insert_stick()
        runtime, editor, own = (self.put_installer(stick.folder, f"{name}-1.1.0.exe")
                                for name in ("runtime", "editor", "launcher"))
        stick.publish(self.publisher.sign(runtime=without_hash(runtime), editor=component(editor),
                                          launcher={**without_hash(own), "setupSha256": ""}))
        told = sha256(editor)
        for installer in (runtime, editor):
            self.change(installer)
        launcher = self.accept_update(PROMPT_STICK)
        started = [launcher.say(STARTED, "Runtime", runtime), launcher.say(STARTED, "Launcher", own)]
        refused = launcher.say(WRONG_HASH, "Editor", f"SHA256 mismatch for {editor} "
                               f"(expected {told}, got {sha256(editor)})")
        self.check_told(launcher, [started[0], refused, started[1]], [*started, refused])
        self.check_run("launcher-1.1.0.exe started, 0 arguments",
                       "runtime-1.1.0.exe started, 0 arguments", "runtime-1.1.0.exe was changed")
        self.assertEqual(self.left_in("cache"), [])

    def test_from_the_server_one_that_lies_in_the_cache_is_started_in_its_place(self):
        server = self.start_server()
        runtime, editor = (self.put_installer(server.beside_manifest, f"{name}-1.1.0.exe")
                           for name in ("runtime", "editor"))
        server.publish(self.publisher.sign(runtime=without_hash(runtime),
                                           editor=without_hash(editor)))
        cache = self.installation.data / "update" / "cache"
        cached = self.put_installer(cache, editor.name)
        self.change(cached)
        kept = cached.read_bytes()
        launcher = self.accept_update(PROMPT_ONLINE)
        started = [launcher.say(STARTED, "Runtime", cache / runtime.name),
                   launcher.say(STARTED, "Editor", cached)]
        self.check_told(launcher, started, started)
        self.check_run("editor-1.1.0.exe started, 0 arguments", "editor-1.1.0.exe was changed",
                       "runtime-1.1.0.exe started, 0 arguments")
        self.assertEqual(self.left_in("cache"), [editor.name, runtime.name])
        self.assertEqual(cached.read_bytes(), kept)
        self.assertEqual((cache / runtime.name).read_bytes(), runtime.read_bytes())
        address = MANIFEST_REQUEST.replace("manifest.json", runtime.name)
        self.assertEqual(server.requests(), [f"{MANIFEST_REQUEST} 200", f"{address} 200"])

    def change(self, installer):
        record = self.installation.root / "installers.log"
        installer.write_text(installer.read_text() +
                             f'echo "{installer.name} was changed" >>"{record}"\n')

    def check_told(self, launcher, lines, told):
        """These lines are logged one by one; then all is told, and the project is started."""
        details = [launcher.say("已跳过项目更新。"), *told]
        self.assertIn("\n".join(details), launcher.wait_for_box(FINISHED))
        self.picture("finished")
        launcher.answer_box(FINISHED)
        self.wait_for_exits(launcher)
        self.assertEqual(self.log_from(SETUP), [
            SETUP, *lines, *details, "[task setup_#] phase=setup elapsedMs=0",
            *self.start_lines()])

    def check_run(self, *lines):
        """What the installers wrote down. They run side by side."""
        wait_for(lambda: len(self.installers_run()) >= len(lines), "the installers' ends")
        self.assertEqual(sorted(self.installers_run()), sorted(lines))


def without_hash(installer):
    return {"setupUrl": installer.name}

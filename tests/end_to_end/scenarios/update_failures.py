"""Updates that cannot be applied: why is told, and the project runs on as it was."""
import os
import subprocess

from harness.launcher import BUTTON_LAUNCH
from harness.network import MANIFEST_URL
from harness.publisher import Publisher, component, sha256, write_package
from harness.update_scenario import (APPLY_STARTED, PROMPT_ONLINE, PROMPT_STICK, UpdateScenario,
                                     without_chance)
from harness.waiting import wait_for

NETWORK_ERROR, WRONG_HASH = "网络错误", "校验失败"
WRONG_SIGNATURE, FAILED = "验签失败", "更新失败"
FINISHED, NOTHING_CHOSEN = "更新完成", "未选择更新内容"
MIB = 1024 * 1024


class UpdateFailures(UpdateScenario):
    def test_a_manifest_that_is_trusted_no_more_at_the_moment_of_use(self):
        self.stick_with_package()
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_STICK)
        folder = self.installation.root / "other publisher"
        folder.mkdir()
        key = self.installation.program_folder / "config" / "update.pub"
        key.write_bytes(Publisher.with_new_key(folder).public)
        self.accept(launcher)
        text, = self.read_box(launcher, WRONG_SIGNATURE,
                              "[verify] Apply pre-check signature failed: RSA signature "
                              "verification failed (")
        self.assertIn(f", key={key}, canonical_sha256=", text)
        self.check_nothing_changed(launcher, WRONG_SIGNATURE, text)

    def test_a_package_on_a_stick_that_was_changed(self):
        _, package = self.stick_with_package()
        told = sha256(package)
        package.write_bytes(package.read_bytes() + b"\0")
        launcher = self.accept_update(PROMPT_STICK)
        self.check_failure(launcher, WRONG_HASH, f"[hash] Update zip hash failed: SHA256 mismatch "
                           f"for {package} (expected {told}, got {sha256(package)})")

    def test_a_package_on_the_server_that_was_changed(self):
        _, package = self.server_with_package()
        told, published = sha256(package), package.read_bytes()
        package.write_bytes(published[:-1])
        launcher = self.accept_update(PROMPT_ONLINE)
        cached = self.installation.data / "update" / "cache" / package.name
        self.check_failure(launcher, WRONG_HASH, f"[hash] Update zip hash failed: SHA256 mismatch "
                           f"for {cached} (expected {told}, got {sha256(package)})")
        # What was fetched stays, and is fetched anew the next time.
        self.assertEqual(self.left_in("cache"), [package.name])
        package.write_bytes(published)
        launcher.close()
        self.assertEqual(launcher.wait_for_end(), 0)
        launcher = self.accept_update(PROMPT_ONLINE)
        launcher.wait_for_box(FINISHED)

    def test_a_package_that_is_not_on_the_server(self):
        _, package = self.server_with_package()
        package.unlink()
        launcher = self.accept_update(PROMPT_ONLINE)
        address = MANIFEST_URL.replace("manifest.json", package.name)
        self.check_failure(launcher, NETWORK_ERROR, "[network] Unable to resolve update zip: Error "
                           f"transferring {address} - server replied: Not Found (HTTP 404) "
                           f"URL: {address}")
        self.assertEqual(self.left_in("cache"), [])

    def test_a_stick_pulled_out_over_the_banner(self):
        stick, _ = self.stick_with_package()
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_STICK)
        stick.pull_out()
        self.accept(launcher)  # of a dialog in which nothing is left to choose
        self.assertIn(launcher.say("请至少勾选一项更新内容。"),
                      launcher.wait_for_box(NOTHING_CHOSEN))
        launcher.answer_box(NOTHING_CHOSEN)
        launcher.click(BUTTON_LAUNCH)
        self.wait_for_exits(launcher)
        self.assertEqual(self.starts(), self.launch_lines())

    def test_an_entry_that_leads_out_of_the_folder(self):
        stick = self.insert_stick()
        for name in ("../outside.txt", "models/../../../outside.txt", "/outside.txt",
                     "C:/outside.txt"):
            with self.subTest(name):
                package = self.put_package(stick.folder, {name: "outside"})
                stick.publish(self.project_offer(package))
                launcher = self.accept_update(PROMPT_STICK)
                text = f"Extract failed: unsafe zip entry: {name}"
                self.assertIn(text, launcher.wait_for_box(FAILED))
                self.assertEqual(list(self.installation.root.rglob("outside.txt")), [])
                self.check_nothing_changed(launcher, FAILED, text)
                launcher.close()
                self.assertEqual(launcher.wait_for_end(), 0)

    def test_a_project_that_cannot_run(self):
        broken = '{"schemaVersion": 1, "project": {"name": "demo"}, "scripts": 7}'
        self.stick_with_package({"demo.yslib": broken})
        launcher = self.accept_update(PROMPT_STICK)
        text, = self.read_box(launcher, FAILED, "Apply validator failed:\n")
        self.check_nothing_changed(launcher, FAILED, text)

    def test_a_package_without_a_project(self):
        stick = self.insert_stick()
        package = write_package(stick.folder / "demo-1.1.0.zip", {"readme.txt": "no project"})
        stick.publish(self.project_offer(package))
        launcher = self.accept_update(PROMPT_STICK)
        self.check_failure(launcher, FAILED, "No yslib found in extracted package.")

    def test_a_package_that_ends_too_early(self):
        stick = self.insert_stick()
        package = self.put_package(stick.folder, {"models/large.bin": os.urandom(MIB)})
        os.truncate(package, package.stat().st_size // 2)
        stick.publish(self.project_offer(package))
        launcher = self.accept_update(PROMPT_STICK)
        text, = self.read_box(launcher, FAILED, "Extract failed: ")
        self.check_nothing_changed(launcher, FAILED, text)

    def test_a_package_that_fills_the_disk(self):
        updates = self.installation.data / "update"
        updates.mkdir(parents=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64m", "small", str(updates)],
                       check=True)
        self.addCleanup(subprocess.run, ["umount", "--lazy", str(updates)], check=True)
        _, package = self.stick_with_package({"models/bomb.bin": bytes(1024 * MIB)})
        self.assertLess(package.stat().st_size, 2 * MIB)
        launcher = self.accept_update(PROMPT_STICK)
        text, = self.read_box(launcher, FAILED, "Extract failed: ")
        self.assertIn("No space left on device", text)
        self.check_nothing_changed(launcher, FAILED, text)

    def test_installers_that_cannot_be_started_are_told_and_hold_nothing_up(self):
        stick = self.insert_stick()
        runtime = self.put_installer(stick.folder, "runtime-1.1.0.exe")
        editor = self.put_installer(stick.folder, "editor-1.1.0.exe")
        own = self.put_installer(stick.folder, "launcher-1.1.0.exe")
        runtime.write_text("#!/nowhere/at/all\n")
        stick.publish(self.publisher.sign(runtime=component(runtime), editor=component(editor),
                                          launcher=component(own)))
        told = sha256(editor)
        editor.write_text(editor.read_text() + "echo changed\n")
        launcher = self.accept_update(PROMPT_STICK)
        mismatch = f"SHA256 mismatch for {editor} (expected {told}, got {sha256(editor)})"
        details = "\n".join([
            launcher.say("已跳过项目更新。"),
            launcher.say("%1 安装包已自动启动：%2（组件版本将在安装程序完成后写入本地配置）",
                         "Launcher", own),
            launcher.say("%1 安装包启动失败：%2，请稍后手动执行。", "Runtime", runtime),
            launcher.say("%1 安装包校验失败（%2），将继续使用当前版本。", "Editor", mismatch)])
        self.assertIn(details, launcher.wait_for_box(FINISHED))
        launcher.answer_box(FINISHED)
        self.wait_for_exits(launcher)
        self.assertEqual(self.installers_run(), ["launcher-1.1.0.exe started, 0 arguments"])

    def test_a_stale_installer_in_the_cache_is_fetched_anew_and_a_good_one_is_not(self):
        server = self.start_server()
        runtime = self.put_installer(server.beside_manifest, "runtime-1.1.0.exe")
        editor = self.put_installer(server.beside_manifest, "editor-1.1.0.exe")
        server.publish(self.publisher.sign(runtime=component(runtime), editor=component(editor)))
        cache = self.installation.data / "update" / "cache"
        cache.mkdir(parents=True)
        (cache / editor.name).write_bytes(editor.read_bytes())
        (cache / runtime.name).write_text("an older release\n")
        launcher = self.accept_update(PROMPT_ONLINE)
        launcher.wait_for_box(FINISHED)
        launcher.answer_box(FINISHED)
        self.wait_for_exits(launcher)
        launcher.wait_for_log(launcher.say(
            "%1 安装包缓存命中但校验不一致，已自动重下并通过校验：%2", "Runtime",
            cache / runtime.name))
        self.assertEqual([line.split("/")[-1] for line in server.requests()],
                         ["manifest.json 200", "runtime-1.1.0.exe 200"])

    def stick_with_package(self, more=None):
        stick = self.insert_stick()
        package = self.put_package(stick.folder, more)
        stick.publish(self.project_offer(package))
        return stick, package

    def server_with_package(self):
        server = self.start_server()
        package = self.put_package(server.beside_manifest)
        server.publish(self.project_offer(package))
        return server, package

    def read_box(self, launcher, title, start):
        """The text in the box of a failure, which starts like this."""
        return [text for text in launcher.wait_for_box(title) if text.startswith(start)]

    def check_failure(self, launcher, title, text):
        self.assertIn(text, launcher.wait_for_box(title))
        self.check_nothing_changed(launcher, title, text)

    def check_nothing_changed(self, launcher, title, text):
        """The text is logged, and the project is as it was shipped and starts."""
        self.picture("box")
        launcher.answer_box(title)
        lines = text.split("\n")
        self.assertEqual(self.log_from(APPLY_STARTED)[:1 + len(lines)],
                         [APPLY_STARTED, *map(without_chance, lines)])
        shipped = self.installation.program_folder / "examples" / "projects" / "demo"
        self.assertEqual(self.files_of(self.installation.demo.parent), self.files_of(shipped))
        self.assertEqual(self.left_in("temp"), [])
        self.assertEqual(self.left_in("backup"), [])
        self.assertIsNone(self.installation.setting("default_project_path"))
        before = len(self.starts())
        launcher.click(BUTTON_LAUNCH)
        wait_for(lambda: self.starts()[before:] == self.launch_lines(), "a start",
                 told=launcher.situation)

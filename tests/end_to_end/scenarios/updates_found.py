"""What a start makes of the updates that it finds, on a stick and on the server."""
from harness.launcher import BUTTON_LAUNCH
from harness.network import MANIFEST_URL
from harness.publisher import project, sha256
from harness.screen_reader import CHECKED, ENABLED
from harness.update_scenario import (BANNER_LATER, BANNER_SKIP, BANNER_SKIP_AND_LAUNCH,
                                     BANNER_UPDATE, DIALOG, FOUND, MANIFEST_REQUEST, NONE,
                                     PROMPT_ONLINE, PROMPT_STICK, STARTED, UpdateScenario)

DIALOG_BOXES = {"project": "更新项目（USER/projects）",
                "pythonTools": "更新 Python 工具 (Black/Ruff)",
                "runtime": "更新 Runtime 组件", "launcher": "更新 Launcher 组件",
                "editor": "更新 Editor 组件"}


class UpdatesFound(UpdateScenario):
    def test_a_stick_wins_and_nothing_is_asked_of_the_server(self):
        server = self.start_server(self.runtime_offer("9.0.0"))
        stick = self.insert_stick()
        self.put_installer(stick.folder)
        stick.publish(self.runtime_offer("2.0.0"))
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_STICK)
        self.picture("banner")

        summary = self.stick_summary(launcher, stick, "Runtime -> 2.0.0")
        self.assertIn(summary, launcher.texts())
        self.assertTrue(launcher.control(launcher.say(BANNER_UPDATE)))
        self.assertTrue(launcher.control(launcher.say(BANNER_SKIP_AND_LAUNCH)))
        self.assertFalse(launcher.control(launcher.say(BANNER_LATER)))
        self.assertEqual(self.log(), [
            STARTED,
            launcher.say("已读取 U 盘 manifest：%1（file_sha256=%2）", stick.manifest,
                         sha256(stick.manifest)),
            *summary.splitlines(), FOUND])
        self.assertEqual(server.requests(), [])

    def test_the_server_is_asked_once_when_there_is_no_stick(self):
        server = self.start_server(self.runtime_offer("2.0.0"))
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        self.picture("banner")

        summary = self.online_summary(launcher, "Runtime -> 2.0.0")
        self.assertIn(summary, launcher.texts())
        for button in (BANNER_UPDATE, BANNER_LATER, BANNER_SKIP):
            self.assertTrue(launcher.control(launcher.say(button)), button)
        self.assertEqual(self.log(), [
            STARTED, launcher.say("已读取在线 manifest：%1", MANIFEST_URL),
            *summary.splitlines(), FOUND])
        self.assertEqual(server.requests(), [f"{MANIFEST_REQUEST} 200"])

    def test_with_neither_the_current_version_is_started(self):
        launcher = self.start_launcher()
        self.wait_for_exits(launcher)
        error = f"Connection refused URL: {MANIFEST_URL}"
        self.assertEqual(self.log(), [STARTED, self.not_available(launcher, error), NONE,
                                      *self.launch_lines()])

    def test_a_stick_that_cannot_be_read_leads_to_the_server(self):
        server = self.start_server(self.runtime_offer("2.0.0"))
        stick = self.insert_stick("")
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        self.assertEqual(self.log()[:3], [
            STARTED,
            launcher.say("U 盘 manifest 无法读取，尝试在线更新：%1 (%2)", stick.manifest, ""),
            launcher.say("已读取在线 manifest：%1", MANIFEST_URL)])
        self.assertEqual(server.requests(), [f"{MANIFEST_REQUEST} 200"])

    def test_a_manifest_that_offers_nothing_is_passed_by(self):
        server = self.start_server(self.publisher.sign())
        launcher = self.start_launcher()
        self.wait_for_exits(launcher)
        self.assertEqual(self.log(), [
            STARTED, launcher.say("已读取在线 manifest：%1", MANIFEST_URL), NONE,
            *self.launch_lines()])
        self.assertEqual(server.requests(), [f"{MANIFEST_REQUEST} 200"])

    def test_versions_that_are_installed_already_are_passed_by(self):
        server = self.start_server()
        package = self.put_package(server.beside_manifest)
        server.publish(self.publisher.sign(
            runtime={"version": "1.0.0", "setupUrl": "runtime.exe"},
            launcher={"setupUrl": "launcher-0.9.9.exe"},
            projects=[project("demo", "1.0.0", package)]))
        launcher = self.start_launcher()
        self.wait_for_exits(launcher)
        self.assertEqual(self.log(), [
            STARTED, launcher.say("已读取在线 manifest：%1", MANIFEST_URL),
            self.project_check("1.0.0", 0), NONE, *self.launch_lines()])
        self.assertEqual(server.requests(), [f"{MANIFEST_REQUEST} 200"])

    def test_the_dialog_ticks_what_is_newer_and_tells_why_the_rest_is_not(self):
        server = self.start_server()
        package = self.put_package(server.beside_manifest)
        server.publish(self.publisher.sign(
            runtime={"version": "2.0.0", "setupUrl": "runtime.exe"},
            launcher={"setupUrl": "launcher-1.0.0.exe"},
            editor={"version": "3.0", "setupUrl": "editor.exe"},
            pythonTools={"setupUrl": "python-tools_1.1.0.exe"},
            projects=[project("demo", "1.1.0", package)]))
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        items = f"Project -> 1.1.0, Runtime -> 2.0.0, {launcher.say('Python 工具')} -> 1.1.0"
        self.assertIn(self.online_summary(launcher, items), launcher.texts())

        launcher.click(BANNER_UPDATE)
        launcher.wait_for_box(DIALOG)
        self.picture("dialog")
        names = {key: launcher.say(text) for key, text in DIALOG_BOXES.items()}
        for key in ("launcher", "editor"):
            names[key] += launcher.say("（不可用）")
        boxes = {key: launcher.control(name) for key, name in names.items()}
        ticked = {key: (box.has(CHECKED), box.has(ENABLED)) for key, box in boxes.items()}
        yes, no = (True, True), (False, False)
        self.assertEqual(ticked, {"project": yes, "pythonTools": yes, "runtime": yes,
                                  "launcher": no, "editor": no})

        self.desktop.key("Escape")
        launcher.wait_until_closed(DIALOG)
        launcher.wait_for_text(PROMPT_ONLINE)
        self.assertEqual(server.requests(), [f"{MANIFEST_REQUEST} 200"])

    def test_an_update_on_a_stick_is_skipped_and_the_target_started(self):
        stick = self.insert_stick()
        self.put_installer(stick.folder)
        stick.publish(self.runtime_offer("2.0.0"))
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_STICK)
        launcher.click(BANNER_SKIP_AND_LAUNCH)
        self.wait_for_exits(launcher)
        self.assertEqual(self.starts(), self.start_lines())
        self.assertNotIn("argument: --reload-models", self.installation.runtime_log())

        # Nothing is checked or asked again in this run.
        launcher.click(BUTTON_LAUNCH)
        self.wait_for_exits(launcher, 2)
        self.assertEqual(self.starts(), [*self.start_lines(), *self.launch_lines()])
        self.assertEqual(self.log().count(STARTED), 1)

    def test_a_banner_does_not_stop_the_start_button(self):
        self.start_server(self.runtime_offer("2.0.0"))
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        launcher.click(BUTTON_LAUNCH)
        self.wait_for_exits(launcher)
        self.assertEqual(self.starts(), self.launch_lines())

    def test_what_the_line_lacks_is_told_and_stops_nothing(self):
        self.start_server(self.publisher.sign(
            runtime={"version": "2.0.0", "minVersion": "1.5.0", "setupUrl": "runtime.exe"},
            launcher={"version": "2.0.0", "setupUrl": "launcher.exe"},
            plugins=[{"id": "camera", "minVersion": "1.0", "path": "bin/plugins/camera.dll"},
                     {"id": "core", "path": "plugins/CoreOperators.dll"}]))
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        summary = self.online_summary(launcher, "Launcher -> 2.0.0").splitlines()
        summary[3:3] = [
            launcher.say("Runtime 版本 %1 低于 manifest 要求 %2（仅警告，不拦截）。", "1.0.0", "1.5.0"),
            launcher.say("插件 %1 缺失：%2（仅警告，不拦截）。", "camera",
                         self.installation.program_folder / "plugins" / "camera.dll")]
        self.assertIn("\n".join(summary), launcher.texts())
        launcher.click(BUTTON_LAUNCH)
        self.wait_for_exits(launcher)

    def test_the_banner_speaks_the_language_in_force(self):
        self.start_server(self.runtime_offer("2.0.0"))
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        for tip, locale in (("切换到中文", "zh_CN"), ("Switch to English", "en")):
            launcher.click(tip)
            launcher.locale = locale
            launcher.wait_for_text(PROMPT_ONLINE)
            self.picture(locale)
            self.assertIn(self.online_summary(launcher, "Runtime -> 2.0.0"), launcher.texts())
            for button in (BANNER_UPDATE, BANNER_LATER, BANNER_SKIP):
                self.assertTrue(launcher.control(launcher.say(button)), button)

    def test_the_window_closed_over_a_banner_starts_nothing(self):
        self.start_server(self.runtime_offer("2.0.0"))
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        launcher.close()
        self.assertEqual(launcher.wait_for_end(), 0)
        self.assertEqual(self.installation.runtime_log(), [])

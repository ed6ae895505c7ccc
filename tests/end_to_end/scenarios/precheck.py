"""A project that cannot run is refused before the runtime is started."""
from harness.scenario import Scenario

REFUSED = "预检失败"
FINDINGS = "项目预检失败：\n%1\n日志：%2"


class Precheck(Scenario):
    def test_a_broken_project_then_a_mended_one(self):
        self.seed_demo()
        script = self.installation.demo.parent / "scripts" / "limits.ys"
        whole = script.read_bytes()
        script.unlink()
        launcher = self.start_launcher()
        text = self.check_refused(launcher, (
            "[Error] scripts[3].path: 引用的文件不存在：scripts/limits.ys"))
        self.assertIn(text.splitlines()[1], self.installation.log())
        self.picture("repair")

        script.write_bytes(whole)
        launcher.click("立即启动")
        launcher.wait_until_logged("Target exited with code 0")

    def test_scripts_that_import_each_other(self):
        self.seed_demo()
        script = self.installation.demo.parent / "scripts" / "limits.ys"
        script.write_text('import "main.ys";\n' + script.read_text(encoding="utf-8"),
                          encoding="utf-8")
        launcher = self.start_launcher()
        self.check_refused(launcher, "[Error] scripts: 检测到 import 循环依赖")

    def test_a_missing_core_plugin_can_be_passed_over_by_hand(self):
        plugin = self.installation.program_folder / "plugins" / "CoreOperators.dll"
        plugin.unlink()
        launcher = self.start_launcher()
        self.check_refused(launcher, f"Core plugin missing: {plugin}")
        launcher.click("跳过核心插件预检（有风险）")
        launcher.click("立即启动")
        launcher.wait_until_logged("Target exited with code 0")

    def test_a_typed_path_that_leads_nowhere(self):
        launcher = self.start_launcher()
        launcher.enter_repair_mode()
        launcher.tab_to(launcher.path_field())
        launcher.press("ctrl+a")
        launcher.type("/nowhere/at/all.yslib")
        launcher.click("立即启动")
        text = f"Project file not found: /nowhere/at/all.yslib\nLog: {self.installation.log_file}"
        self.assertIn(text, launcher.wait_for_box(REFUSED))
        launcher.answer_box(REFUSED)
        self.assertEqual(self.installation.runtime_log(), [])

    def seed_demo(self):
        """What the first start does."""
        launcher = self.start_launcher()
        launcher.wait_for_countdown()
        launcher.press("Escape")
        self.assertEqual(launcher.wait_for_end(), 0)

    def check_refused(self, launcher, findings):
        """Findings are the same in every language."""
        text = launcher.say(FINDINGS, findings, self.installation.log_file)
        self.assertIn(text, launcher.wait_for_box(REFUSED))
        launcher.answer_box(REFUSED)
        self.assertEqual(self.installation.runtime_log(), [])
        return text

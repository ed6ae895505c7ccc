"""An update made with quorvanectl alone, key included, is one that the launcher takes."""
import json
import shutil
import subprocess

from harness.publisher import write_installer
from harness.update_scenario import APPLY_STARTED, PROMPT_ONLINE, PROMPT_STICK, UpdateScenario
from harness.waiting import wait_for

FINISHED = "更新完成"
INSTALLER = "runtime-setup-1.3.0.exe"


class PublishersRoad(UpdateScenario):
    def setUp(self):
        super().setUp()
        self.desk = self.installation.root / "desk"
        self.desk.mkdir()
        self.site = self.desk / "site"
        self.shipped = self.installation.program_folder / "examples" / "projects" / "demo"
        self.seed_project({**self.files_of(self.shipped), "scripts/gone.ys": "// replaced\n",
                           "logs/kept.txt": "of this line PC"})

    def test_laid_on_a_stick(self):
        self.make_update()
        self.sign()
        stick = self.insert_stick()
        stick.folder.rmdir()
        told = self.tool("update", "stick", "site", stick.place, "--key", "keys/update.pub")
        self.assertEqual(told, f"packages/{INSTALLER}\npackages/demo-1.1.0.zip\n{stick.manifest}\n")
        self.check_taken(self.accept_update(PROMPT_STICK))

    def test_put_on_a_server(self):
        self.make_update()
        self.sign()
        server = self.start_server()
        shutil.copytree(self.site, server.beside_manifest, dirs_exist_ok=True)
        self.check_taken(self.accept_update(PROMPT_ONLINE))

    def test_signed_on_another_machine(self):
        self.make_update()
        self.tool("update", "canonical", "site/manifest.json", "--out", "canonical")
        subprocess.run(["openssl", "dgst", "-sha256", "-sign", "keys/private.pem",
                        "-out", "signature", "canonical"], cwd=self.desk, check=True)
        self.tool("update", "attach", "site/manifest.json", "signature", "--key",
                  "keys/update.pub", "--out", "site/manifest.json", "--force")
        stick = self.insert_stick()
        self.tool("update", "stick", "site", stick.place)
        self.check_taken(self.accept_update(PROMPT_STICK))

    def tool(self, *arguments):
        """What the command tells on standard output."""
        program = self.installation.program_folder / "quorvanectl"
        done = subprocess.run([program, *map(str, arguments)], cwd=self.desk, check=False,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertNotIn("no mounted volume", done.stderr)
        return done.stdout

    def make_update(self):
        """A key that the installation trusts, a changed demo, an installer, and their manifest."""
        self.tool("keys", "new", "keys", "--no-encrypt")
        config = self.installation.program_folder / "config"
        shutil.copy(self.desk / "keys" / "update.pub", config / "update.pub")
        shutil.copytree(self.shipped, self.desk / "demo")
        (self.desk / "demo" / "models" / "新.json").write_text("{}")
        (self.desk / "demo" / "logs").mkdir()
        (self.desk / "demo" / "logs" / "of-the-desk.txt").write_text("stays at home")
        self.tool("update", "pack", "demo", "--version", "1.1.0", "--out", "site/packages")
        write_installer(self.site / "packages" / INSTALLER,
                        self.installation.root / "installers.log")
        self.tool("update", "manifest", "--out", "site/manifest.json",
                  "site/packages/demo-1.1.0.zip", "--runtime", f"site/packages/{INSTALLER}")
        self.assertEqual(self.tool("update", "lint", "site/manifest.json"),
                         "site/manifest.json: clean\n")

    def sign(self):
        self.tool("update", "sign", "site/manifest.json", "--key", "keys/private.pem",
                  "--out", "site/manifest.json", "--force")
        verified = self.tool("update", "verify", "site/manifest.json", "--key", "keys/update.pub",
                             "--format", "json")
        self.assertTrue(json.loads(verified)["ok"])

    def check_taken(self, launcher):
        box = "\n".join(launcher.wait_for_box(FINISHED))
        self.assertIn(launcher.say("项目更新已完成。"), box)
        self.picture("finished")
        launcher.answer_box(FINISHED)
        self.wait_for_exits(launcher)
        self.assertIn("Project updated to 1.1.0", self.log_from(APPLY_STARTED)[1])
        wait_for(self.installers_run, "the installer's start")
        self.assertEqual(self.installers_run(), [f"{INSTALLER} started, 0 arguments"])
        files = self.files_of(self.installation.demo.parent)
        self.assertEqual(json.loads(files.pop("demo.yslib"))["project"]["version"], "1.1.0")
        expected = self.files_of(self.shipped)
        expected.pop("demo.yslib")
        self.assertEqual(files, {**expected, "models/新.json": b"{}",
                                 ".quorvane-installed-version": b"1.1.0\n",
                                 "logs/kept.txt": b"of this line PC"})

"""The base of the scenarios about updates: a publisher that is trusted, a network, a stick."""
import json
import re
import zipfile

from harness import network
from harness.installation import STAGE
from harness.odd_server import OddServer
from harness.publisher import Publisher, project, write_installer, write_package
from harness.scenario import Scenario
from harness.stick import Stick
from harness.web_server import WebServer

VERSIONS = {"runtimePackageVersion": "1.0.0", "launcherPackageVersion": "1.0.0",
            "editorPackageVersion": "1.0.0", "pythonToolsPackageVersion": "1.0.0"}
# What differs from run to run: times, ids of tasks, numbers of processes, nonces.
CHANCE = re.compile(r"\d{8}_\d{6}|"
                    r"(?<=check_)[0-9a-f]{8}|(?<=apply_)[0-9a-f]{8}|(?<=setup_)[0-9a-f]{8}|"
                    r"(?<=--parent-pid=)\d+|(?<=--nonce=)[0-9a-f]{32}|"
                    r"(?<= in )\d+(?= ms\.)")

BANNER_UPDATE = "立即更新"
BANNER_LATER = "稍后提醒"
BANNER_SKIP = "跳过此版本"
BANNER_SKIP_AND_LAUNCH = "跳过并启动"
DIALOG = "选择更新内容"
PROMPT_STICK = "检测到离线更新包。请选择是否更新，或继续启动。"
PROMPT_ONLINE = "发现在线更新。请选择是否更新，或继续启动。"

MANIFEST_REQUEST = f"GET {network.UPDATE_HOST}{network.MANIFEST_PATH}"
STARTED = "[task check_#] started kind=check"
FOUND = "[task check_#] phase=check elapsedMs=0 found"
CANCEL_REQUESTED = "[task check_#] cancel requested by user"
NONE = "[task check_#] phase=check elapsedMs=0 none"

APPLY_STARTED = "[task apply_#] started kind=apply"


def without_chance(text):
    return CHANCE.sub("#", text)


class UpdateScenario(Scenario):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.authority = network.Authority("trusted")
        network.lead_here(network.UPDATE_HOST)
        network.trust_only(cls.authority)
        cls.publisher = Publisher(STAGE / "publisher.pem")

    def setUp(self):
        super().setUp()
        config = self.installation.program_folder / "config"
        (config / "update.pub").write_bytes(self.publisher.public)
        (config / "release_version.json").write_text(json.dumps(VERSIONS))

    def insert_stick(self, manifest=None):
        stick = Stick(self.installation.root / "stick")
        self.addCleanup(stick.pull_out)
        if manifest is not None:
            stick.publish(manifest)
        return stick

    def start_server(self, manifest=None, certificate=None, rules=""):
        folder = self.installation.root / "server"
        folder.mkdir()
        trusted = self.authority.certificate_for(network.UPDATE_HOST)
        server = WebServer(folder, certificate or trusted, rules)
        self.addCleanup(server.close)
        if manifest is not None:
            server.publish(manifest)
        return server

    def start_odd_server(self, answer):
        server = OddServer(self.authority.certificate_for(network.UPDATE_HOST), answer)
        self.addCleanup(server.close)
        return server

    def log(self):
        """The launch log without what is left to chance in it."""
        return [without_chance(line) for line in self.installation.log()]

    def launch_lines(self, locale="en", *more):
        """What the log holds from the check of the project to the end of the runtime."""
        demo = self.installation.demo
        return [f"Precheck passed for {demo}", *self.start_lines(locale, *more)]

    def start_lines(self, locale="en", *more):
        arguments = " ".join(["--parent-pid=#", "--nonce=#",
                              f"--project={self.installation.demo}", f"--locale={locale}", *more])
        return [f"Launching {self.installation.runtime} {arguments}",
                f"Target exited with code 0. Log: {self.installation.log_file}"]

    def log_from(self, start):
        """What was logged from the last such line on, but for an offer that is weighed again."""
        log = [line for line in self.log() if not line.startswith("Project version check: ")]
        return log[len(log) - 1 - log[::-1].index(start):]

    def starts(self):
        """Of the log, what tells of starts: a held offer is weighed and told anew in between."""
        return [line for line in self.log() if line.startswith(("Precheck", "Launching", "Target"))]

    def wait_for_exits(self, launcher, times=1):
        launcher.wait_until_logged("Target exited with code 0", times)

    # Offers ----------------------------------------------------------------------------------

    def runtime_offer(self, version):
        return self.publisher.sign(runtime={"version": version, "setupUrl": "runtime.exe"})

    def put_installer(self, folder, name="runtime.exe", before_the_end=""):
        return write_installer(folder / name, self.installation.root / "installers.log",
                               before_the_end)

    def put_package(self, folder, more=None, compression=zipfile.ZIP_DEFLATED):
        """The demo as a package, with more files or other content of some."""
        shipped = self.installation.program_folder / "examples" / "projects" / "demo"
        files = {str(path.relative_to(shipped)): path.read_bytes()
                 for path in sorted(shipped.rglob("*")) if path.is_file()}
        return write_package(folder / "demo-1.1.0.zip", {**files, **(more or {})},
                             compression)

    def seed_project(self, files):
        """Lays out the project before the first start would."""
        folder = self.installation.demo.parent
        folder.parent.mkdir(parents=True)
        (folder.parent / ".demo_seed_done").write_text("1")
        for name, content in files.items():
            path = folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(content if isinstance(content, bytes) else content.encode())

    def project_offer(self, package, version="1.1.0", **more):
        return self.publisher.sign(projects=[project("demo", version, package)], **more)

    # What is done ----------------------------------------------------------------------------

    def accept_update(self, prompt):
        """A launcher in which all that was offered has been accepted."""
        launcher = self.start_launcher()
        launcher.wait_for_text(prompt)
        self.accept(launcher)
        return launcher

    def accept(self, launcher):
        launcher.click(BANNER_UPDATE)
        launcher.wait_for_box(DIALOG)
        launcher.answer_box(DIALOG)

    # What lies there -------------------------------------------------------------------------

    def files_of(self, folder):
        """All files below a folder, hidden ones too, with their content."""
        return {str(path.relative_to(folder)): path.read_bytes()
                for path in folder.rglob("*") if path.is_file()}

    def left_in(self, name):
        """What lies in a folder of the updates: temp, backup or cache."""
        return sorted(path.name for path in (self.installation.data / "update" / name).iterdir())

    def installers_run(self):
        record = self.installation.root / "installers.log"
        return record.read_text().splitlines() if record.exists() else []

    # What is told ----------------------------------------------------------------------------

    def stick_summary(self, launcher, stick, items):
        return self._summary(launcher, stick.manifest, items,
                             "检测到离线更新包，可在主界面选择「立即更新」或继续启动。")

    def online_summary(self, launcher, items):
        return self._summary(launcher, network.MANIFEST_URL, items,
                             "发现在线更新，可在主界面选择「立即更新」「稍后提醒」或「跳过此版本」。")

    def _summary(self, launcher, source, items, advice):
        return "\n".join([launcher.say("已验证的更新可用（来源：%1）。", source),
                          launcher.say("当前项目版本：%1（%2）", "1.0.0", self.installation.demo),
                          launcher.say("可更新项：%1", items), launcher.say(advice)])

    def project_check(self, remote, compare):
        return (f"Project version check: local=1.0.0 remote={remote} compare={compare} "
                f"path={self.installation.demo}")

    def not_available(self, launcher, error):
        return launcher.say("在线更新不可用（%1）。可使用 U 盘更新：QuorvanerUpdate/manifest.json。",
                            error)

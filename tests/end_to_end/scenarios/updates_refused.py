"""Manifests that prove false: each is refused with its reason, and the start goes on."""
import base64
import hashlib
import json

from harness.network import MANIFEST_URL
from harness.publisher import Publisher, canonical, sha256
from harness.update_scenario import MANIFEST_REQUEST, NONE, STARTED, UpdateScenario

FAILED = ("BCryptVerifySignature direct=0xFFFFFFFFC000A000 reversed=0xFFFFFFFFC000A000; "
          "CryptVerifySignature direct=2148073478 reversed=2148073478")


class UpdatesRefused(UpdateScenario):
    def test_a_changed_manifest_on_a_stick_does_not_lead_to_the_server(self):
        server = self.start_server(self.runtime_offer("9.0.0"))
        stick = self.insert_stick(self.tampered())
        launcher = self.start_launcher()
        self.wait_for_exits(launcher)
        self.assertEqual(self.log(), [
            STARTED,
            launcher.say("已读取 U 盘 manifest：%1（file_sha256=%2）", stick.manifest,
                         sha256(stick.manifest)),
            self.refusal(launcher, self.wrong_signature(self.tampered()), stick.manifest), NONE,
            *self.launch_lines()])
        self.assertEqual(server.requests(), [])

    def test_a_changed_manifest_on_the_server(self):
        self.check_refused(self.tampered(), self.wrong_signature(self.tampered()))

    def test_the_signature_of_a_stranger(self):
        folder = self.installation.root / "stranger"
        folder.mkdir()
        manifest = Publisher.with_new_key(folder).sign(runtime={"version": "2.0.0", "setupUrl": "runtime.exe"})
        self.check_refused(manifest, self.wrong_signature(manifest))

    def test_no_signature(self):
        self.check_refused('{"runtime":{"version":"2.0.0","setupUrl":"a.exe"}}',
                           "signature is empty")

    def test_something_else_than_a_manifest(self):
        self.check_refused("<html>502 Bad Gateway</html>", "manifest JSON is invalid")

    def test_an_installation_that_trusts_nobody(self):
        (self.installation.program_folder / "config" / "update.pub").unlink()
        key = self.installation.program_folder / "resources" / "config" / "update.pub"
        self.check_refused(self.runtime_offer("2.0.0"), f"update public key not found: {key}")

    def test_a_version_outside_the_signed_form_may_differ(self):
        manifest = json.loads(self.runtime_offer("2.0.0"))
        manifest["runtime"]["version"] = "3.0.0"
        self.start_server(json.dumps(manifest))
        launcher = self.start_launcher()
        summary = self.online_summary(launcher, "Runtime -> 3.0.0")
        launcher.wait_for_text("%1", summary)

    def tampered(self):
        manifest = json.loads(self.runtime_offer("2.0.0"))
        manifest["runtime"]["setupUrl"] = "other.exe"
        return json.dumps(manifest)

    def wrong_signature(self, manifest):
        key = self.installation.program_folder / "config" / "update.pub"
        parsed = json.loads(manifest)
        digest = hashlib.sha256(canonical(parsed).encode()).hexdigest()
        return (f"RSA signature verification failed ({FAILED}), key={key}, "
                f"canonical_sha256={digest}, sig_bytes={len(base64.b64decode(parsed['signature']))}")

    def check_refused(self, manifest, why):
        server = self.start_server(manifest)
        launcher = self.start_launcher()
        self.wait_for_exits(launcher)
        self.assertEqual(self.log(), [
            STARTED, launcher.say("已读取在线 manifest：%1", MANIFEST_URL),
            self.refusal(launcher, why, MANIFEST_URL), NONE, *self.launch_lines()])
        self.assertEqual(server.requests(), [f"{MANIFEST_REQUEST} 200"])

    def refusal(self, launcher, why, source):
        return launcher.say("更新被拒绝：%1（source=%2）。将继续使用当前版本。", why, source)

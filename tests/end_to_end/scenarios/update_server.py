"""A server that does not serve: what it costs, what is told, and that the start goes on."""
from harness import network
from harness.network import MANIFEST_PATH, MANIFEST_URL, UPDATE_HOST
from harness.update_scenario import (FOUND, MANIFEST_REQUEST, NONE, PROMPT_ONLINE, STARTED,
                                     UpdateScenario)
from harness.waiting import wait_for

REQUEST = f"GET {MANIFEST_PATH} HTTP/1.1"
# Qt asks first, then the other client.
ASKED_BY_BOTH = 2


class UpdateServer(UpdateScenario):
    def test_a_server_that_says_nothing(self):
        server = self.start_odd_server(lambda request: request.hold())
        launcher = self.start_launcher()
        self.wait_for_exits(launcher)
        self.check_not_available_in_the_end(launcher, "Operation canceled")
        self.assertEqual(server.requests, ASKED_BY_BOTH * [REQUEST])

    def test_the_window_closed_while_the_server_says_nothing(self):
        server = self.start_odd_server(lambda request: request.hold())
        launcher = self.start_launcher()
        wait_for(lambda: server.requests, "a request")
        launcher.close()
        self.assertEqual(launcher.wait_for_end(), 0)
        self.assertEqual(self.installation.runtime_log(), [])

    def test_a_server_that_stops_within_the_manifest(self):
        def stall(request):
            request.send(b'{"signature"', length=5000)
            request.hold()

        server = self.start_odd_server(stall)
        launcher = self.start_launcher()
        self.wait_for_exits(launcher)
        self.check_not_available_in_the_end(launcher, "Operation canceled (HTTP 200)")
        self.assertEqual(server.requests, ASKED_BY_BOTH * [REQUEST])

    def test_a_server_that_closes_within_the_manifest(self):
        self.start_odd_server(lambda request: request.send(b'{"signature"', length=5000))
        launcher = self.start_launcher()
        self.wait_for_exits(launcher)
        self.check_not_available(launcher, "Connection closed (HTTP 200)")

    def test_a_server_that_closes_once_is_asked_again_in_another_way(self):
        manifest = self.runtime_offer("2.0.0").encode()

        def answer(request):
            if len(server.requests) > 1:
                request.send(manifest)

        server = self.start_odd_server(answer)
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        summary = self.online_summary(launcher, "Runtime -> 2.0.0")
        self.assertEqual(self.log(), [STARTED, launcher.say("已读取在线 manifest：%1", MANIFEST_URL),
                                      *summary.splitlines(), FOUND])

    def test_a_manifest_without_a_byte(self):
        server = self.start_server("")
        launcher = self.start_launcher()
        self.wait_for_exits(launcher)
        self.assertEqual(self.log(), [
            STARTED,
            self.not_available(launcher, f"empty response body (HTTP 200) from {MANIFEST_URL}"),
            NONE, *self.launch_lines()])
        self.assertEqual(server.requests(), [f"{MANIFEST_REQUEST} 200"])

    def test_no_manifest_on_the_server(self):
        server = self.start_server()
        launcher = self.start_launcher()
        self.wait_for_exits(launcher)
        error = f"Error transferring {MANIFEST_URL} - server replied: Not Found (HTTP 404)"
        self.check_not_available(launcher, error)
        self.assertEqual(server.requests(), ASKED_BY_BOTH * [f"{MANIFEST_REQUEST} 404"])

    def test_redirects_are_followed(self):
        rules = (f"location = {MANIFEST_PATH} {{ return 302 /first; }}"
                 f"location = /first {{ return 301 https://{UPDATE_HOST}/second?a=b; }}"
                 "location = /second { rewrite ^ /moved.json; }")
        server = self.start_server(rules=rules)
        (server.root / "moved.json").write_text(self.runtime_offer("2.0.0"))
        launcher = self.start_launcher()
        launcher.wait_for_text(PROMPT_ONLINE)
        # What is relative in the manifest stays relative to the address that was asked for.
        self.assertIn(self.online_summary(launcher, "Runtime -> 2.0.0"), launcher.texts())
        self.assertEqual(server.requests(), [f"{MANIFEST_REQUEST} 302",
                                             f"GET {UPDATE_HOST}/first 301",
                                             f"GET {UPDATE_HOST}/second?a=b 200"])

    def test_redirects_without_an_end_are_followed_eight_times(self):
        server = self.start_server(rules="location / { return 302 /again; }")
        launcher = self.start_launcher()
        self.wait_for_exits(launcher)
        # The body of the ninth answer is taken for the manifest.
        self.assertEqual(self.log(), [
            STARTED, launcher.say("已读取在线 manifest：%1", MANIFEST_URL),
            launcher.say("更新被拒绝：%1（source=%2）。将继续使用当前版本。",
                         "manifest JSON is invalid", MANIFEST_URL),
            NONE, *self.launch_lines()])
        self.assertEqual(server.requests(), [f"{MANIFEST_REQUEST} 302",
                                             *8 * [f"GET {UPDATE_HOST}/again 302"]])

    def test_a_certificate_of_an_unknown_authority(self):
        self.check_mistrusted(network.Authority("stranger").certificate_for(UPDATE_HOST))

    def test_a_certificate_for_another_host(self):
        self.check_mistrusted(self.authority.certificate_for("elsewhere.invalid"))

    def test_a_certificate_that_has_expired(self):
        self.check_mistrusted(self.authority.certificate_for(UPDATE_HOST, days=0))

    def check_mistrusted(self, certificate):
        """Neither client sends a request to such a server."""
        server = self.start_server(self.runtime_offer("2.0.0"), certificate)
        launcher = self.start_launcher()
        self.wait_for_exits(launcher)
        self.check_not_available(launcher, "SSL handshake failed")
        self.assertEqual(server.requests(), [])

    def check_not_available(self, launcher, error):
        self.assertEqual(self.log(), [STARTED, *self.failure_lines(launcher, error),
                                      *self.launch_lines()])

    def check_not_available_in_the_end(self, launcher, error):
        """The seconds are over before both clients have given up; the start waits for them."""
        precheck, *start = self.launch_lines()
        self.assertEqual(self.log(), [STARTED, precheck, *self.failure_lines(launcher, error),
                                      *start])

    def failure_lines(self, launcher, error):
        return [self.not_available(launcher, f"{error} URL: {MANIFEST_URL}"), NONE]

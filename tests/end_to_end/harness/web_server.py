"""nginx on the port of https, with files of its own and an account of what was asked of it."""
import socket
import subprocess

from harness.network import MANIFEST_PATH
from harness.waiting import wait_for

# One process, and the account that each namespace has: its worker could not become another one.
CONFIGURATION = """
user root;
daemon off;
master_process off;
pid {folder}/pid;
error_log {folder}/error.log;
events {{}}
http {{
    client_body_temp_path {folder}/body;
    proxy_temp_path {folder}/proxy;
    fastcgi_temp_path {folder}/fastcgi;
    scgi_temp_path {folder}/scgi;
    uwsgi_temp_path {folder}/uwsgi;
    log_format account '$request_method $host$request_uri $status';
    access_log {folder}/access.log account;
    server {{
        listen 127.0.0.1:443 ssl;
        server_name _;
        ssl_certificate {certificate};
        ssl_certificate_key {key};
        root {root};
        {rules}
    }}
}}
"""


class WebServer:
    def __init__(self, folder, certificate_and_key, rules=""):
        self.folder, self.root = folder, folder / "www"
        self.beside_manifest = self.root / MANIFEST_PATH.strip("/").rpartition("/")[0]
        self.beside_manifest.mkdir(parents=True)
        certificate, key = certificate_and_key
        configuration = folder / "nginx.conf"
        configuration.write_text(CONFIGURATION.format(
            folder=folder, root=self.root, certificate=certificate, key=key, rules=rules))
        self.process = subprocess.Popen(["nginx", "-p", str(folder), "-c", str(configuration),
                                         "-e", str(folder / "error.log")],
                                        stdin=subprocess.DEVNULL)
        wait_for(self._answers, "nginx on its port")

    def close(self):
        self.process.terminate()
        self.process.wait(10)

    def publish(self, manifest):
        (self.root / MANIFEST_PATH.strip("/")).write_text(manifest, encoding="utf-8")

    def requests(self):
        """What was asked and how it was answered, in the order in which the answers ended."""
        return (self.folder / "access.log").read_text().splitlines()

    def _answers(self):
        if self.process.poll() is not None:
            raise AssertionError(f"nginx does not start\n{self._errors()}")
        try:
            socket.create_connection(("127.0.0.1", 443)).close()
        except OSError:
            return False
        return True

    def _errors(self):
        return (self.folder / "error.log").read_text()

"""The network that a run sees: itself alone, with names and a certificate authority of the test."""
import os
import pathlib
import shutil
import subprocess

STAGE = pathlib.Path(os.environ["QUORVANE_STAGE"])
UPDATE_HOST = os.environ["QUORVANE_UPDATE_HOST"]
MANIFEST_PATH = "/Quorvaner/Update/manifest.json"
MANIFEST_URL = f"https://{UPDATE_HOST}{MANIFEST_PATH}"


class Authority:
    """Signs certificates of servers. Whom it is to be trusted by is told elsewhere."""

    def __init__(self, name):
        self.folder = STAGE / "authorities" / name
        self.folder.mkdir(parents=True)
        self.certificate = self.folder / "authority.crt"
        self._make_pair("authority", name, "-x509", "-days", "2", "-out", self.certificate)

    def certificate_for(self, host, days=2):
        """Paths of a certificate for this host, good for so many days, and of its key."""
        certificate = self.folder / f"{host}-{days}.crt"
        if not certificate.exists():
            request, names = self.folder / "request", self.folder / "names"
            self._make_pair(certificate.stem, host, "-out", request)
            names.write_text(f"subjectAltName=DNS:{host}\n")
            _openssl("x509", "-req", "-in", request, "-CA", self.certificate,
                     "-CAkey", self.folder / "authority.key", "-CAcreateserial", "-days", days,
                     "-extfile", names, "-out", certificate)
        return certificate, certificate.with_suffix(".key")

    def _make_pair(self, file, name, *more):
        _openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                 "-keyout", self.folder / f"{file}.key", "-subj", f"/CN={name}", *more)


def lead_here(*hosts):
    """From now on these names are this machine's own."""
    file = STAGE / "hosts"
    file.write_text("127.0.0.1 localhost\n" + "".join(f"127.0.0.1 {host}\n" for host in hosts))
    _bind(file, "/etc/hosts")


def trust_only(authority):
    """From now on no other authority is known to this machine."""
    folder = STAGE / "certificates"
    folder.mkdir()
    shutil.copy(authority.certificate, folder / "ca-certificates.crt")
    digest = _openssl("x509", "-in", authority.certificate, "-noout", "-hash").decode().strip()
    shutil.copy(authority.certificate, folder / f"{digest}.0")
    _bind(folder, "/etc/ssl/certs")


def _bind(source, target):
    subprocess.run(["mount", "--bind", str(source), target], check=True)


def _openssl(*arguments):
    return subprocess.run(["openssl", *map(str, arguments)], check=True, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL).stdout
